#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Export.h"

class CQoCollDb;

namespace qo
{
/// A transaction for a scope: leaving the scope without commit() undoes everything, and never
/// throws. It must end before its database object does.
class QO_API DbTransaction
{
public:
    explicit DbTransaction(CQoCollDb& db,
                           eSQLiteTransactionType type = eSQLiteTransactionType::immediate);
    ~DbTransaction();
    DbTransaction(const DbTransaction&) = delete;
    DbTransaction& operator=(const DbTransaction&) = delete;

    /// Stores everything. Throws CSQLiteException* on failure; then nothing is stored.
    void commit();

private:
    CQoCollDb& m_db;
    CSQLiteDbTransaction* m_transaction;
};
} // namespace qo
