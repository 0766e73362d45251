#pragma once

#include <QoKernel/Kernel.h>

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// Reads what can be read of a damaged database into a new one. All work is done on a copy in the
/// temporary folder: the database itself is only read, as plain bytes.
///
/// First each table is read as a whole. Then every page of the file is looked at on its own, as
/// the rows of a table stay readable in its leaves when the pages above them are damaged: a leaf is
/// made the root of a table, and SQLite reads its rows. They are told apart by the number and the
/// types of their columns. A row that was there before is kept as it was. On the thread that calls
/// the kernel.
class Salvage
{
public:
    struct Table
    {
        std::string name;
        std::int64_t rows = 0; ///< that the new database has
    };
    struct Report
    {
        std::vector<Table> tables;
        /// Rows of FILE_T that an index names and that could not be read, by their ids.
        std::vector<std::int64_t> lostIds;
        std::int64_t newIds = 0; ///< rows whose ids no record can bear, kept under others
        bool isCertain = true;   ///< false: a table could not be read as a whole, so that rows may
                                 ///< be missing that no index names
        std::int64_t rows() const;
    };
    /// Makes the new database with its tables, empty. Those without an integer key need a unique
    /// index, or their rows come twice.
    using MakeTarget = std::function<void(const CString& target)>;

    explicit Salvage(const CString& database) : m_database(database) {}

    /// The target must be absent. Throws what the database layer throws, and HostError.
    Report copyTo(const CString& target, const MakeTarget& make) const;

private:
    CString m_database;
};
} // namespace qo::host
