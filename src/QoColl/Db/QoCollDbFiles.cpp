#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbRows.h"
#include "QoColl/Db/FileRow.h"
#include "QoColl/Db/FileRuns.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/FpCutInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Log.h"
#include "common/MakeObject.h"
#include "common/ProfileTimer.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/StringArray.h"

#include <memory>
#include <new>
#include <vector>

// Statements on FILE_T. Texts of statements are built once and kept, since a save runs the same one
// for every record.

namespace
{
constexpr const char16_t* noMemoryPlace = u".\\QoColl\\Db\\QoCollDbFiles";

/// Collects rows in the order of a record array. Rows mostly come in that order, which is checked
/// cheaply while they are still in the processor's cache.
class RowCollector
{
public:
    void add(QoFileDbItemPtr row)
    {
        if (m_others.empty() && (m_inOrder.IsEmpty() || isBehindLast(*row)))
        {
            m_inOrder.Add(row);
            return;
        }
        if (m_others.empty())
        {
            m_others.assign(m_inOrder.begin(), m_inOrder.end());
            m_inOrder.RemoveAll();
        }
        m_others.push_back(std::move(row));
    }
    void moveTo(QoFileDbItemArray& items)
    {
        if (m_others.empty())
            items = std::move(m_inOrder);
        else
            CQoCollDbUtils::takeRows(m_others, items);
    }

private:
    // Whether the row belongs after the last one.
    bool isBehindLast(const QoFileDbItem& row) const
    {
        return row.path.CompareNoCase(m_inOrder[m_inOrder.GetUpperBound()]->path) > 0;
    }

    QoFileDbItemArray m_inOrder;
    std::vector<QoFileDbItemPtr> m_others; ///< all rows, if one was out of order
};

/// Reads all rows of a query; finish(record, row) is called for each. Running out of memory for the
/// list ends in qo::throwOutOfMemory().
template <class Finish>
void readRows(CSQLiteStatement& statement,
              const char16_t* complaint,
              QoFileDbItemArray& items,
              Finish finish)
try
{
    qo::FileRowReader reader;
    RowCollector rows;
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        if (!qo::hasRecordId(result))
            continue;
        QoFileDbItemPtr item = qo::newRow<QoFileDbItem>(complaint);
        if (!item)
            break;
        reader.read(*item, result);
        finish(*item, result);
        rows.add(std::move(item));
    }
    rows.moveTo(items);
}
catch (const std::bad_alloc&)
{
    qo::throwOutOfMemory(QO_HERE(noMemoryPlace));
}

/// For queries that read nothing beside the record.
constexpr auto nothingMore = [](QoFileDbItem&, const CSQLiteQueryResult&) {};
} // namespace

void CQoCollDb::bindParams(QoFileDbItemPtr& item, int mask, CSQLiteStatement& statement)
{
    qo::bindFileRow(*item, mask, statement);
}

void CQoCollDb::extractFileDbItem(QoFileDbItemPtr& item, CSQLiteQueryResult& result)
{
    qo::FileRowReader().read(*item, result);
}

bool CQoCollDb::extractFirst(CSQLiteStatement& statement, QoFileDbItemPtr& item)
{
    CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    auto found = qo::makeObject<QoFileDbItem>(QO_HERE(noMemoryPlace));
    extractFileDbItem(found, result);
    item = std::move(found);
    return true;
}

bool CQoCollDb::getFileByClipID(const CString& clipUid, QoFileDbItemPtr& item)
{
    static const CString sql = qo::selectFiles(u"", u"WHERE FT_SOURCE = ?1 AND FT_CLIP_UID = ?2");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, IPostProcessingQueue::sourceWebClip);
    statement.BindText(2, clipUid);
    return extractFirst(statement, item);
}

bool CQoCollDb::getFileFromDevice(int id, QoFileDbItemPtr& item)
{
    static const CString sql =
        qo::selectFiles(u", FT_FP_PARAMS ", u"WHERE FT_ID = ?1 AND FT_COLL_ID <> ''");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, id);
    return extractFirst(statement, item);
}

