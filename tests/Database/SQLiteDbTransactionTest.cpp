#include "Database/DbFixture.h"

#include <tuple>
#include <utility>

namespace
{
class SQLiteDbTransaction : public OpenDbFixture
{
protected:
    SQLiteDbTransaction() { m_db.Execute(u"CREATE TABLE T (A)"); }

    std::unique_ptr<CSQLiteDbTransaction> begin(eSQLiteEndTransaction end)
    {
        return std::make_unique<CSQLiteDbTransaction>(
            &m_db, eSQLiteTransactionType::immediate, end);
    }
    CString rowCount() { return queryText(m_db, u"SELECT COUNT(*) FROM T"); }
};

TEST_F(SQLiteDbTransaction, EndsTheWayThatWasChosenLast)
{
    constexpr auto commit = eSQLiteEndTransaction::commit;
    constexpr auto rollback = eSQLiteEndTransaction::rollback;
    for (const auto& [first, last] :
         {std::pair(rollback, rollback), {rollback, commit}, {commit, rollback}})
    {
        const CString before = rowCount();
        auto transaction = begin(first);
        m_db.Execute(u"INSERT INTO T VALUES (1)");
        if (last != first)
            last == commit ? transaction->SetCommit() : transaction->SetRollback();
        transaction.reset();
        EXPECT_EQ(rowCount() != before, last == commit);
    }
}

TEST_F(SQLiteDbTransaction, KindDecidesWhenOthersAreLockedOut)
{
    CSQLiteDB other(m_dir.collPath("test.db"));
    other.Open();
    other.SetBusyTimeout(0);
    const std::tuple<eSQLiteTransactionType, bool, bool> cases[] = {
        {eSQLiteTransactionType::deferred, true, true},
        {eSQLiteTransactionType::immediate, false, true},
        {eSQLiteTransactionType::exclusive, false, false},
        {static_cast<eSQLiteTransactionType>(9), true, true}};
    for (const auto& [type, othersMayWrite, othersMayRead] : cases)
    {
        const CSQLiteDbTransaction transaction(&m_db, type, eSQLiteEndTransaction::rollback);
        EXPECT_EQ(!thrownBy([&] { other.Execute(u"DELETE FROM T"); }), othersMayWrite) << int(type);
        EXPECT_EQ(!thrownBy([&] { queryText(other, u"SELECT A FROM T"); }), othersMayRead)
            << int(type);
    }
}

TEST_F(SQLiteDbTransaction, FailedCommitReachesTheCaller)
{
    queryText(m_db, u"PRAGMA foreign_keys = ON");
    m_db.Execute(u"CREATE TABLE P (A INTEGER PRIMARY KEY)");
    m_db.Execute(u"CREATE TABLE C (A REFERENCES P DEFERRABLE INITIALLY DEFERRED)");
    auto* transaction = begin(eSQLiteEndTransaction::commit).release();
    m_db.Execute(u"INSERT INTO C VALUES (5)");
    const auto exception = thrownBy([&] { delete transaction; });
    ASSERT_TRUE(exception);
    EXPECT_GE(exception->message().Find(u"FOREIGN KEY constraint failed"), 0);
}

TEST_F(SQLiteDbTransaction, FullDiskThrowsItsOwnFailureAndLeavesTheFormerState)
{
    m_db.Execute(u"INSERT INTO T VALUES (1)");
    queryText(m_db, u"PRAGMA max_page_count = 10");
    // SQLite has rolled back by itself when the transaction ends: its failure must not hide this
    // one.
    const auto exception = thrownBy(
        [&]
        {
            const auto transaction = begin(eSQLiteEndTransaction::rollback);
            for (;;)
                m_db.Execute(u"INSERT INTO T VALUES (zeroblob(5000))");
        });
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->code(), 13);
    EXPECT_EQ(rowCount(), u"1");
}
} // namespace
