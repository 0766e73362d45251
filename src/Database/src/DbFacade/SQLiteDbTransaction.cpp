#include "Database/src/DbFacade/SQLiteDbTransaction.h"

#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteException.h"

#include <exception>
#include <memory>

namespace
{
const char16_t* beginText(eSQLiteTransactionType type)
{
    switch (type)
    {
    case eSQLiteTransactionType::immediate:
        return u"BEGIN IMMEDIATE;";
    case eSQLiteTransactionType::exclusive:
        return u"BEGIN EXCLUSIVE;";
    default:
        return u"BEGIN;";
    }
}
} // namespace

CSQLiteDbTransaction::CSQLiteDbTransaction(CSQLiteDB* db,
                                           eSQLiteTransactionType type,
                                           eSQLiteEndTransaction end)
    : m_db(db)
    , m_type(type)
    , m_end(end)
    , m_unwinding(std::uncaught_exceptions())
    , m_timeLog(u"CSQLiteDbTransaction", CString())
    , m_timer(u"CSQLiteDbTransaction::CSQLiteDbTransaction", true)
{
    m_db->Execute(beginText(m_type));
}

CSQLiteDbTransaction::~CSQLiteDbTransaction() noexcept(false)
{
    try
    {
        m_db->Execute(m_end == eSQLiteEndTransaction::commit ? u"COMMIT;" : u"ROLLBACK;");
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        // After a full disk SQLite has rolled back itself, and ending the transaction fails. The
        // exception in flight already says what happened.
        if (std::uncaught_exceptions() <= m_unwinding)
            throw exception.release();
    }
}
