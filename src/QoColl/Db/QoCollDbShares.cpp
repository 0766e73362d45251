#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbRows.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoShareDbItem.h"
#include "QoColl/Db/SideRows.h"

// Statements on inplace files, shares and collections. Lists of root folders and their types are
// stored as texts with a line feed between the elements.

namespace
{
/// Parameter n is column n of the table.
void bindInplaceFileParams(const QoInplaceFileDbItem& item,
                           bool bindId,
                           CSQLiteStatement& statement)
{
    if (bindId)
        statement.BindInt(1, item.id);
    statement.BindText(2, item.path);
    statement.BindInt64(3, qo::toTicks(item.createTime));
    statement.BindInt64(4, qo::toTicks(item.modifTime));
    statement.BindText(5, item.artist);
    statement.BindText(6, item.album);
    statement.BindText(7, item.title);
    statement.BindText(8, item.genre);
    statement.BindText(9, item.trackNumber);
    statement.BindText(10, item.year);
    statement.BindText(11, item.lyrics);
    statement.BindText(12, item.picturePath);
    statement.BindInt64(13, item.size);
    statement.BindInt(14, item.duration);
    statement.BindText(15, item.velmoraId);
    statement.BindText(16, item.params);
}

void bindShareParams(const QoShareDbItem& item, bool bindId, CSQLiteStatement& statement)
{
    if (bindId)
        statement.BindInt(1, item.id);
    statement.BindInt(2, item.type);
    statement.BindText(3, item.peer);
    statement.BindText(4, item.peerReceived);
    statement.BindInt(5, item.files);
    statement.BindBool(6, item.enable);
    statement.BindText(7, item.shareId);
    statement.BindText(8, item.oppositeShareId);
    statement.BindText(9, item.invitation);
    statement.BindBool(10, item.initiator);
    statement.BindBool(11, item.notify);
}

/// Numbers with a line feed between them.
CString joinNumbers(const CArray<int>& numbers)
{
    CStringArray texts;
    for (const int number : numbers)
    {
        CString text;
        text.Format(u"%d", number);
        texts.Add(text);
    }
    return texts.join(u"\n");
}
} // namespace

void CQoCollDb::getAllInplaceFiles(DbItemArray<QoInplaceFileDbItem>& items)
{
    static const CString sql(u"SELECT * FROM INPLACE_T ORDER BY IN_CREAT_TIME DESC;");
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        const auto item =
            qo::newRow<QoInplaceFileDbItem>(u"CQoCollDb::getAllInplaceFiles : not enough memory");
        if (!item)
            break;
        qo::readRow(*item, result, u"IN_ID");
        items.Add(item);
    }
}

void CQoCollDb::insertInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item)
{
    static const CString sql(
        u"INSERT INTO INPLACE_T (IN_ID, IN_PATH, IN_CREAT_TIME, IN_MODIF_TIME, IN_ARTIST, "
        u"IN_ALBUM, IN_TITLE, IN_GENRE, IN_TRACK_NUMBER, IN_YEAR, IN_LYRICS, IN_PICTURE_PATH, "
        u"IN_SIZE, IN_DURATION, IN_VELMORA_ID, IN_PARAMS) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, "
        u"?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16)");
    {
        CSQLiteStatement statement = m_db.CompileStatement(sql);
        bindInplaceFileParams(*item, item->id > 0, statement);
        statement.ExecuteDML();
    }
    item->id = takeRowId(u"INPLACE_T");
}

/// Inplace files are only ever added, see QoCollDb.h.
void CQoCollDb::updateInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>&) {}

void CQoCollDb::deleteInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>&) {}

bool CQoCollDb::getInplaceFile(int, boost::shared_ptr<QoInplaceFileDbItem>&)
{
    return false;
}

void CQoCollDb::getAllShares(DbItemArray<QoShareDbItem>& items)
{
    static const CString sql(u"SELECT * FROM SHARE_T");
    items.RemoveAll();
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        const auto item = qo::newRow<QoShareDbItem>(u"CQoCollDb::getAllShares : not enough memory");
        if (!item)
            break;
        qo::readRow(*item, result, u"SH_ID");
        items.Add(item);
    }
}

