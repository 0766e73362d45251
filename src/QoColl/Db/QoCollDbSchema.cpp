#include "Database/src/DbFacade/SQLiteBackup.h"
#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/SetAside.h"
#include "common/CollPath.h"
#include "common/Log.h"
#include "common/ProfileTimer.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/StringArray.h"

#include <cerrno>
#include <memory>

// The schema, and how a database comes to be: checkVersion() reads the version table, makeTables()
// makes all tables in one transaction, and CreateDatabaseIfNotValid() decides what happens with a
// file, also when several processes start at the same time. QoCollDbUpdates.cpp has what happens to
// the rows of another version.

namespace
{
constexpr const char16_t* version = u"2.0.0.36";

/// How often a file that other processes keep replacing is examined before giving up.
constexpr int maxExaminations = 10;

/// The files that SQLite keeps beside a database.
constexpr const char16_t* sideFiles[] = {u"-wal", u"-shm", u"-journal"};

constexpr const char16_t* versionTable = u"VERSION_T";
constexpr const char16_t* tableNames[] = {versionTable,
                                          u"FILE_T",
                                          u"SESSION_T",
                                          u"PLAYLIST_T",
                                          u"COLL_T",
                                          u"AC_STREAM_T",
                                          u"AC_STREAM_TRACK_T",
                                          u"INPLACE_T",
                                          u"SHARE_T"};

/// The statements that make the schema. TEXT16 marks text that is bound as UTF-16, INTEGER64
/// numbers of 64 bits; SQLite keeps these words and takes the type from the TEXT and INT in them.
constexpr const char16_t* schema[] = {
    u"CREATE TABLE FILE_T (FT_ID INTEGER PRIMARY KEY, FT_PATH TEXT16 NOT NULL, FT_SOURCE INTEGER, "
    u"FT_CREAT_TIME INTEGER64, FT_MODIF_TIME INTEGER64, FT_ARTIST TEXT16, FT_ALBUM TEXT16, "
    u"FT_TITLE TEXT16, FT_GENRE TEXT16, FT_TRACK_NUMBER TEXT16, FT_YEAR TEXT16, FT_LYRICS TEXT16, "
    u"FT_PICTURE_PATH TEXT16, FT_SIZE INTEGER64, FT_DURATION INTEGER, FT_BITRATE INTEGER, "
    u"FT_FLAGS INTEGER, FT_SESSION INTEGER, FT_VELMORA_ID TEXT, FT_PARAMS TEXT, "
    u"FT_REVIEWED BOOLEAN, FT_IMPORTED BOOLEAN, FT_CLIP_UID TEXT16, FT_FP_PARAMS TEXT, "
    u"FT_COLL_ID TEXT);",
    u"CREATE INDEX IDX_FT_VELMORA_ID ON FILE_T(FT_VELMORA_ID);",
    u"CREATE INDEX IDX_FT_CLIP_UID ON FILE_T(FT_CLIP_UID);",
    u"CREATE INDEX IDX_FT_CREAT_TIME_FT_SOURCE ON FILE_T(FT_CREAT_TIME DESC, FT_SOURCE);",
    u"CREATE INDEX IDX_FT_COLL_ID ON FILE_T(FT_COLL_ID);",
    u"CREATE INDEX IDX_FT_SESSION ON FILE_T(FT_SESSION);",
    u"CREATE TABLE SESSION_T (ST_ID INTEGER PRIMARY KEY AUTOINCREMENT, ST_NAME TEXT, "
    u"ST_SOURCE INTEGER, ST_START_TIME INTEGER64, ST_END_TIME INTEGER64);",
    u"CREATE TABLE PLAYLIST_T (PL_ID INTEGER PRIMARY KEY AUTOINCREMENT, PL_NAME TEXT, "
    u"PL_TRACK_LIST TEXT);",
    u"CREATE TABLE COLL_T (CT_ID INTEGER PRIMARY KEY AUTOINCREMENT, CT_COLL_ID TEXT, "
    u"CT_SCAN_TIME INTEGER64, CT_ROOT_DIRS TEXT16, CT_ROOT_DIRS_TYPE TEXT16, "
    u"CT_USER_NAME TEXT16, CT_MODIFIED_TIME INTEGER64);",
    u"CREATE TABLE AC_STREAM_T (AS_ID INTEGER PRIMARY KEY AUTOINCREMENT, AS_STREAM_ID TEXT16, "
    u"AS_VELMORA_ID TEXT, AS_HIDDEN BOOLEAN, AS_HIDDEN_PATH TEXT16, AS_STREAM_TYPE INTEGER, "
    u"AS_SERVER_ID INTEGER, AS_STATION_NAME TEXT16, AS_MIRROR_URL TEXT16, "
    u"AS_ORIGINAL_BITRATE INTEGER, AS_CONTINUOUS BOOLEAN, AS_ENC_BITRATE INTEGER);",
    u"CREATE INDEX IDX_AS_VELMORA_ID ON AC_STREAM_T(AS_VELMORA_ID);",
    u"CREATE TABLE AC_STREAM_TRACK_T (AST_ID INTEGER PRIMARY KEY AUTOINCREMENT, "
    u"AST_TRACK_ID TEXT16, AST_STREAM_VELMORA_ID TEXT, AST_TRACK_VELMORA_ID TEXT, "
    u"AST_PARAMS TEXT);",
    u"CREATE INDEX IDX_AST_TRACK_VELMORA_ID ON AC_STREAM_TRACK_T(AST_TRACK_VELMORA_ID);",
    u"CREATE TABLE INPLACE_T (IN_ID INTEGER PRIMARY KEY, IN_PATH TEXT16 NOT NULL, "
    u"IN_CREAT_TIME INTEGER64, IN_MODIF_TIME INTEGER64, IN_ARTIST TEXT16, IN_ALBUM TEXT16, "
    u"IN_TITLE TEXT16, IN_GENRE TEXT16, IN_TRACK_NUMBER TEXT16, IN_YEAR TEXT16, "
    u"IN_LYRICS TEXT16, IN_PICTURE_PATH TEXT16, IN_SIZE INTEGER64, IN_DURATION INTEGER, "
    u"IN_VELMORA_ID TEXT, IN_PARAMS TEXT);",
    u"CREATE TABLE SHARE_T (SH_ID INTEGER PRIMARY KEY, SH_TYPE INTEGER, SH_PEER TEXT16, "
    u"SH_PEER_RECEIVED TEXT16, SH_FILES INTEGER, SH_ENABLE BOOL, SH_SHARE_ID TEXT16, "
    u"SH_OPPOSITE_SHARE_ID TEXT16, SH_INVITATION TEXT16, SH_INITIATOR BOOL, SH_NOTIFY BOOL);",
    u"CREATE TABLE VERSION_T (VT_VERSION TEXT NOT NULL);"};

/// Runs one statement and closes it, since an open one would prevent tables from being dropped.
/// Gives the first field of the first row, "" without one.
CString runQuery(CSQLiteDB& db, const CString& sql)
{
    CSQLiteStatement statement = db.CompileStatement(sql);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() || result.FieldCount() == 0 ? CString() : CString(result.GetTextField(0));
}
} // namespace

