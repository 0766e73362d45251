#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class CSQLiteDB;

namespace qo::host
{
// Short questions to a database. They throw what the database layer throws.

/// In quotes, as a statement takes any name.
CString quotedName(CString name);
/// The first field of the first row; 0 without a row.
std::int64_t numberOf(const CSQLiteDB& db, const CString& sql);
/// The first field of each row, as numbers and as texts.
std::vector<std::int64_t> numbersOf(const CSQLiteDB& db, const CString& sql);
CStringArray textsOf(const CSQLiteDB& db, const CString& sql);
/// The columns that a table of a collection should have and this one has not: all if it is absent.
CStringArray missingColumns(const CSQLiteDB& db, const CString& table);
/// The version of a collection's database if it is another one than this program's; "" if its table
/// of versions is empty. Nothing for one of this version or without that table.
std::optional<CString> otherVersion(const CSQLiteDB& db);

/// Ids for the user: "row 3, 17, 20 and 5 more".
std::string someOf(const std::vector<std::int64_t>& ids);
} // namespace qo::host
