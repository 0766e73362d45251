#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <map>
#include <set>

namespace qo::host
{
/// A file as the collection's database knows it.
struct StoredRecord
{
    CString id; ///< lasting
    CString path;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< ticks; 0 when the file is to be read again
};

/// Looks records of the user's own collection up in its database, which need not be loaded. Without
/// a database of this version there are none. Throws what the database layer throws.
class StoredRecords
{
public:
    explicit StoredRecords(const CString& database);

    /// By their ids. Where several records have one id, which no collection of ours has, it is the
    /// one at that path.
    std::map<CString, StoredRecord> byIds(const std::map<CString, CString>& pathsById) const;
    /// By their paths as they are spelled. Looks through the whole table, which has no index of
    /// paths.
    std::map<CString, StoredRecord> byPaths(const std::set<CString>& paths) const;

private:
    CString m_database; ///< "" without a collection in it
};
} // namespace qo::host
