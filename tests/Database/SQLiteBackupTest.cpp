#include "Database/src/DbFacade/SQLiteBackup.h"

#include "Database/src/DbFacade/SQLiteWrapper.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

namespace
{
int countRows(const CString& path)
{
    CSQLiteDB db(path);
    db.Open();
    CSQLiteStatement statement = db.CompileStatement(u"SELECT COUNT(*) FROM T");
    return statement.ExecuteQuery().GetIntField(0);
}
} // namespace

TEST(SQLiteBackup, CopiesWhatIsCommittedAndReplacesTheTarget)
{
    const TempDir dir;
    CSQLiteDB db(dir.collPath("source"));
    db.Open();
    (void)db.CompileStatement(u"PRAGMA journal_mode=WAL").ExecuteQuery();
    db.Execute(u"CREATE TABLE T (x)");
    db.Execute(u"INSERT INTO T VALUES (1)");
    dir.write("target", "old");
    qo::backupDatabase(dir.collPath("source"), dir.collPath("target"));
    EXPECT_EQ(countRows(dir.collPath("target")), 1);
    EXPECT_EQ(std::filesystem::status(dir.path("target")).permissions(),
              std::filesystem::perms(0600));
    EXPECT_FALSE(std::filesystem::exists(dir.path("target.unfinished")));
}

TEST(SQLiteBackup, FailureLeavesTheTargetAsItWas)
{
    const TempDir dir;
    dir.write("garbage", "no database at all, but long enough to be looked at");
    dir.write("target", "old");
    for (const char* source : {"garbage", "absent"})
    {
        try
        {
            qo::backupDatabase(dir.collPath(source), dir.collPath("target"));
            ADD_FAILURE() << source;
        }
        catch (CSQLiteException* raw)
        {
            const std::unique_ptr<CSQLiteException> exception(raw);
        }
        EXPECT_EQ(dir.read("target"), "old");
        EXPECT_FALSE(std::filesystem::exists(dir.path("target.unfinished"))) << source;
    }
}

TEST(SQLiteBackup, EndsThoughSomebodyKeepsWriting)
{
    const TempDir dir;
    CSQLiteDB db(dir.collPath("source"));
    db.Open();
    (void)db.CompileStatement(u"PRAGMA journal_mode=WAL").ExecuteQuery();
    db.Execute(u"PRAGMA synchronous=OFF");
    db.Execute(u"CREATE TABLE T (x)");
    db.Execute(u"INSERT INTO T VALUES (zeroblob(40000000))"); // several steps
    std::atomic<bool> isDone = false;
    bool wasStopped = false;
    std::thread writer(
        [&]
        {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            while (!wasStopped && !isDone)
            {
                db.Execute(u"INSERT INTO T VALUES (1)");
                wasStopped = std::chrono::steady_clock::now() > deadline;
            }
        });
    qo::backupDatabase(dir.collPath("source"), dir.collPath("target"));
    isDone = true;
    writer.join();
    EXPECT_FALSE(wasStopped) << "ended only after the writer";
    EXPECT_GT(countRows(dir.collPath("target")), 0);
}
