#pragma once

#include "core/base/Salvage.h"

#include <QoKernel/Collection.h>

namespace qo::host
{
/// Reads what can be read of a damaged collection into a new database, see Salvage. On the thread
/// that calls the kernel.
class DatabaseRepair
{
public:
    using Report = Salvage::Report;

    explicit DatabaseRepair(const CString& database) : m_database(database) {}

    /// Makes the target, which must be absent, with the version of the damaged database where that
    /// can be read. Throws what the database layer throws, and
    /// HostError.
    Report copyTo(const CString& target) const;
    /// Whether any row can be read.
    bool hasRow() const;
    /// Whether the schema of the file can be read.
    static bool isDatabase(const CString& path);

private:
    CString m_database;
};
} // namespace qo::host
