#pragma once

#include "core/load/DatabaseGuard.h"

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// What "qo db check" finds in a database.
struct DatabaseFindings
{
    std::string version;             ///< "" when none can be read
    std::vector<std::string> faults; ///< a sentence for each thing that is wrong
    DatabaseGuard::TableCounts rows; ///< of each table; empty when the version is another one
};

/// Looks through all of an existing database for damage and contradictions, and changes nothing.
/// On the thread that calls the kernel.
DatabaseFindings inspectDatabase(const CString& database);

/// Gives the whole content as SQL statements, line by line, until the function returns false.
/// Throws what the database layer throws. On the thread that calls the kernel.
void dumpDatabase(const CString& database, const std::function<bool(const std::string&)>& line);
} // namespace qo::host
