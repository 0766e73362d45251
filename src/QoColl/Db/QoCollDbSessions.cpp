#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbRows.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/SideRows.h"
#include "common/MakeObject.h"

// Statements on sessions and playlists.

namespace
{
constexpr unsigned long everyColumn = ~0UL;

// A parameter is bound if its bit is set in the mask: bit n stands for parameter n + 1.

constexpr unsigned long sessionId = 0x1;
constexpr unsigned long sessionName = 0x2;
constexpr unsigned long sessionSource = 0x4;
constexpr unsigned long sessionStart = 0x8;
constexpr unsigned long sessionEnd = 0x10;

/// Binds those columns of a session whose bits are set.
void bindSessionParams(const QoSessionDbItem& item, unsigned long mask, CSQLiteStatement& statement)
{
    if (mask & sessionId)
        statement.BindInt(1, item.id);
    if (mask & sessionName)
        statement.BindText(2, item.name);
    if (mask & sessionSource)
        statement.BindInt(3, item.source);
    if (mask & sessionStart)
        statement.BindInt64(4, qo::toTicks(item.startTime));
    if (mask & sessionEnd)
        statement.BindInt64(5, qo::toTicks(item.endTime));
}

constexpr unsigned long playlistId = 0x1;
constexpr unsigned long playlistName = 0x2;
constexpr unsigned long playlistTracks = 0x4;

/// Binds those columns of a playlist whose bits are set; the tracks become one text.
void bindPlaylistParams(const QoPlaylistDbItem& item,
                        unsigned long mask,
                        CSQLiteStatement& statement)
{
    if (mask & playlistId)
        statement.BindInt(1, item.id);
    if (mask & playlistName)
        statement.BindText(2, item.name);
    if (mask & playlistTracks)
        statement.BindText(3, item.tracks.join(u";"));
}

} // namespace

bool CQoCollDb::getSession(int id, boost::shared_ptr<QoSessionDbItem>& item)
{
    static const CString sql(u"SELECT * FROM SESSION_T WHERE ST_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, id);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    item = qo::makeObject<QoSessionDbItem>(QO_HERE(u".\\QoColl\\Db\\QoCollDbSessions"));
    qo::readRow(*item, result, u"ST_ID");
    return true;
}

void CQoCollDb::getAllSessions(CArray<QoSessionQueryItem>& items, int limitPerSource)
{
    static const CString sql(
        u"SELECT SESSION_T.*, COUNT(FILE_T.FT_ID) FROM SESSION_T "
        u"\t\tLEFT JOIN FILE_T ON FILE_T.FT_SESSION <> 0 AND FILE_T.FT_SESSION = SESSION_T.ST_ID "
        u"\t\tGROUP BY SESSION_T.ST_ID "
        u"\t\tORDER BY SESSION_T.ST_SOURCE, SESSION_T.ST_ID DESC");
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    int count = 0;
    int source = 0;
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        // Rows come source by source: the count starts again with each source.
        const int rowSource = result.GetIntField(2);
        count = count > 0 && rowSource == source ? count + 1 : 1;
        source = rowSource;
        if (limitPerSource > 0 && count > limitPerSource)
            continue;
        QoSessionQueryItem item;
        item.session =
            qo::newRow<QoSessionDbItem>(u"CQoCollDb::getAllSessions : not enough memory");
        if (!item.session)
            break;
        qo::readRow(*item.session, result, u"ST_ID");
        item.fileCount = result.GetIntField(5);
        items.Add(item);
    }
}

void CQoCollDb::insertSession(boost::shared_ptr<QoSessionDbItem>& item)
{
    static const CString sql(u"INSERT INTO SESSION_T (ST_ID, ST_NAME, ST_SOURCE, ST_START_TIME, "
                             u"ST_END_TIME) VALUES (?1, ?2, ?3, ?4, ?5)");
    {
        CSQLiteStatement statement = m_db.CompileStatement(sql);
        const unsigned long mask =
            item->id != 0 ? everyColumn : formatBindMask(everyColumn, sessionId);
        bindSessionParams(*item, mask, statement);
        statement.ExecuteDML();
    }
    item->id = takeRowId(u"SESSION_T");
}

void CQoCollDb::deleteSession(int id)
{
    static const CString sql(u"DELETE FROM SESSION_T WHERE ST_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, id);
    statement.ExecuteDML();
}

void CQoCollDb::updateSessionEndTime(boost::shared_ptr<QoSessionDbItem>& item)
{
    static const CString sql(u"UPDATE SESSION_T SET   ST_END_TIME = ?5 WHERE   ST_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindSessionParams(*item, sessionId | sessionEnd, statement);
    statement.ExecuteDML();
}

int CQoCollDb::getUserPlaylistsCount()
{
    static const CString sql(u"SELECT COUNT(*) FROM PLAYLIST_T;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() ? 0 : result.GetIntField(0);
}

void CQoCollDb::getAllUserPlaylists(DbItemArray<QoPlaylistDbItem>& items, const CString& prefix)
{
    CString sql(u"SELECT * FROM PLAYLIST_T;");
    if (!prefix.IsEmpty())
        sql.Format(u"SELECT * FROM PLAYLIST_T WHERE PL_NAME LIKE '%s%%';", prefix);
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        const auto item =
            qo::newRow<QoPlaylistDbItem>(u"CQoCollDb::getPlaylists : not enough memory");
        if (!item)
            break;
        qo::readRow(*item, result, u"PL_ID");
        items.Add(item);
    }
}

void CQoCollDb::insertPlaylist(boost::shared_ptr<QoPlaylistDbItem>& item)
{
    static const CString sql(
        u"INSERT INTO PLAYLIST_T (PL_ID, PL_NAME, PL_TRACK_LIST) VALUES (?1, ?2, ?3)");
    {
        CSQLiteStatement statement = m_db.CompileStatement(sql);
        const unsigned long mask =
            item->id != 0 ? everyColumn : formatBindMask(everyColumn, playlistId);
        bindPlaylistParams(*item, mask, statement);
        statement.ExecuteDML();
    }
    item->id = takeRowId(u"PLAYLIST_T");
}

void CQoCollDb::updatePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item)
{
    static const CString sql(
        u"UPDATE PLAYLIST_T SET PL_NAME = ?2, PL_TRACK_LIST = ?3 WHERE PL_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindPlaylistParams(*item, playlistId | playlistName | playlistTracks, statement);
    statement.ExecuteDML();
}

void CQoCollDb::deletePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item)
{
    static const CString sql(u"DELETE FROM PLAYLIST_T WHERE PL_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindPlaylistParams(*item, playlistId, statement);
    statement.ExecuteDML();
}

bool CQoCollDb::getPlaylist(int id, boost::shared_ptr<QoPlaylistDbItem>& item)
{
    static const CString sql(u"SELECT * FROM PLAYLIST_T WHERE PL_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, id);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    item = qo::makeObject<QoPlaylistDbItem>(QO_HERE(u".\\QoColl\\Db\\QoCollDbSessions"));
    qo::readRow(*item, result, u"PL_ID");
    return true;
}
