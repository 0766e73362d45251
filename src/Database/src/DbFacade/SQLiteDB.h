#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "Database/src/DbFacade/SQLiteTimeLog.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// One connection to a database file. Not for several threads at once; each operation makes its
/// own. Every failure is a thrown CSQLiteException*, which the catcher deletes. SQLite waits for
/// other connections for up to a minute.
///
///   CSQLiteDB db(path);
///   db.Open();
///   CSQLiteStatement statement =
///       db.CompileStatement(u"SELECT FT_PATH FROM FILE_T WHERE FT_ID = ?1");
///   statement.BindInt(1, 7);
///   for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
///       use(row.GetTextField(0));
class QO_API CSQLiteDB
{
public:
    /// Does not open the file. The path is in collection form. If the process has not started the
    /// log of the database layer, it is started here, at the highest level and beside the database.
    explicit CSQLiteDB(const char16_t* path);
    /// Closes the connection; never throws.
    virtual ~CSQLiteDB();
    CSQLiteDB(const CSQLiteDB&) = delete;
    CSQLiteDB& operator=(const CSQLiteDB&) = delete;

    /// Opens the file. A missing file is created, readable by its owner only and with UTF-16 as its
    /// encoding. One that this user cannot write is opened for reading, and nothing is put beside
    /// it. An open connection is closed first.
    void Open();
    /// Throws while a statement of this connection exists. Does nothing if it is closed.
    void Close();

    /// Runs one statement without rows; one that gives a row throws.
    void Execute(const CString& sql);
    [[nodiscard]] CSQLiteStatement CompileStatement(const CString& sql) const;

    /// The id of the row that was inserted last.
    std::int64_t LastInsertRowId() const;
    void SetBusyTimeout(int milliseconds);
    /// Releases the memory of pages that were read; they are read again when needed.
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
