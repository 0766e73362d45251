#include "QoColl/Db/DbTransaction.h"

#include "QoColl/Db/QoCollDb.h"

namespace qo
{
DbTransaction::DbTransaction(CQoCollDb& db, eSQLiteTransactionType type)
    : m_db(db), m_transaction(db.beginTransaction(type, eSQLiteEndTransaction::rollback))
{
}

DbTransaction::~DbTransaction()
{
    m_db.abandonTransaction(m_transaction);
}

void DbTransaction::commit()
{
    m_db.commitTransaction(m_transaction);
}
} // namespace qo