bool CQoCollDb::getFile(const CString& velmoraId, QoFileDbItemPtr& item)
{
    static const CString sql = qo::selectFiles(u", FT_FP_PARAMS ", u"WHERE FT_VELMORA_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, velmoraId);
    return extractFirst(statement, item);
}

void CQoCollDb::getAllFiles(QoFileDbItemArray& items,
                            bool withLyrics,
                            const CString& collId,
                            bool filter)
{
    const qo::ProfileTimer timer(u"CQoCollDb::getAllFiles");
    const std::uint32_t start = qo::systemClock().tickCount();
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(qo::selectFiles(
        withLyrics ? u", FT_LYRICS " : u"", filter ? u"WHERE \tFT_COLL_ID = ?1 " : u""));
    if (filter)
        statement.BindText(1, collId);
    readRows(statement,
             u"CQoCollDb::getAllFiles : not enough memory",
             items,
             [withLyrics](QoFileDbItem& item, const CSQLiteQueryResult& row)
             {
                 if (!withLyrics)
                     return;
                 item.lyrics = CString(row.textView(qo::extraFileColumn));
                 item.lyricsLoaded = true;
             });
    // Every row has passed through the cache, and what is built from the rows now needs the memory
    // more.
    m_db.ReleaseMemory();
    qo::log(qo::level::timing,
            u"CQoCollDb::getAllFiles took %d millis",
            qo::systemClock().tickCount() - start);
}

std::unique_ptr<qo::FileRuns> CQoCollDb::fileRuns(const CString& collId) const
{
    return std::make_unique<qo::FileRuns>(m_db, collId);
}

bool CQoCollDb::hasOwnCollFiles() const
{
    static const CString sql(u"SELECT COUNT(rowid) FROM FILE_T WHERE FT_COLL_ID = ''");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return !result.Eof() && result.GetIntField(0) > 0;
}

void CQoCollDb::insertFile(QoFileDbItemPtr& item, const CString& collId)
{
    if (item->id == 0)
    {
        runFileInsert(insertOfNewFile(), item, collId);
        item->id = takeRowId(u"FILE_T");
        return;
    }
    CSQLiteStatement statement = compileFileInsert();
    runFileInsert(statement, item, collId);
}

/// For records without an id: a parameter that was bound once would stay bound.
CSQLiteStatement& CQoCollDb::insertOfNewFile()
{
    if (!m_insertOfNew)
        m_insertOfNew.reset(new CSQLiteStatement(compileFileInsert()));
    return *m_insertOfNew;
}

CSQLiteStatement& CQoCollDb::updateOfFile(bool withLyrics)
{
    auto& kept = m_updates[withLyrics ? 1 : 0];
    if (!kept)
        kept.reset(new CSQLiteStatement(m_db.CompileStatement(qo::updateFileText(withLyrics))));
    return *kept;
}

void CQoCollDb::insertFiles(QoFileDbItemArray& items)
{
    {
        CSQLiteStatement statement = compileFileInsert();
        for (QoFileDbItemPtr& item : items)
        {
            if (item->id != 0)
                runFileInsert(statement, item, item->collId);
        }
    }
    // An id that SQLite chooses must not be that of a row to come.
    for (QoFileDbItemPtr& item : items)
    {
        if (item->id == 0)
            insertFile(item, item->collId);
    }
}

CSQLiteStatement CQoCollDb::compileFileInsert()
{
    static const CString sql = qo::insertFileText(false);
    static const CString sqlWithNames = qo::insertFileText(true);
    if (!m_isTableChecked)
        m_hasOtherColumns = qo::hasOtherFileColumns(m_db);
    m_isTableChecked = true;
    return m_db.CompileStatement(m_hasOtherColumns ? sqlWithNames : sql);
}

void CQoCollDb::runFileInsert(CSQLiteStatement& statement,
                              QoFileDbItemPtr& item,
                              const CString& collId)
{
    // A parameter that is not bound is NULL, for which SQLite chooses an id.
    bindParams(
        item, item->id != 0 ? qo::bindFileId | qo::bindFileLyrics : qo::bindFileLyrics, statement);
    statement.BindText(qo::fileCollIdParameter, collId);
    statement.ExecuteDML();
    constexpr int insertsBetweenFits = 16'384;
    if (++m_insertsSinceFit == insertsBetweenFits)
    {
        m_insertsSinceFit = 0;
        fitCache();
    }
}

void CQoCollDb::updateFile(QoFileDbItemPtr& item)
{
    CSQLiteStatement& statement = updateOfFile(item->lyricsLoaded);
    bindParams(
        item, item->lyricsLoaded ? qo::bindFileId | qo::bindFileLyrics : qo::bindFileId, statement);
    statement.ExecuteDML();
}

void CQoCollDb::updateFileFlags(QoFileDbItemPtr& item)
{
    static const CString sql(u"UPDATE FILE_T SET FT_FLAGS = ?2 WHERE FT_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, item->id);
    statement.BindInt(2, static_cast<int>(item->flags));
    statement.ExecuteDML();
}

void CQoCollDb::updateFileParams(QoFileDbItemPtr& item)
{
    static const CString sql(u"UPDATE FILE_T SET FT_PARAMS = ?2 WHERE FT_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, item->id);
    statement.BindText(2, item->params);
    statement.ExecuteDML();
}

void CQoCollDb::deleteFile(QoFileDbItemPtr& item)
{
    static const CString sql(u"DELETE FROM FILE_T WHERE FT_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, item->id);
    statement.ExecuteDML();
}

void CQoCollDb::setReviewed(const CString& velmoraId, bool reviewed)
{
    static const CString sql(u"UPDATE FILE_T SET FT_REVIEWED = ?2 WHERE FT_VELMORA_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, velmoraId);
    statement.BindBool(2, reviewed);
    statement.ExecuteDML();
}

void CQoCollDb::getLyrics(QoFileDbItemArray& items)
{
    static const CString sql(u"SELECT FT_ID, FT_LYRICS FROM FILE_T WHERE FT_ID IN (?1)");
    if (items.IsEmpty())
        return;
    // All ids in one text: the comparison with a row id is true only while it is a single id.
    CString ids;
    for (const QoFileDbItemPtr& item : items)
        ids.AppendFormat(ids.IsEmpty() ? u"%d" : u" %d", item->id);
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, ids);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        const int index = CQoCollDbUtils::findQoDbFileItem(qo::rowIdField(result, 0), items);
        if (index < 0)
            continue;
        items[index]->lyrics = result.GetTextField(u"FT_LYRICS");
        items[index]->lyricsLoaded = true;
    }
}

/// The newest rows come first in the query, but the array is in path order.
void CQoCollDb::getLastTracks(int count, QoFileDbItemArray& items)
{
    const qo::ProfileTimer timer(u"CQoCollDb::getLastTracks");
    items.RemoveAll();
    // The plus prevents the use of the index on the collection, so that the one on the creation
    // time serves both order and limit.
    CString sql = qo::selectFiles(u"", u"WHERE \t+FT_COLL_ID = '' AND FT_FLAGS & ");
    sql.AppendFormat(u"%d > 0 AND FT_SOURCE > 0 ORDER BY FT_CREAT_TIME DESC  LIMIT %d",
                     qo::fileFlag::mediaMask,
                     count);
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    readRows(statement, u"CQoCollDb::getLastTracks : not enough memory", items, nothingMore);
}

void CQoCollDb::getSessionTracks(int session, QoFileDbItemArray& items)
{
    items.RemoveAll();
    CString sql = qo::selectFiles(u"", u"WHERE \tFT_SESSION = ");
    sql.AppendFormat(u"%d", session);
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    readRows(statement, u"CQoCollDb::getSessionTracks : not enough memory", items, nothingMore);
}

void CQoCollDb::getVelmoraIdsOfOthers(const CString& collId, CStringArray& ids)
{
    // Two ranges of the index on the collection; "<>" would read the whole table.
    static const CString sql(u"SELECT FT_VELMORA_ID FROM FILE_T WHERE FT_COLL_ID < ?1 UNION ALL "
                             u"SELECT FT_VELMORA_ID FROM FILE_T WHERE FT_COLL_ID > ?1 UNION ALL "
                             u"SELECT FT_VELMORA_ID FROM FILE_T WHERE FT_COLL_ID IS NULL");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, collId);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
        ids.Add(result.GetTextField(0));
}

bool CQoCollDb::getFPCutInfo(const CString& velmoraId, FpCutInfoDbItem& item)
{
    static const CString sql(u"SELECT FT_FP_PARAMS FROM FILE_T WHERE FT_VELMORA_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, velmoraId);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    item.velmoraId = velmoraId;
    item.fpParams = result.GetTextField(0);
    return true;
}

void CQoCollDb::setFPCutInfo(const FpCutInfoDbItem& item)
{
    static const CString sql(u"UPDATE FILE_T SET FT_FP_PARAMS = ?2 WHERE FT_VELMORA_ID = ?1");
    FpCutInfoDbItem stored;
    if (!getFPCutInfo(item.velmoraId, stored))
    {
        qo::log(qo::level::error,
                u"CQoCollDb::setFPCutInfo : velmora ID not found in db : '%s'",
                item.velmoraId);
        return;
    }
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, item.velmoraId);
    statement.BindText(2, item.fpParams);
    statement.ExecuteDML();
}
