#include "QoColl/Collection/StoredFiles.h"

#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/FileRuns.h"
#include "QoColl/Db/QoCollDb.h"
#include "common/QoProgress.h"

#include <utility>

namespace qo
{
namespace
{
// Small enough for the processor's cache to keep a slice from its first use to its last.
constexpr int sliceSize = 256;
constexpr std::size_t slicesAhead = 64;

/// Slices have no path, but a number.
CString nameOf(int slice)
{
    CString name;
    name.Format(u"%d", slice);
    return name;
}
} // namespace

/// Lives as long as the thread that may still read. All but the constructor runs there.
class StoredFiles::Reader
{
public:
    Reader(const CString& dbPath, const CString& collId, bool ahead)
        : m_db(dbPath)
        , m_moment(m_db, eSQLiteTransactionType::deferred)
        , m_collId(collId)
        , m_isAhead(ahead)
    {
        m_hasCollection = m_db.getCollInfo(m_collId, m_collection);
    }
    const CollInfoDbItem& collection() const noexcept { return m_collection; }
    bool hasCollection() const noexcept { return m_hasCollection; }
    int count() const noexcept { return m_count; }

    void read(QoFileDbItemArray& records)
    {
        if (m_hasEnded)
            return;
        if (m_isAhead && !m_runs)
        {
            m_runs = m_db.fileRuns(m_collId);
            m_count = m_runs->count();
        }
        if (m_runs && !m_runs->areTooMany())
        {
            m_hasEnded = !m_runs->next(records, sliceSize);
            return;
        }
        m_runs.reset();
        m_db.getAllFiles(records, false, m_collId, true);
        m_count = records.GetSize();
        m_hasEnded = true;
    }

private:
    CQoCollDb m_db;
    DbTransaction m_moment;
    CString m_collId;
    CollInfoDbItem m_collection;
    std::unique_ptr<FileRuns> m_runs;
    int m_count = 0; ///< set before the first records are given
    bool m_hasCollection = false;
    bool m_isAhead;
    bool m_hasEnded = false;
};

StoredFiles::StoredFiles(const CString& dbPath, const CString& collId, bool ahead)
    : m_reader(std::make_shared<Reader>(dbPath, collId, ahead))
    , m_pool(
          [reader = m_reader](const CString&, QoFileDbItemArray& records)
          {
              reader->read(records);
              return std::size_t(0);
          },
          {.threads = ahead ? 1 : 0, .grows = false, .results = slicesAhead})
{
    for (std::size_t i = 0; i < slicesAhead; ++i)
        announceNext();
}

const CollInfoDbItem& StoredFiles::collection() const
{
    return m_reader->collection();
}

bool StoredFiles::hasCollection() const
{
    return m_reader->hasCollection();
}

int StoredFiles::count() const
{
    return m_reader->count();
}

void StoredFiles::announceNext()
{
    m_pool.add(nameOf(m_announced++));
}

bool StoredFiles::next(QoFileDbItemArray& records, IQoProgress& progress)
{
    records.RemoveAll();
    announceNext();
    const auto outcome =
        m_pool.take(nameOf(m_taken++), records, [&progress] { return progress.isCanceled(); });
    return outcome == AheadPool<QoFileDbItemArray>::Outcome::done && !records.IsEmpty();
}
} // namespace qo
