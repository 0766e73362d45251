#include "QoColl/Db/QoCollDb.h"

#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteDbTransaction.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

// Connection and transactions. A transaction object must end in the function that its caller chose,
// whatever fails there, so these functions take the pointer away first.

CQoCollDb::CQoCollDb(const CString& path)
    : m_connection(std::make_unique<CSQLiteDB>(path)), m_db(*m_connection)
{
    m_db.Open();
}

CQoCollDb::~CQoCollDb() = default;

CSQLiteDbTransaction* CQoCollDb::beginTransaction(eSQLiteTransactionType type,
                                                  eSQLiteEndTransaction end)
{
    if (type == eSQLiteTransactionType::immediate)
        fitCache();
    return std::make_unique<CSQLiteDbTransaction>(&m_db, type, end).release();
}

/// The default cache is too small for a large save, which would write its pages to the disk and
/// read them back several times. What a save visits in no order is an index or two: a quarter of
/// the file holds them. The memory is used only as needed, and freed with the connection.
void CQoCollDb::fitCache()
{
    constexpr int leastPages = 2048; // of 4 KiB: 8 MiB
    constexpr int mostPages = 16'384;
    CSQLiteStatement count = m_db.CompileStatement(u"PRAGMA page_count;");
    const int quarter = count.ExecuteQuery().GetIntField(0) / 4;
    CString sql;
    sql.Format(u"PRAGMA cache_size = %d;", std::clamp(quarter, leastPages, mostPages));
    CSQLiteStatement cacheSize = m_db.CompileStatement(sql);
    cacheSize.ExecuteQuery();
}

namespace
{
/// The caller's pointer becomes null before the transaction ends, since it is gone whatever
/// happens.
void endTransaction(CSQLiteDbTransaction*& transaction)
{
    CSQLiteDbTransaction* const ending = transaction;
    transaction = nullptr;
    delete ending;
}
} // namespace

void CQoCollDb::commitTransaction(CSQLiteDbTransaction*& transaction)
{
    if (transaction)
        transaction->SetCommit();
    endTransaction(transaction);
}

void CQoCollDb::rollbackTransaction(CSQLiteDbTransaction*& transaction)
{
    if (transaction)
        transaction->SetRollback();
    endTransaction(transaction);
}

void CQoCollDb::abandonTransaction(CSQLiteDbTransaction*& transaction) noexcept
{
    try
    {
        rollbackTransaction(transaction);
    }
    catch (CSQLiteException* raw)
    {
        // After a full disk or a failed commit SQLite has rolled back itself, and closing the
        // connection does the rest.
        const std::unique_ptr<CSQLiteException> exception(raw);
    }
    catch (const std::bad_alloc&)
    {
        // Closing the connection rolls back.
        return;
    }
}

unsigned long CQoCollDb::formatBindMask(unsigned long mask, unsigned long remove)
{
    return mask & ~remove;
}

int CQoCollDb::takeRowId(const char16_t* table)
{
    const std::int64_t rowId = m_db.LastInsertRowId();
    if (rowId >= 0 && rowId <= std::numeric_limits<int>::max())
        return static_cast<int>(rowId);
    // Records keep ids in an int, and an id that is cut would name another row: the row is deleted
    // again.
    CString sql;
    sql.Format(u"DELETE FROM %s WHERE rowid = ?1", table);
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt64(1, rowId);
    statement.ExecuteDML();
    qo::throwDatabaseError(u"Row id out of range");
}
