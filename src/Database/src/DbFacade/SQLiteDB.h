#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "Database/src/DbFacade/SQLiteTimeLog.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// One connection to a database file. Not for several threads at once; each operation makes its
/// own. Every failure is a thrown CSQLiteException*. Waiting for other connections is left to
/// SQLite's busy handler, with a minute as its limit.
class QO_API CSQLiteDB
{
public:
    /// Opens nothing. A path in collection form. In a process that has not started the log of the
    /// database layer it is started here, at the highest level and beside the database.
    explicit CSQLiteDB(const char16_t* path);
    /// Closes; never throws.
    virtual ~CSQLiteDB();
    CSQLiteDB(const CSQLiteDB&) = delete;
    CSQLiteDB& operator=(const CSQLiteDB&) = delete;

    /// A file that is not there is made, readable by its owner only, and will hold UTF-16 text. An
    /// open connection is closed first.
    void Open();
    /// Throws while a statement of this connection lives. Harmless when closed.
    void Close();

    /// One statement without rows, in one step. A statement that yields a row throws.
    void Execute(const CString& sql);
    [[nodiscard]] CSQLiteStatement CompileStatement(const CString& sql) const;

    std::int64_t LastInsertRowId() const;
    void SetBusyTimeout(int milliseconds);
    /// Gives back the memory of pages that were read; they are read again when they are needed.
    void ReleaseMemory() noexcept;

    const CString& path() const noexcept { return m_path; }

private:
    void check() const;
    sqlite3_stmt* prepare(const CString& sql) const;

    sqlite3* m_db = nullptr;
    int m_busyTimeout = 60000; ///< milliseconds
    CString m_path;
    CSQLiteTimeLog m_timeLog;
};