void CQoCollDb::insertShare(boost::shared_ptr<QoShareDbItem>& item)
{
    static const CString sql(
        u"INSERT INTO SHARE_T (SH_ID, SH_TYPE, SH_PEER, SH_PEER_RECEIVED, SH_FILES, SH_ENABLE, "
        u"SH_SHARE_ID, SH_OPPOSITE_SHARE_ID, SH_INVITATION, SH_INITIATOR, SH_NOTIFY) "
        u"VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)");
    {
        CSQLiteStatement statement = m_db.CompileStatement(sql);
        bindShareParams(*item, item->id > 0, statement);
        statement.ExecuteDML();
    }
    item->id = takeRowId(u"SHARE_T");
}

void CQoCollDb::updateShare(boost::shared_ptr<QoShareDbItem>& item)
{
    static const CString sql(
        u"UPDATE SHARE_T SET SH_TYPE = ?2, SH_PEER = ?3, SH_PEER_RECEIVED = ?4, SH_FILES = ?5, "
        u"SH_ENABLE = ?6, SH_SHARE_ID = ?7, SH_OPPOSITE_SHARE_ID = ?8, SH_INVITATION = ?9, "
        u"SH_INITIATOR = ?10, SH_NOTIFY = ?11 WHERE SH_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    bindShareParams(*item, item->id > 0, statement);
    statement.ExecuteDML();
}

void CQoCollDb::deleteShare(boost::shared_ptr<QoShareDbItem>& item)
{
    static const CString sql(u"DELETE FROM SHARE_T WHERE SH_ID = ?1");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt(1, item->id);
    statement.ExecuteDML();
}

bool CQoCollDb::getCollInfo(const CString& collId, CollInfoDbItem& item)
{
    static const CString sql(
        u"SELECT CT_ID, CT_COLL_ID, CT_SCAN_TIME, CT_ROOT_DIRS, CT_ROOT_DIRS_TYPE, CT_USER_NAME, "
        u"CT_MODIFIED_TIME FROM COLL_T WHERE CT_COLL_ID = ?1 ;");
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindText(1, collId);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    CollInfoDbItem found;
    const bool exists = !result.Eof();
    if (exists)
        qo::readRow(found, result, u"CT_ID");
    item = std::move(found);
    return exists;
}

void CQoCollDb::setCollInfo(const CString& collId, const CollInfoDbItem& item)
{
    static const CString insertSql(
        u"INSERT INTO COLL_T (CT_COLL_ID, CT_SCAN_TIME, CT_ROOT_DIRS, CT_ROOT_DIRS_TYPE, "
        u"CT_USER_NAME, CT_MODIFIED_TIME) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    static const CString updateSql(
        u"UPDATE COLL_T SET CT_SCAN_TIME = ?2, CT_ROOT_DIRS = ?3, CT_ROOT_DIRS_TYPE = ?4, "
        u"CT_USER_NAME = ?5, CT_MODIFIED_TIME = ?6 WHERE CT_COLL_ID = ?1 ;");
    // Updates the row of the collection if there is one, else inserts it.
    CollInfoDbItem stored;
    CSQLiteStatement statement =
        m_db.CompileStatement(getCollInfo(collId, stored) ? updateSql : insertSql);
    statement.BindText(1, collId);
    statement.BindInt64(2, qo::toTicks(item.scanTime));
    statement.BindText(3, item.rootDirs.join(u"\n"));
    statement.BindText(4, joinNumbers(item.rootDirTypes));
    statement.BindText(5, item.userName);
    statement.BindInt64(6, qo::toTicks(item.modifiedTime));
    statement.ExecuteDML();
}

void CQoCollDb::deleteColl(const CString& collId)
{
    static const CString statements[] = {u"DELETE FROM COLL_T WHERE CT_COLL_ID = ?1",
                                         u"DELETE FROM FILE_T WHERE FT_COLL_ID = ?1"};
    for (const CString& sql : statements)
    {
        CSQLiteStatement statement = m_db.CompileStatement(sql);
        statement.BindText(1, collId);
        statement.ExecuteDML();
    }
}
