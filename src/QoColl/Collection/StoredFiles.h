#pragma once

#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Forward.h"
#include "platform/AheadPool.h"
#include "types/String.h"

#include <memory>

namespace qo
{
/// The files that a database has of a collection, in path order, and what it knows of the
/// collection: both as they were at one moment, whatever others save meanwhile.
class StoredFiles
{
public:
    /// Ahead: the rows are read on a thread of their own, while those that came are used; else all
    /// are read when the first are asked for. The result is the same. Throws as CQoCollDb does.
    StoredFiles(const CString& dbPath, const CString& collId, bool ahead);

    /// A default one, if there is none.
    const CollInfoDbItem& collection() const;
    bool hasCollection() const;
    /// How many files there are; known when the first came.
    int count() const;
    /// The next records; false, without any, at the end or when the progress is canceled.
    bool next(QoFileDbItemArray& records, IQoProgress& progress);

private:
    class Reader;

    void announceNext();

    std::shared_ptr<Reader> m_reader;
    AheadPool<QoFileDbItemArray> m_pool;
    int m_announced = 0;
    int m_taken = 0;
};
} // namespace qo
