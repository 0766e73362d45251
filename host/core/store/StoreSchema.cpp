#include "core/store/StoreSchema.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/session/KernelThread.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <memory>

namespace qo::host::storeSchema
{
namespace
{
constexpr int currentVersion = 1;

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
    u"CREATE TABLE IF NOT EXISTS FOLDER_T (FO_PATH TEXT PRIMARY KEY, FO_DEVICE INTEGER NOT NULL, "
    u"FO_KIND INTEGER NOT NULL)",
    u"CREATE TABLE IF NOT EXISTS OLD_FILE_T (OF_NAME TEXT PRIMARY KEY, OF_STATE TEXT NOT NULL)"};

struct Table
{
    const char16_t* name;
    const char16_t* columns;
};

/// What is dearest comes first.
constexpr Table tables[] = {
    {u"EDIT_T", u"ET_ID, ET_FIELD, ET_VALUE, ET_PATH, ET_SIZE, ET_MODIF_TIME"},
    {u"OLD_FILE_T", u"OF_NAME, OF_STATE"},
    {u"MARK_T", u"MT_ROOT, MT_LAST_SAVE"},
    {u"FOLDER_T", u"FO_PATH, FO_DEVICE, FO_KIND"},
    {u"HEAD_T", u"HT_ID, HT_SIZE, HT_MODIF_TIME, HT_DIGEST"}};

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

/// A failure to write must not pass for a damaged place of the source.
void insertRow(CSQLiteStatement& insert, const CSQLiteDB& db)
{
    try
    {
        insert.ExecuteDML();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(db.path());
    }
}

/// False when the reading broke off. All values travel as texts: the columns of the new table give
/// the numbers their type back.
bool copyRows(CSQLiteDB& from, CSQLiteDB& to, const Table& table, const char16_t* order)
{
    const CString columns = table.columns;
    const CString name = table.name;
    try
    {
        CSQLiteStatement source = from.CompileStatement(u"SELECT " + columns + u" FROM " + name +
                                                        u" NOT INDEXED ORDER BY rowid " + order);
        CSQLiteQueryResult row = source.ExecuteQuery();
        CString places = u"?1";
        for (int i = 2; i <= row.FieldCount(); ++i)
            places.AppendFormat(u", ?%d", i);
        CSQLiteStatement insert = to.CompileStatement(u"INSERT OR IGNORE INTO " + name + u" (" +
                                                      columns + u") VALUES (" + places + u")");
        for (; !row.Eof(); row.NextRow())
        {
            for (int i = 0; i < row.FieldCount(); ++i)
                insert.BindText(i + 1, row.GetTextField(i));
            insertRow(insert, to);
        }
        return true;
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        return false;
    }
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
    return versionOf(db) == currentVersion;
}

void salvage(CSQLiteDB& from, CSQLiteDB& to)
{
    CSQLiteDbTransaction transaction(
        &to, eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
    for (const Table& table : tables)
    {
        if (!copyRows(from, to, table, u"ASC"))
            copyRows(from, to, table, u"DESC");
    }
    transaction.SetCommit();
}
} // namespace qo::host::storeSchema
