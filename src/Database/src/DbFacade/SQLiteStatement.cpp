#include "Database/src/DbFacade/SQLiteStatement.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteReport.h"

#include <sqlite3.h>

#include <exception>

using namespace qo::sqlite;

CSQLiteStatement::CSQLiteStatement(sqlite3* db, sqlite3_stmt* statement, const CString& sql)
    : m_db(db)
    , m_statement(statement)
    , m_unwinding(std::uncaught_exceptions())
    , m_timeLog(u"CSQLiteStatement", sql)
{
}

CSQLiteStatement::~CSQLiteStatement() noexcept(false)
{
    // The handle is cleared first: the destructor may leave by an exception.
    sqlite3_stmt* const statement = m_statement;
    m_statement = nullptr;
    if (sqlite3_finalize(statement) != SQLITE_OK && std::uncaught_exceptions() <= m_unwinding)
        throwFromConnection(m_db, m_timeLog.text(), __LINE__);
}

void CSQLiteStatement::check() const
{
    if (!m_db)
        throwError(CSQLiteException::wrapperError, u"Database not open!", __LINE__);
    if (!m_statement)
        throwError(CSQLiteException::wrapperError, u"Null statement pointer!", __LINE__);
}

int CSQLiteStatement::ExecuteDML()
{
    check();
    // The number of changes is read before the reset, and a failed reset counts as a failure of the
    // step.
    if (sqlite3_step(m_statement) == SQLITE_DONE)
    {
        const int changed = sqlite3_changes(m_db);
        if (sqlite3_reset(m_statement) == SQLITE_OK)
            return changed;
    }
    else
        sqlite3_reset(m_statement);
    throwFromConnection(m_db, CString(), __LINE__);
}

CSQLiteQueryResult CSQLiteStatement::ExecuteQuery()
{
    check();
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_DONE && result != SQLITE_ROW)
    {
        sqlite3_reset(m_statement);
        throwFromConnection(m_db, CString(), __LINE__);
    }
    return CSQLiteQueryResult(m_db, m_statement, result == SQLITE_DONE);
}

void CSQLiteStatement::BindText(int index, const char16_t* value)
{
    check();
    const int result = sqlite3_bind_text16(m_statement, index, value, -1, SQLITE_TRANSIENT);
    if (result != SQLITE_OK)
        throwError(result, u"Error binding [text] param", __LINE__);
}

void CSQLiteStatement::BindInt(int index, int value)
{
    check();
    const int result = sqlite3_bind_int(m_statement, index, value);
    if (result != SQLITE_OK)
        throwError(result, u"Error binding [int] param", __LINE__);
}

void CSQLiteStatement::BindBool(int index, bool value)
{
    check();
    const int result = sqlite3_bind_int(m_statement, index, value ? 1 : 0);
    if (result != SQLITE_OK)
        throwError(result, u"Error binding [bool] param", __LINE__);
}

void CSQLiteStatement::BindInt64(int index, std::int64_t value)
{
    check();
    const int result = sqlite3_bind_int64(m_statement, index, value);
    if (result != SQLITE_OK)
        throwError(result, u"Error binding [int64] param", __LINE__);
}
