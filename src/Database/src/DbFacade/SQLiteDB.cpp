#include "Database/src/DbFacade/SQLiteDB.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteReport.h"
#include "common/LogLevel.h"
#include "common/SimpleLogger.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/PercentEncoding.h"
#include "types/Utf.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>

using namespace qo::sqlite;

namespace
{
/// Creates a missing file, so that nobody else can read it from its first byte on; SQLite gives its
/// side files the same permissions. Failures are reported when SQLite opens the file.
void makePrivateFile(const CString& path)
{
    // SQLite takes the name exactly: one that differs in case is another file.
    qo::FileInfo info;
    if (qo::fileSystem().info(path, qo::Spelling::exact, info) != ENOENT)
        return;
    int error = 0;
    qo::fileSystem().open(path, qo::OpenMode::append, error);
}

/// A name that is not valid UTF-8 cannot be passed as UTF-16. So its bytes are passed, and a new
/// database gets the encoding that the UTF-16 function would have given it.
int openBytes(const std::string& path, sqlite3*& db)
{
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    const int result = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
    if (result != SQLITE_OK)
        return result;
    return sqlite3_exec(db, "PRAGMA encoding = \"UTF-16le\"", nullptr, nullptr, nullptr);
}

/// Without memory statistics SQLite takes no lock for each small allocation, of which every
/// compiled statement makes dozens. Nor does it take 20 pages of cache at once for each connection:
/// most are opened for a question or two. Has no effect if the host has used SQLite before.
void spareMemory()
{
    static const int once = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) |
                            sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
    static_cast<void>(once);
}

bool isEmptyOrAbsent(const CString& path)
{
    qo::FileInfo info;
    return qo::fileSystem().info(path, qo::Spelling::exact, info) != 0 || info.size == 0;
}

/// Whether SQLite could not write here: to the file, or beside it where it keeps what is committed
/// last. As long as others have the database open they share what stands beside it.
bool isReadOnly(const CString& path)
{
    if (isEmptyOrAbsent(path))
        return false;
    qo::IFileSystem& files = qo::fileSystem();
    if (files.mayChange(path) != 0)
        return true;
    const std::u16string_view name = path.view();
    const CString folder(name.substr(0, std::max<std::size_t>(name.rfind(u'\\'), 3)));
    return files.mayChange(folder) != 0 && !files.exists(path + u"-shm");
}

/// Opens a database that cannot be written. With an empty log nobody can be changing it, so SQLite
/// need not lock it or put files beside it, which it could not, or would leave there.
int openReadOnly(const CString& path, const std::string& systemPath, sqlite3*& db)
{
    if (!isEmptyOrAbsent(path + u"-wal"))
        return sqlite3_open_v2(systemPath.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    const std::string uri = "file:" + qo::percentEncoded(systemPath, "/.-");
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    return sqlite3_open_v2((uri + "?immutable=1").c_str(), &db, flags, nullptr);
}

/// A view or a trigger that this SQLite cannot parse makes it refuse the whole schema. While the
/// schema may be written it takes what it can parse: enough, if all tables and indexes are there.
/// False, with the connection and its error as they were, in any other case.
bool passOverViews(sqlite3* db)
{
    const std::string_view message = sqlite3_errmsg(db);
    if (!message.starts_with("malformed database schema"))
        return false;
    constexpr const char* missing =
        "SELECT 1 FROM sqlite_master m WHERE (type = 'table' AND NOT EXISTS (SELECT 1 FROM "
        "pragma_table_info(m.name))) OR (type = 'index' AND NOT EXISTS (SELECT 1 FROM "
        "pragma_index_info(m.name)))";
    sqlite3_exec(db, "PRAGMA writable_schema = ON", nullptr, nullptr, nullptr);
    sqlite3_stmt* statement = nullptr;
    const bool isComplete = sqlite3_prepare_v2(db, missing, -1, &statement, nullptr) == SQLITE_OK &&
                            sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_finalize(statement);
    if (!isComplete)
    {
        sqlite3_exec(db, "PRAGMA writable_schema = RESET", nullptr, nullptr, nullptr);
        sqlite3_exec(db, "SELECT 1 FROM sqlite_master", nullptr, nullptr, nullptr);
    }
    return isComplete;
}

int openDatabase(const CString& path, sqlite3*& db)
{
    spareMemory();
    const std::string systemPath = qo::toSystemPath(path);
    // An empty name would open a temporary database that vanishes with the connection.
    if (systemPath.empty())
        throwError(SQLITE_CANTOPEN, u"unable to open database file", __LINE__);
    if (isReadOnly(path))
        return openReadOnly(path, systemPath, db);
    makePrivateFile(path);
    const CString wide = qo::fromUtf8(systemPath);
    if (qo::toUtf8(wide) != systemPath)
        return openBytes(systemPath, db);
    return sqlite3_open16(wide.GetString(), &db);
}
} // namespace

