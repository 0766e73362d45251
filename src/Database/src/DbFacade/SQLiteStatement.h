#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "Database/src/DbFacade/SQLiteTimeLog.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// One prepared statement, owned; made by CSQLiteDB::CompileStatement(). It must end before its
/// connection closes. Parameters count from 1; one that is not bound stays NULL.
class QO_API CSQLiteStatement
{
public:
    CSQLiteStatement(sqlite3* db, sqlite3_stmt* statement, const CString& sql);
    /// Throws when finalizing fails, except while another exception unwinds.
    virtual ~CSQLiteStatement() noexcept(false);
    CSQLiteStatement(const CSQLiteStatement&) = delete;
    CSQLiteStatement& operator=(const CSQLiteStatement&) = delete;

    /// Rows changed. A statement that yields a row throws. The bindings stay for the next run.
    int ExecuteDML();
    /// For whatever yields rows, and for schema statements and pragmas; the first row is loaded.
    CSQLiteQueryResult ExecuteQuery();

    /// The text is copied.
    void BindText(int index, const char16_t* value);
    void BindInt(int index, int value);
    void BindBool(int index, bool value);
    void BindInt64(int index, std::int64_t value);

private:
    void check() const;

    sqlite3* m_db;
    sqlite3_stmt* m_statement;
    int m_unwinding; ///< exceptions in flight when it was made
    CSQLiteTimeLog m_timeLog;
};