const char16_t* CQoCollDb::currentVersion() noexcept
{
    return version;
}

void CQoCollDb::getTables(CStringArray& tables)
{
    tables.RemoveAll();
    for (const char16_t* const name : tableNames)
    {
        if (name != versionTable)
            tables.Add(name);
    }
}

void CQoCollDb::getColumns(const CString& table, CStringArray& columns)
{
    columns.RemoveAll();
    const CString start = CString(u"CREATE TABLE ") + table + u" (";
    for (const char16_t* const statement : schema)
    {
        const CString sql(statement);
        if (sql.Left(start.GetLength()) != start)
            continue;
        // Each column is its name and its type, and no type has a comma.
        for (int at = start.GetLength(); at > 1; at = sql.Find(u", ", at) + 2)
            columns.Add(sql.Mid(at, sql.Find(u" ", at) - at));
    }
}

bool CQoCollDb::readVersion(const CString& path, CString& storedVersion)
{
    // Opening would create an absent file, even beside one whose name differs in case alone.
    qo::FileInfo info;
    if (qo::fileSystem().info(path, qo::Spelling::exact, info) == ENOENT)
        return false;
    CQoCollDb db(path);
    bool exists = false;
    db.checkVersion(exists);
    if (exists)
        storedVersion = db.m_version;
    return exists;
}

bool CQoCollDb::checkVersion(const CString& path, bool& exists)
{
    std::unique_ptr<CQoCollDb> db;
    try
    {
        db = std::make_unique<CQoCollDb>(path);
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        return true;
    }
    return db->checkVersion(exists);
}

bool CQoCollDb::checkVersion(bool& exists)
{
    exists = true;
    try
    {
        CSQLiteStatement statement = m_db.CompileStatement(u" SELECT * FROM VERSION_T");
        const CSQLiteQueryResult result = statement.ExecuteQuery();
        if (result.Eof())
            return false;
        m_version = result.GetTextField(u"VT_VERSION");
        return m_version == version;
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        // Any other failure, such as a lock, says nothing about the content of the file.
        if (!exception->isStatementError() && !exception->isUnreadableDatabase())
            throw exception.release();
        m_unreadable = exception->isUnreadableDatabase();
        exists = false;
        return false;
    }
}

