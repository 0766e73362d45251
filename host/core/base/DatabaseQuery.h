#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>

class CSQLiteDB;

namespace qo::host
{
// Short questions to a database. They throw what the database layer throws.

/// In quotes, as a statement takes any name.
CString quotedName(CString name);
/// The first field of the first row; 0 without a row.
std::int64_t numberOf(const CSQLiteDB& db, const CString& sql);
/// The first field of each row.
CStringArray textsOf(const CSQLiteDB& db, const CString& sql);
/// The columns that a table of a collection should have and this one has not: all if it is absent.
CStringArray missingColumns(const CSQLiteDB& db, const CString& table);
} // namespace qo::host
