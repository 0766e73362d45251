#include "Database/src/DbFacade/SQLiteBackup.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteReport.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/Utf.h"

#include <sqlite3.h>

#include <memory>
#include <string>

// The copy goes to "<to>.unfinished", page by page with pauses for other connections, and is
// renamed when it is complete.

namespace
{
using Connection = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

constexpr int busyTimeout = 60000; ///< milliseconds
constexpr int pagesPerStep = 4096;
constexpr int pauseWhenBusy = 50; ///< milliseconds

Connection open(const CString& path, int flags)
{
    const std::string systemPath = qo::toSystemPath(path);
    if (systemPath.empty())
        qo::sqlite::throwError(SQLITE_CANTOPEN, u"unable to open database file", __LINE__);
    sqlite3* raw = nullptr;
    const int result = sqlite3_open_v2(systemPath.c_str(), &raw, flags, nullptr);
    Connection connection(raw, sqlite3_close);
    if (result != SQLITE_OK)
        qo::sqlite::throwFromConnection(connection.get(), CString(), __LINE__);
    sqlite3_extended_result_codes(connection.get(), 1);
    sqlite3_busy_timeout(connection.get(), busyTimeout);
    return connection;
}

/// A change by another connection between two steps restarts the copy. After a few restarts the
/// rest is copied in a single step, in which nobody can interfere.
class Steps
{
public:
    int pages() const { return m_restarts < maxRestarts ? pagesPerStep : everyPage; }
    void done(int remaining)
    {
        m_restarts += m_remaining >= 0 && remaining >= m_remaining;
        m_remaining = remaining;
    }

private:
    static constexpr int maxRestarts = 3;
    static constexpr int everyPage = -1;

    int m_remaining = -1;
    int m_restarts = 0;
};

void copyPages(sqlite3* source, sqlite3* target)
{
    sqlite3_backup* const backup = sqlite3_backup_init(target, "main", source, "main");
    if (!backup)
        qo::sqlite::throwFromConnection(target, CString(), __LINE__);
    Steps steps;
    int waited = 0;
    int result = SQLITE_OK;
    while (result != SQLITE_DONE && waited < busyTimeout)
    {
        result = sqlite3_backup_step(backup, steps.pages());
        if (result == SQLITE_OK)
            steps.done(sqlite3_backup_remaining(backup));
        else if (result == SQLITE_BUSY || result == SQLITE_LOCKED)
            waited += sqlite3_sleep(pauseWhenBusy);
        else
            break;
    }
    const int finished = sqlite3_backup_finish(backup);
    if (result == SQLITE_DONE && finished == SQLITE_OK)
        return;
    // A copy that gave up waiting leaves no message in its connections.
    const int code = finished != SQLITE_OK ? finished : result;
    qo::sqlite::throwError(code, qo::fromUtf8(sqlite3_errstr(code)), __LINE__);
}

void throwSystemError(int error)
{
    qo::sqlite::throwError(CSQLiteException::wrapperError,
                           u"the copy cannot be put in place: " + qo::errorText(error),
                           __LINE__);
}

/// With the journal, which SQLite leaves on a full disk.
void removeUnfinished(const CString& unfinished)
{
    for (const char16_t* const part : {u"", u"-journal"})
        (void)qo::fileSystem().removeFile(unfinished + part);
}
} // namespace

void qo::backupDatabase(const CString& from, const CString& to)
{
    const CString unfinished = to + u".unfinished";
    IFileSystem& files = fileSystem();
    removeUnfinished(unfinished);
    int error = 0;
    // Created here, so that only its owner can read it from the first byte on.
    if (!files.open(unfinished, OpenMode::createAlways, error))
        throwSystemError(error);
    try
    {
        const Connection source = open(from, SQLITE_OPEN_READWRITE);
        const Connection target = open(unfinished, SQLITE_OPEN_READWRITE);
        copyPages(source.get(), target.get());
    }
    catch (...)
    {
        removeUnfinished(unfinished);
        throw;
    }
    // SQLite has flushed the content. The new name is not flushed: a power cut may bring back the
    // old copy, which is complete too.
    error = files.moveFile(unfinished, to);
    if (error != 0)
    {
        removeUnfinished(unfinished);
        throwSystemError(error);
    }
}
