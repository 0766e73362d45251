#include "core/store/StoreSchema.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

namespace qo::host::storeSchema
{
namespace
{
constexpr int currentVersion = offers;

constexpr const char16_t* statements[] = {
    u"CREATE TABLE IF NOT EXISTS EDIT_T (ET_ID TEXT NOT NULL, ET_FIELD TEXT NOT NULL, "
    u"ET_VALUE TEXT NOT NULL, ET_PATH TEXT NOT NULL, ET_SIZE INTEGER NOT NULL, "
    u"ET_MODIF_TIME INTEGER NOT NULL)",
    u"CREATE UNIQUE INDEX IF NOT EXISTS IDX_ET_ID ON EDIT_T(ET_ID, ET_FIELD) WHERE ET_ID <> ''",
    u"CREATE UNIQUE INDEX IF NOT EXISTS IDX_ET_PATH ON EDIT_T(ET_PATH, ET_FIELD) WHERE ET_ID = ''",
    u"CREATE TABLE IF NOT EXISTS HEAD_T (HT_ID TEXT PRIMARY KEY, HT_SIZE INTEGER NOT NULL, "
    u"HT_MODIF_TIME INTEGER NOT NULL, HT_DIGEST INTEGER NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS MARK_T (MT_ROOT TEXT PRIMARY KEY, MT_LAST_SAVE INTEGER "
    u"NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS READ_T (RT_PATH TEXT PRIMARY KEY, RT_LAST_SAVE INTEGER "
    u"NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS UNREAD_T (UT_PATH TEXT PRIMARY KEY)",
    u"CREATE TABLE IF NOT EXISTS FOLDER_T (FO_PATH TEXT PRIMARY KEY, FO_DEVICE INTEGER NOT NULL, "
    u"FO_KIND INTEGER NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS FACT_T (FA_NAME TEXT PRIMARY KEY, FA_VALUE TEXT NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS CHECKED_T (CT_ID TEXT PRIMARY KEY)",
    u"CREATE TABLE IF NOT EXISTS PLAYLIST_ENTRY_T (PE_LIST INTEGER NOT NULL, PE_POSITION INTEGER "
    u"NOT NULL, PE_ROW INTEGER NOT NULL, PE_ID TEXT NOT NULL, PE_PATH TEXT NOT NULL, PE_TEXT TEXT "
    u"NOT NULL, PE_TITLE TEXT NOT NULL, PE_ARTIST TEXT NOT NULL, PE_DURATION INTEGER NOT NULL, "
    u"PRIMARY KEY (PE_LIST, PE_POSITION))",
    u"CREATE TABLE IF NOT EXISTS PLAYLIST_CHANGE_T (PC_LIST INTEGER PRIMARY KEY, PC_TRACKS TEXT "
    u"NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS LIVING_LIST_T (LL_NAME TEXT PRIMARY KEY, LL_QUERY TEXT NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS TAG_NOTE_T (TN_ID TEXT PRIMARY KEY, TN_ALBUM_ARTIST TEXT NOT "
    u"NULL, TN_DISC TEXT NOT NULL, TN_COMMENT TEXT NOT NULL, TN_RATING INTEGER NOT NULL, TN_PLAYS "
    u"INTEGER NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS OWN_NOTE_T (ON_ID TEXT PRIMARY KEY, ON_RATING INTEGER NOT NULL "
    u"DEFAULT -1, ON_PLAYS INTEGER NOT NULL DEFAULT 0, ON_LAST_PLAYED INTEGER NOT NULL DEFAULT 0, "
    u"ON_ADDED_BY TEXT NOT "
    u"NULL DEFAULT '')",
    u"CREATE TABLE IF NOT EXISTS OFFER_T (OT_SHARE TEXT PRIMARY KEY, OT_QUERY TEXT NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS OLD_FILE_T (OF_NAME TEXT PRIMARY KEY, OF_STATE TEXT NOT NULL)"};

int versionOf(CSQLiteDB& db)
{
    CSQLiteStatement statement = db.CompileStatement(u"PRAGMA user_version");
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    const int version = result.Eof() ? 0 : result.GetIntField(0);
    if (version > currentVersion)
        throw HostError(ExitCode::failed,
                        shownPath(db.path()) +
                            " was made by a newer version of this program; it was left alone");
    return version;
}
} // namespace

void make(CSQLiteDB& db)
{
    if (versionOf(db) == currentVersion)
        return;
    CSQLiteDbTransaction transaction(
        &db, eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
    for (const char16_t* const statement : statements)
        db.Execute(statement);
    CString version;
    version.Format(u"PRAGMA user_version = %d", currentVersion);
    db.Execute(version);
    transaction.SetCommit();
}

bool isMade(CSQLiteDB& db)
{
    return versionOf(db) > 0;
}

bool has(CSQLiteDB& db, int version)
{
    return versionOf(db) >= version;
}
} // namespace qo::host::storeSchema
