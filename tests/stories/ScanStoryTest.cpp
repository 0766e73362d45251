#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace fs = std::filesystem;

namespace
{
/// Rows without what differs from one collection to the next.
std::vector<nlohmann::json> rows(const QoCommand& qo)
{
    std::vector<nlohmann::json> list = qo.run({"ls", "--json"}).json();
    for (nlohmann::json& row : list)
    {
        row.erase("velmoraId");
        row.erase("picture");
    }
    return list;
}

/// Waits until the database has files; false after ten seconds.
bool waitForFiles(const std::string& database)
{
    for (int i = 0; i < 2000; ++i)
    {
        sqlite3* db = nullptr;
        int count = 0;
        if (sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK)
            sqlite3_exec(
                db,
                "SELECT COUNT(*) FROM FILE_T;",
                [](void* result, int, char** values, char**)
                {
                    *static_cast<int*>(result) = std::atoi(values[0]);
                    return 0;
                },
                &count,
                nullptr);
        sqlite3_close(db);
        if (count > 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}
} // namespace

TEST(ScanStory, CollectionSurvivesARestartWithoutTheDisk)
{
    const QoCommand qo;
    qo.addSounds("a", 5);
    qo.addSound("b/cover.jpg", "red.jpg");
    ASSERT_EQ(qo.scan().code, 0);
    const auto before = rows(qo);
    EXPECT_EQ(before.size(), 6U);
    fs::rename(qo.music(), qo.dir.path("away"));
    EXPECT_EQ(rows(qo), before);
    EXPECT_EQ(qo.run({"tree"}).code, 0);
    const auto loaded = qo.run({"load", "--memory", "--json"}).json().at(0);
    EXPECT_EQ(loaded["files"], 6);
    EXPECT_GT(loaded["residentKiB"], 1000);
    fs::rename(qo.dir.path("away"), qo.music());
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["changed"], 0);
    EXPECT_EQ(rows(qo), before);
}

TEST(ScanStory, InterruptedFirstScanGoesOnWhereItStopped)
{
    const QoCommand qo;
    qo.addSounds("a", 40000);
    const pid_t pid = qo.start({"scan", qo.music()});
    ASSERT_TRUE(waitForFiles(qo.database()));
    ::kill(pid, SIGINT);
    const auto result = qo.finish(pid);
    ASSERT_EQ(result.code, 130) << result.err;
    const std::size_t kept = qo.paths().size();
    EXPECT_GT(kept, 0U);
    EXPECT_TRUE(contains(
        result.err, "interrupted; the " + std::to_string(kept) + " files read so far were kept"));
    // Nothing goes on by itself, and everybody is told.
    EXPECT_EQ(qo.run({"status", "--json"}).json().at(0)["unfinishedScan"], true);
    EXPECT_TRUE(contains(qo.run({"ls"}).err, "\"qo scan\" goes on with it"));
    EXPECT_EQ(qo.paths().size(), kept);
    EXPECT_EQ(qo.run({"roots", "ls", "--json"}).json().size(), 1U);

    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["new"], 40000 - kept);
    EXPECT_EQ(qo.run({"status", "--json"}).json().at(0)["unfinishedScan"], false);
    EXPECT_EQ(qo.paths().size(), 40000U);
}

TEST(ScanStory, FirstScanInterruptedBeforeItReadsAnythingLeavesNoRoot)
{
    const QoCommand qo;
    qo.addSounds("a", 40000);
    const pid_t pid = qo.start({"scan", qo.music()});
    ASSERT_TRUE(QoCommand::waitFor(qo.database()));
    ::kill(pid, SIGINT);
    const auto result = qo.finish(pid);
    ASSERT_EQ(result.code, 130) << result.err;
    if (result.err.find("were kept") != std::string::npos)
        GTEST_SKIP() << "the signal came too late";
    // The next start must not begin to scan by itself.
    EXPECT_EQ(qo.run({"roots", "ls"}).out, "") << result.err;
    EXPECT_TRUE(contains(qo.run({"status"}).out, "scanned     never"));
    EXPECT_EQ(qo.paths().size(), 0U);
}

