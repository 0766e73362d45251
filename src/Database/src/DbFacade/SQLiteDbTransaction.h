#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "Database/src/DbFacade/SQLiteTimeLog.h"
#include "common/ProfileTimer.h"
#include "types/Export.h"

/// An open transaction. Its destructor commits or rolls back, whichever was chosen last. It is made
/// on the heap and must be deleted before its connection closes.
class QO_API CSQLiteDbTransaction
{
public:
    CSQLiteDbTransaction(CSQLiteDB* db, eSQLiteTransactionType type, eSQLiteEndTransaction end);
    /// A commit or rollback that fails throws, except while another exception is in flight.
    virtual ~CSQLiteDbTransaction() noexcept(false);
    CSQLiteDbTransaction(const CSQLiteDbTransaction&) = delete;
    CSQLiteDbTransaction& operator=(const CSQLiteDbTransaction&) = delete;

    void SetCommit() noexcept { m_end = eSQLiteEndTransaction::commit; }
    void SetRollback() noexcept { m_end = eSQLiteEndTransaction::rollback; }

private:
    CSQLiteDB* m_db;
    eSQLiteTransactionType m_type;
    eSQLiteEndTransaction m_end;
    int m_unwinding; ///< number of exceptions in flight when it was made
    CSQLiteTimeLog m_timeLog;
    qo::ProfileTimer m_timer;
};
