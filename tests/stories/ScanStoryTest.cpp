#include "host/cli/QoCommand.h"

#include <sqlite3.h>
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

void runSql(const std::string& database, const char* sql)
{
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(database.c_str(), &db), SQLITE_OK);
    char* message = nullptr;
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, &message), SQLITE_OK) << message;
    sqlite3_close(db);
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
    fs::rename(qo.dir.path("away"), qo.music());
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["changed"], 0);
    EXPECT_EQ(rows(qo), before);
}

TEST(ScanStory, LocaleOfTheUserChangesNothing)
{
    QoCommand qo;
    qo.addSound("Über/Éa.mp3");
    qo.addSound("über/_b.flac", "sound.flac");
    qo.addSound("Zeta/ÿ.ogg", "sound.ogg");
    ASSERT_EQ(qo.scan().code, 0);
    const auto plain = rows(qo);
    fs::remove_all(qo.dir.path("data"));
    qo.locale = "de_DE.UTF-8";
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(rows(qo), plain);
    EXPECT_GE(plain.size(), 2U);
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
    EXPECT_NE(result.err.find("interrupted; the " + std::to_string(kept) +
                              " files read so far were kept"),
              std::string::npos)
        << result.err;
    // Nothing goes on by itself, and everybody is told.
    EXPECT_EQ(qo.run({"status", "--json"}).json().at(0)["unfinishedScan"], true);
    EXPECT_NE(qo.run({"ls"}).err.find("\"qo scan\" goes on with it"), std::string::npos);
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
    EXPECT_NE(qo.run({"status"}).out.find("scanned     never"), std::string::npos);
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
    ASSERT_EQ(::pwrite(lock, "4711\n", 5, 0), 5);
    for (const char* command : {"scan", "ls", "load"})
    {
        const auto busy = qo.run({command});
        EXPECT_EQ(busy.code, 5) << command;
        EXPECT_NE(busy.err.find("in use by process 4711"), std::string::npos) << busy.err;
    }
    // What only looks works meanwhile.
    EXPECT_EQ(qo.run({"status"}).code, 0);
    EXPECT_EQ(qo.run({"config", "ls"}).code, 0);
    ::close(lock);
    EXPECT_EQ(qo.run({"ls"}).code, 0);
}

TEST(ScanStory, DatabaseOfAnotherVersionIsRefusedAndLeftAlone)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    runSql(qo.database(), "UPDATE VERSION_T SET VT_VERSION = '9.9'; PRAGMA journal_mode=DELETE;");
    const std::string before = qo.dir.read("data/Qorganizer/qodb");
    for (const char* command : {"scan", "ls"})
    {
        const auto result = qo.run({command});
        EXPECT_EQ(result.code, 1);
        EXPECT_NE(result.err.find("has version [9.9]"), std::string::npos) << result.err;
    }
    EXPECT_EQ(qo.dir.read("data/Qorganizer/qodb"), before);
}

TEST(ScanStory, WhatIsNoDatabaseIsSetAsideOrRefused)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    qo.dir.write("data/Qorganizer/qodb", "this is no database, but somebody's diary");
    const auto result = qo.scan();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.err.find("was no sound database: it was set aside as "), std::string::npos)
        << result.err;
    int kept = 0;
    for (const auto& entry : fs::directory_iterator(qo.dir.path("data/Qorganizer")))
        kept += entry.path().filename().string().starts_with("qodb.unreadable-") ? 1 : 0;
    EXPECT_EQ(kept, 1);

    fs::remove_all(qo.dir.path("data"));
    qo.dir.makeFolder("data/Qorganizer/qodb");
    const auto folder = qo.scan();
    EXPECT_EQ(folder.code, 1);
    EXPECT_NE(folder.err.find("is a folder; it was left alone"), std::string::npos) << folder.err;
}

TEST(ScanStory, GarbageInTheSettingsIsReportedOnceAndKept)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    std::ofstream(qo.dir.path("data/settings"), std::ios::app | std::ios::binary)
        << "no equals sign\n\xff\xfe=\x01\n[broken\nUnknownKey=kept\n";
    const auto result = qo.run({"config", "set", "Language", "de"});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.err.find("has 3 lines that are no setting"), std::string::npos) << result.err;
    EXPECT_EQ(qo.run({"config", "get", "UnknownKey"}).out, "kept\n");
    EXPECT_EQ(qo.run({"ls"}).err, "");
    EXPECT_EQ(qo.paths().size(), 1U);
    EXPECT_EQ(qo.dir.read("data/settings.rejected"), "no equals sign\n\xff\xfe=\x01\n[broken\n");
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
