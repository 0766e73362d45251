#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Export.h"

class CQoCollDb;

namespace qo
{
/// A transaction of a block: what leaves the block without commit() leaves the database as it was,
/// and never throws for it. It must end before its database does.
class QO_API DbTransaction
{
public:
    explicit DbTransaction(CQoCollDb& db,
                           eSQLiteTransactionType type = eSQLiteTransactionType::immediate);
    ~DbTransaction();
    DbTransaction(const DbTransaction&) = delete;
    DbTransaction& operator=(const DbTransaction&) = delete;

    /// Throws CSQLiteException* when the commit fails; then nothing is stored.
    void commit();

private:
    CQoCollDb& m_db;
    CSQLiteDbTransaction* m_transaction;
};
} // namespace qo
