#include "QoColl/Db/QoCollDb.h"

#include "Database/src/DbFacade/SQLiteDbTransaction.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"

#include <limits>
#include <memory>
#include <new>

CQoCollDb::CQoCollDb(const CString& path) : m_db(path)
{
    m_db.Open();
}

CQoCollDb::~CQoCollDb() = default;

CSQLiteDbTransaction* CQoCollDb::beginTransaction(eSQLiteTransactionType type,
                                                  eSQLiteEndTransaction end)
{
    // A large save would write its pages out and read them back several times over. They are taken
    // only as they are touched, and given back with the connection.
    if (type == eSQLiteTransactionType::immediate)
    {
        CSQLiteStatement cacheSize = m_db.CompileStatement(u"PRAGMA cache_size = -65536;");
        cacheSize.ExecuteQuery();
    }
    return std::make_unique<CSQLiteDbTransaction>(&m_db, type, end).release();
}

namespace
{
/// The caller's pointer is null before the end is tried: whatever happens there, it is gone.
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
        // A full disk or a failed commit has rolled back already, and closing does the rest.
        const std::unique_ptr<CSQLiteException> exception(raw);
    }
    catch (const std::bad_alloc&)
    {
        // Closing rolls back as well.
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
    // Records hold their id in an int; a cut one would name another row.
    CString sql;
    sql.Format(u"DELETE FROM %s WHERE rowid = ?1", table);
    CSQLiteStatement statement = m_db.CompileStatement(sql);
    statement.BindInt64(1, rowId);
    statement.ExecuteDML();
    throw std::make_unique<CSQLiteException>(CSQLiteException::wrapperError, u"Row id out of range")
        .release();
}
