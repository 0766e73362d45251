#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/AcStreamDbItem.h"
#include "QoColl/Db/SideRows.h"
#include "common/Log.h"
#include "common/ProfileTimer.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

#include <memory>

// Statements on recorded streams and the tracks that were cut from them. Rows are found by their
// velmoraId: saving updates the row if there is one, and inserts it otherwise.

namespace
{
// In both lists a column's parameter is its position, counted from 1.

constexpr const char16_t* streamColumns =
    u"AS_STREAM_ID , AS_VELMORA_ID , AS_HIDDEN , AS_HIDDEN_PATH , AS_STREAM_TYPE , AS_SERVER_ID , "
    u"AS_STATION_NAME , AS_MIRROR_URL , AS_ORIGINAL_BITRATE , AS_CONTINUOUS , AS_ENC_BITRATE";

constexpr const char16_t* trackColumns =
    u"AST_TRACK_ID , AST_STREAM_VELMORA_ID , AST_TRACK_VELMORA_ID , AST_PARAMS";

CString selectStreams(const char16_t* condition)
{
    return CString(u"SELECT ") + streamColumns + u" , AS_ID FROM AC_STREAM_T" + condition;
}

CString selectTracks(const char16_t* condition)
{
    return CString(u"SELECT ") + trackColumns + u" , AST_ID FROM AC_STREAM_TRACK_T" + condition;
}

/// With or without a given row id.
CString insertStream(const char16_t* idColumn, const char16_t* idValue)
{
    return CString(u"INSERT INTO AC_STREAM_T (") + streamColumns + idColumn +
           u") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11" + idValue + u")";
}

/// With or without a given row id.
CString insertTrack(const char16_t* idColumn, const char16_t* idValue)
{
    return CString(u"INSERT INTO AC_STREAM_TRACK_T (") + trackColumns + idColumn +
           u") VALUES (?1, ?2, ?3, ?4" + idValue + u")";
}

/// The parameter of a given row id, beyond those of the columns.
constexpr int paramRowId = 99;

void bindStream(const AcStreamDbItem& item, CSQLiteStatement& statement)
{
    statement.BindText(1, CQoCollDbUtils::GUIDToString(item.streamId));
    statement.BindText(2, item.velmoraId);
    statement.BindBool(3, item.hidden);
    statement.BindText(4, item.hiddenPath);
    statement.BindInt(5, item.streamType);
    statement.BindInt(6, item.serverId);
    statement.BindText(7, item.stationName);
    statement.BindText(8, item.mirrorUrl);
    statement.BindInt(9, item.originalBitrate);
    statement.BindBool(10, item.continuous);
    statement.BindInt(11, item.encBitrate);
}

void bindTrack(const AcStreamTrackDbItem& item, CSQLiteStatement& statement)
{
    statement.BindText(1, CQoCollDbUtils::GUIDToString(item.trackId));
    statement.BindText(2, item.streamVelmoraId);
    statement.BindText(3, item.trackVelmoraId);
    statement.BindText(4, item.params);
}

/// Logs the failure and deletes the exception.
void logFailure(CSQLiteException* raw)
{
    const std::unique_ptr<CSQLiteException> exception(raw);
    qo::log(qo::level::error, u"CQoCollDb::saveACStreamData failed. %s", exception->message());
}
} // namespace

void CQoCollDb::getAcStreams(AcStreamArray& items)
{
    static const CString sql = selectStreams(u"");
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        AcStreamDbItem item;
        qo::readRow(item, result, u"AS_ID");
        items.Add(item);
    }
}