TEST(ScanStory, KilledScanLeavesTheFormerOrTheNewState)
{
    const QoCommand qo;
    qo.addSounds("a", 20);
    ASSERT_EQ(qo.scan().code, 0);
    std::size_t known = 20;
    for (const int milliseconds : {5, 20, 40, 80, 120, 200})
    {
        const std::size_t added = 1000;
        qo.addSounds("b" + std::to_string(milliseconds), added);
        const pid_t pid = qo.start({"scan"});
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        ::kill(pid, SIGKILL);
        qo.finish(pid);
        const std::size_t after = qo.paths().size();
        EXPECT_TRUE(after == known || after % added == 20)
            << after << " after " << milliseconds << " ms";
        EXPECT_GE(after, known);
        known = after;
        EXPECT_EQ(qo.run({"db", "check"}).code, 0);
    }
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["files"], 6020);
}

TEST(ScanStory, SecondProcessIsToldWhoIsAtWork)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const int lock = ::open(qo.dir.path("data/Qorganizer/lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    const std::string holder = "4711 qo watch\n";
    ASSERT_EQ(::pwrite(lock, holder.data(), holder.size(), 0), 14);
    // What only looks works meanwhile.
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"status"},
                                               {"config", "ls"},
                                               {"ls"},
                                               {"tree"},
                                               {"info", qo.music("1.mp3")},
                                               {"artists"},
                                               {"untagged"},
                                               {"load"},
                                               {"db", "check"},
                                               {"db", "dump"}})
        EXPECT_EQ(qo.run(words).code, 0) << words[0];
    EXPECT_EQ(qo.paths().size(), 1U);
    qo.expect({"scan"}, 5, "in use by process 4711 (qo watch)");
    const pid_t waiting = qo.start({"scan"});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ::close(lock);
    EXPECT_EQ(qo.finish(waiting).code, 0) << "a short while is waited";
}

TEST(ScanStory, DatabaseOfANewerVersionIsRefusedAndLeftAlone)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.runSql("UPDATE VERSION_T SET VT_VERSION = '9.9'; PRAGMA journal_mode=DELETE;");
    const std::string before = qo.dir.read("data/Qorganizer/qodb");
    for (const char* command : {"scan", "ls"})
    {
        qo.expect({command}, 7, "has version [9.9], which is newer");
    }
    EXPECT_EQ(qo.dir.read("data/Qorganizer/qodb"), before);
    fs::remove_all(qo.dir.path("data"));
    qo.dir.makeFolder("data/Qorganizer/qodb");
    qo.expectRefusals("scan", {{{qo.music()}, 1, "is a folder; it was left alone"}});
}

TEST(ScanStory, GarbageInTheSettingsIsReportedOnceAndKept)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const std::string garbage = "no equals sign\n\xff\xfe=\x01\n=x\n[broken\n[\n";
    qo.dir.write("data/settings",
                 "before=any section\n" + qo.dir.read("data/settings") + garbage +
                     "UnknownKey=kept\n");
    qo.expect({"config", "set", "Language", "de"}, 0, "has 6 lines that are no setting");
    EXPECT_EQ(qo.run({"config", "get", "UnknownKey"}).out, "kept\n");
    EXPECT_EQ(qo.run({"ls"}).err, "");
    EXPECT_EQ(qo.paths().size(), 1U);
    EXPECT_EQ(qo.dir.read("data/settings.rejected"), "before=any section\n" + garbage);
}

TEST(ScanStory, OutputThatNobodyReadsEndsQuietly)
{
    const QoCommand qo;
    qo.addSounds("a", 2000);
    ASSERT_EQ(qo.scan().code, 0);
    const std::string command = "'" QO_COMMAND "' --data '" + qo.dir.path("data") +
                                "' ls --json 2>'" + qo.dir.path("pipe.err") +
                                "' | head -n 1 >/dev/null; exit \\${PIPESTATUS[0]}";
    const int status = std::system(("bash -c \"" + command + "\"").c_str());
    EXPECT_TRUE(WEXITSTATUS(status) == 128 + SIGPIPE || WEXITSTATUS(status) == 0)
        << WEXITSTATUS(status);
    EXPECT_EQ(qo.dir.read("pipe.err"), "");
}