CSQLiteDB::CSQLiteDB(const char16_t* path) : m_path(path), m_timeLog(u"CSQLiteDB", m_path)
{
    if (!IsSimpleLoggerInitialized())
        InitSimpleLogger(qo::level::detail, m_path + u"_SimpLog");
}

CSQLiteDB::~CSQLiteDB()
{
    try
    {
        Close();
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
    }
}

void CSQLiteDB::Open()
{
    if (m_db)
        Close();
    if (isLogged(qo::level::detail))
        log(qo::level::detail, __LINE__, u"Open " + m_path);
    if (openDatabase(m_path, m_db) != SQLITE_OK)
    {
        const std::unique_ptr<sqlite3, int (*)(sqlite3*)> failed(m_db, sqlite3_close);
        m_db = nullptr;
        throwFromConnection(failed.get(), CString(), __LINE__);
    }
    sqlite3_extended_result_codes(m_db, 1);
    sqlite3_busy_timeout(m_db, m_busyTimeout);
}

void CSQLiteDB::Close()
{
    if (isLogged(qo::level::detail))
        log(qo::level::detail, __LINE__, u"Close " + m_path);
    if (!m_db)
        return;
    if (sqlite3_close(m_db) != SQLITE_OK)
        throwFromConnection(m_db, CString(), __LINE__);
    m_db = nullptr;
}

void CSQLiteDB::check() const
{
    if (!m_db)
        throwError(CSQLiteException::wrapperError, u"Database not open", __LINE__);
}

/// A compiled statement, which the caller finalizes.
sqlite3_stmt* CSQLiteDB::prepare(const CString& sql) const
{
    check();
    sqlite3_stmt* statement = nullptr;
    int result = sqlite3_prepare16_v2(m_db, sql.GetString(), -1, &statement, nullptr);
    if ((result & 0xFF) == SQLITE_CORRUPT && passOverViews(m_db))
        result = sqlite3_prepare16_v2(m_db, sql.GetString(), -1, &statement, nullptr);
    if (result != SQLITE_OK)
        throwFromConnection(m_db, sql, __LINE__);
    return statement;
}

void CSQLiteDB::Execute(const CString& sql)
{
    const CSQLiteTimeLog timeLog(u"CSQLiteDB::Execute", sql);
    sqlite3_stmt* const statement = prepare(sql);
    const int result = sqlite3_step(statement);
    sqlite3_finalize(statement);
    if (result != SQLITE_DONE)
        throwFromConnection(m_db, sql, __LINE__);
}

CSQLiteStatement CSQLiteDB::CompileStatement(const CString& sql) const
{
    return CSQLiteStatement(m_db, prepare(sql), sql);
}

std::int64_t CSQLiteDB::LastInsertRowId() const
{
    check();
    return sqlite3_last_insert_rowid(m_db);
}

void CSQLiteDB::SetBusyTimeout(int milliseconds)
{
    m_busyTimeout = milliseconds;
    if (m_db)
        sqlite3_busy_timeout(m_db, milliseconds);
}

void CSQLiteDB::ReleaseMemory() noexcept
{
    if (m_db)
        sqlite3_db_release_memory(m_db);
}
