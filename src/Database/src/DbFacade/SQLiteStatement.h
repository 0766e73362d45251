#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "Database/src/DbFacade/SQLiteTimeLog.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// A prepared statement, made by CSQLiteDB::CompileStatement() and owned by this object. It must be
/// destroyed before its connection closes. Parameters are counted from 1; one that is not bound is
/// NULL.
class QO_API CSQLiteStatement
{
public:
    CSQLiteStatement(sqlite3* db, sqlite3_stmt* statement, const CString& sql);
    /// Throws if finalizing fails, except while another exception is in flight.
    virtual ~CSQLiteStatement() noexcept(false);
    CSQLiteStatement(const CSQLiteStatement&) = delete;
    CSQLiteStatement& operator=(const CSQLiteStatement&) = delete;

    /// Runs the statement and returns the number of changed rows. A statement that gives a row
    /// throws. The bound values stay for the next run.
    int ExecuteDML();
    /// Runs a statement with rows, a schema statement or a pragma; the first row is loaded.
    CSQLiteQueryResult ExecuteQuery();

    /// Binds a value to a parameter. Texts are copied.
    void BindText(int index, const char16_t* value);
    void BindInt(int index, int value);
    void BindBool(int index, bool value);
    void BindInt64(int index, std::int64_t value);

private:
    void check() const;

    sqlite3* m_db;
    sqlite3_stmt* m_statement;
    int m_unwinding; ///< number of exceptions in flight when it was made
    CSQLiteTimeLog m_timeLog;
};
