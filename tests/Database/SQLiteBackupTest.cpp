#include "Database/src/DbFacade/SQLiteBackup.h"

#include "Database/DbFixture.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

namespace
{
namespace fs = std::filesystem;

/// A database "source" with a log and an empty table, and a way into "target".
class SQLiteBackup : public DbFixture
{
protected:
    SQLiteBackup()
    {
        m_db.Open();
        queryText(m_db, u"PRAGMA journal_mode=WAL");
        m_db.Execute(u"CREATE TABLE T (x)");
    }

    void backUp(const char* source) const
    {
        qo::backupDatabase(m_dir.collPath(source), m_dir.collPath("target"));
    }
    CString countRows() const
    {
        CSQLiteDB db(m_dir.collPath("target"));
        db.Open();
        return queryText(db, u"SELECT COUNT(*) FROM T");
    }

    CSQLiteDB m_db{m_dir.collPath("source")};
};
} // namespace

TEST_F(SQLiteBackup, ReplacesTheTargetByWhatIsCommittedOrLeavesItAsItWas)
{
    m_dir.write("garbage", "no database at all, but long enough to be looked at");
    m_dir.write("target", "old");
    for (const char* source : {"garbage", "absent"})
    {
        EXPECT_TRUE(thrownBy([&] { backUp(source); })) << source;
        EXPECT_EQ(m_dir.read("target"), "old");
        EXPECT_FALSE(fs::exists(m_dir.path("target.unfinished"))) << source;
    }
    m_db.Execute(u"INSERT INTO T VALUES (1)");
    backUp("source");
    EXPECT_EQ(countRows(), u"1");
    EXPECT_EQ(fs::status(m_dir.path("target")).permissions(), fs::perms(0600));
    EXPECT_FALSE(fs::exists(m_dir.path("target.unfinished")));
}

TEST_F(SQLiteBackup, EndsThoughSomebodyKeepsWriting)
{
    m_db.Execute(u"PRAGMA synchronous=OFF");
    m_db.Execute(u"INSERT INTO T VALUES (zeroblob(40000000))"); // several steps
    std::atomic<bool> isDone = false;
    bool wasStopped = false;
    std::thread writer(
        [&]
        {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            while (!wasStopped && !isDone)
            {
                m_db.Execute(u"INSERT INTO T VALUES (1)");
                wasStopped = std::chrono::steady_clock::now() > deadline;
            }
        });
    backUp("source");
    isDone = true;
    writer.join();
    EXPECT_FALSE(wasStopped) << "ended only after the writer";
    EXPECT_NE(countRows(), u"0");
}