void CQoCollDb::CreateDatabaseIfNotValid(const CString& path, const ConfigInfo& config)
{
    const qo::ProfileTimer timer(u"CQoCollDb::CreateDatabaseIfNotValid");
    if (makeIfNotValid(path, nullptr))
        return;
    // Another process that held the lock before may have replaced or rebuilt the file, so it is
    // examined again.
    const qo::CreationLock lock(path);
    for (int i = 0; i < maxExaminations; ++i)
    {
        qo::FileInfo examined;
        const int error = qo::fileSystem().info(path, qo::Spelling::exact, examined);
        if (makeIfNotValid(path, &config))
            return;
        if (error == 0)
            qo::setAside(path, examined);
    }
    qo::throwDatabaseError(u"The unreadable database " + path +
                           u" cannot be replaced: others go on changing it");
}

bool CQoCollDb::makeIfNotValid(const CString& path, const ConfigInfo* config)
{
    CQoCollDb db(path);
    bool hasVersion = false;
    if (db.checkVersion(hasVersion))
        return true;
    if (hasVersion && !config)
        return false;
    if (!db.m_unreadable)
        db.recreate(hasVersion, config ? *config : ConfigInfo());
    return !db.m_unreadable;
}

void CQoCollDb::recreate(bool hasVersion, const ConfigInfo& config)
{
    try
    {
        if (!makeTables(hasVersion))
            return;
        setWriteAheadLogging();
        if (hasVersion && importBackup())
            applyUpdates(config);
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        // Rows of another version stay where they are, damaged or not.
        if (hasVersion || !exception->isUnreadableDatabase())
            throw exception.release();
        m_unreadable = true;
    }
}

bool CQoCollDb::makeTables(bool hasVersion)
{
    // All or nothing, and one process at a time: of two that start together, one makes the tables.
    qo::DbTransaction transaction(*this);
    bool exists = false;
    if (checkVersion(exists) || exists != hasVersion || m_unreadable)
        return false;
    // Nobody can write here any more, so the copy has every row.
    if (hasVersion)
        createBackup();
    // The copy has the same rows: overwriting them with zeros takes as long as writing them again.
    runQuery(m_db, u"PRAGMA secure_delete = OFF;");
    dropTables();
    // Excludes others from the commit until the connection closes: the change to write-ahead
    // logging fails while another one reads, and SQLite does not wait there.
    runQuery(m_db, u"PRAGMA locking_mode = EXCLUSIVE;");
    createTables();
    transaction.commit();
    return true;
}

void CQoCollDb::dropTables()
{
    for (const char16_t* name : tableNames)
        try
        {
            runQuery(m_db, CString(u"DROP TABLE ") + name);
        }
        catch (CSQLiteException* raw)
        {
            std::unique_ptr<CSQLiteException> exception(raw);
            // A table may be missing. But a full or failing disk has ended the transaction, and
            // every further DROP would be final.
            if (!exception->isStatementError())
                throw exception.release();
        }
}

void CQoCollDb::createTables()
{
    for (const char16_t* sql : schema)
        runQuery(m_db, sql);
    CString sql;
    sql.Format(u"INSERT INTO VERSION_T (VT_VERSION) VALUES ('%s')", version);
    runQuery(m_db, sql);
}

/// The connection is opened again, which ends the exclusive mode of makeTables().
void CQoCollDb::setWriteAheadLogging()
{
    const CString mode = runQuery(m_db, u"PRAGMA journal_mode=WAL;");
    if (mode != u"wal")
        qo::log(qo::level::error,
                u"CQoCollDb::setWriteAheadLogging: %s stays in journal mode [%s]",
                m_db.path(),
                mode);
    m_insertOfNew.reset();
    for (auto& update : m_updates)
        update.reset();
    m_db.Close();
    m_db.Open();
}

void CQoCollDb::createBackup()
{
    // The new copy is made under another name, so a failure leaves the old copy.
    const CString target = m_db.path() + u".bak";
    const CString fresh = target + u".new";
    int error = 0;
    try
    {
        qo::backupDatabase(m_db.path(), fresh);
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        qo::log(qo::level::error, u"%s", exception->message());
        error = EIO;
    }
    // The side files of the old copy are removed only when the new one is complete.
    for (const char16_t* side : sideFiles)
        if (error == 0)
        {
            error = qo::fileSystem().removeFile(target + side);
            error = error == ENOENT ? 0 : error;
        }
    if (error == 0)
        error = qo::fileSystem().moveFile(fresh, target);
    if (error == 0)
    {
        // The name must outlast a power cut before the tables are dropped.
        (void)qo::fileSystem().sync(CQoCollPath(target).getParent().toString());
        return;
    }
    (void)qo::fileSystem().removeFile(fresh);
    qo::log(qo::level::error,
            u"CQoCollDb::createBackup(): failed to create a backup of db [%d]",
            error);
}