bool CQoCollDb::getAcStream(const CString& velmoraId, AcStreamDbItem& item)
{
    static const CString sql = selectStreams(u" WHERE AS_VELMORA_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, velmoraId);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    qo::readRow(item, result, u"AS_ID");
    return true;
}

void CQoCollDb::saveAcStream(const AcStreamDbItem& item)
{
    static const CString insertSql = insertStream(u"", u"");
    static const CString updateSql(
        u"UPDATE AC_STREAM_T SET AS_STREAM_ID = ?1 , AS_VELMORA_ID = ?2 , AS_HIDDEN = ?3 , "
        u"AS_HIDDEN_PATH = ?4 , AS_STREAM_TYPE = ?5 , AS_SERVER_ID = ?6 , AS_STATION_NAME = ?7 , "
        u"AS_MIRROR_URL = ?8 , AS_ORIGINAL_BITRATE = ?9 , AS_CONTINUOUS = ?10 , "
        u"AS_ENC_BITRATE = ?11 WHERE AS_VELMORA_ID = ?2");
    AcStreamDbItem stored;
    const bool exists = getAcStream(item.velmoraId, stored);
    CSQLiteStatement statement = m_db.CompileStatement(exists ? updateSql : insertSql);
    bindStream(item, statement);
    statement.ExecuteDML();
}

void CQoCollDb::saveAcStreams(const AcStreamArray& items)
{
    const std::uint32_t start = qo::systemClock().tickCount();
    for (const AcStreamDbItem& item : items)
        saveAcStream(item);
    qo::log(qo::level::timing,
            u"CQoCollDb::saveAcStreams took %d millis",
            qo::systemClock().tickCount() - start);
}

void CQoCollDb::deleteAllAcStreams()
{
    deleteAllAcStreamTracks();
    m_db.Execute(u"DELETE FROM AC_STREAM_T");
}

void CQoCollDb::insertAcStream(const boost::shared_ptr<AcStreamDbItem>& item)
{
    static const CString sql = insertStream(u" , AS_ID", u", ?99");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindStream(*item, statement);
    if (item->id != 0)
        statement.BindInt(paramRowId, item->id);
    statement.ExecuteDML();
}

void CQoCollDb::getAcStreamTracks(AcStreamTrackArray& items)
{
    static const CString sql = selectTracks(u"");
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        AcStreamTrackDbItem item;
        qo::readRow(item, result, u"AST_ID");
        items.Add(item);
    }
}

bool CQoCollDb::getAcStreamTrack(const CString& trackVelmoraId, AcStreamTrackDbItem& item)
{
    static const CString sql = selectTracks(u" WHERE AST_TRACK_VELMORA_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, trackVelmoraId);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    if (result.Eof())
        return false;
    qo::readRow(item, result, u"AST_ID");
    return true;
}

void CQoCollDb::saveAcStreamTrack(const AcStreamTrackDbItem& item)
{
    static const CString insertSql = insertTrack(u"", u"");
    static const CString updateSql(
        u"UPDATE AC_STREAM_TRACK_T SET AST_TRACK_ID = ?1 , AST_STREAM_VELMORA_ID = ?2 , "
        u"AST_TRACK_VELMORA_ID = ?3 , AST_PARAMS = ?4 WHERE AST_TRACK_VELMORA_ID = ?3");
    AcStreamTrackDbItem stored;
    const bool exists = getAcStreamTrack(item.trackVelmoraId, stored);
    CSQLiteStatement statement = m_db.CompileStatement(exists ? updateSql : insertSql);
    bindTrack(item, statement);
    statement.ExecuteDML();
}

void CQoCollDb::saveAcStreamTracks(const AcStreamTrackArray& items)
{
    for (const AcStreamTrackDbItem& item : items)
        saveAcStreamTrack(item);
}

void CQoCollDb::deleteAllAcStreamTracks()
{
    m_db.Execute(u"DELETE FROM AC_STREAM_TRACK_T");
}

void CQoCollDb::insertAcStreamTrack(const boost::shared_ptr<AcStreamTrackDbItem>& item)
{
    static const CString sql = insertTrack(u" , AST_ID", u", ?99");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindTrack(*item, statement);
    if (item->id != 0)
        statement.BindInt(paramRowId, item->id);
    statement.ExecuteDML();
}

bool CQoCollDb::getACStreamData(AcStreamArray& streams, AcStreamTrackArray& tracks)
{
    const qo::ProfileTimer timer(u"CQoCollDb::getACStreamData");
    try
    {
        qo::DbTransaction transaction(*this, eSQLiteTransactionType::deferred);
        getAcStreams(streams);
        getAcStreamTracks(tracks);
        transaction.commit();
        return true;
    }
    catch (CSQLiteException* raw)
    {
        logFailure(raw);
        streams.RemoveAll();
        tracks.RemoveAll();
        return false;
    }
}

void CQoCollDb::saveACStreamData(const AcStreamArray& streams, const AcStreamTrackArray& tracks)
{
    if (streams.IsEmpty())
        return;
    try
    {
        qo::DbTransaction transaction(*this);
        deleteAllAcStreams();
        saveAcStreams(streams);
        saveAcStreamTracks(tracks);
        transaction.commit();
    }
    catch (CSQLiteException* raw)
    {
        logFailure(raw);
    }
}
