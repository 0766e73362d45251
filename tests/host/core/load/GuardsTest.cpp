#include "core/base/DatabaseError.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/Snapshots.h"
#include "core/roots/RootGuard.h"
#include "core/session/InstanceLock.h"
#include "core/session/KernelThread.h"
#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"
#include "support/Words.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <utility>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
void makeDatabase(const CString& path, const CString& filePath)
{
    CQoCollDb::CreateDatabaseIfNotValid(path, CQoCollDb::ConfigInfo());
    CQoCollDb db(path);
    QoFileDbItemPtr item = recordOf(filePath);
    item->velmoraId = u"x";
    db.insertFile(item, u"");
}

CStringArray listOf(const CString& folder)
{
    CStringArray list;
    list.Add(folder);
    return list;
}

} // namespace

TEST(InstanceLock, IsHeldOnceAndGoesWithItsHolder)
{
    const TempDir dir;
    const std::string file = dir.path("lock");
    {
        const std::chrono::milliseconds none{0};
        const InstanceLock lock(file, "qo \x1b[31mwatch");
        const std::string message =
            messageOf([&] { InstanceLock second(file, "qo scan", none); }, ExitCode::busy);
        EXPECT_TRUE(contains(message,
                             "process " + std::to_string(qo::systemClock().processId()) +
                                 " (qo [31mwatch)"));
    }
    EXPECT_NO_THROW(InstanceLock again(file));
    fs::create_symlink(dir.path("elsewhere"), dir.path("link"));
    EXPECT_THROW(InstanceLock linked(dir.path("link")), HostError);
}

TEST(RootGuard, TellsWhyARootCannotBeTrusted)
{
    const TempDir dir;
    const CString database = dir.collPath("db");
    makeDatabase(database, dir.collPath("emptied \xF0\x9F\x8E\xB5/a.mp3"));
    dir.write("full/a.mp3", "");
    dir.write("file", "");
    dir.makeFolder("new");
    dir.makeFolder("emptied \xF0\x9F\x8E\xB5");
    dir.makeFolder("emptied \xF0\x9F\x8E\xB5 not");
    const std::pair<const char*, const char*> cases[] = {
        {"full", ""},
        {"new", ""},
        {"gone", "No such file or directory"},
        {"file", "Not a directory"},
        {"emptied \xF0\x9F\x8E\xB5", "it is empty, but the collection has 1 file in it"},
        {"emptied \xF0\x9F\x8E\xB5 not", ""}};
    for (const auto& [folder, cause] : cases)
    {
        const auto problems = checkRoots(listOf(dir.collPath(folder)), database);
        EXPECT_EQ(problems.empty() ? "" : problems[0].cause, cause) << folder;
    }
    EXPECT_TRUE(checkRoots(listOf(dir.collPath("new")), dir.collPath("no database")).empty());
}

TEST(DatabaseGuard, MakesAnAbsentOrEmptyDatabaseSilentlyAndKeepsSomebodyElsesInASnapshot)
{
    const TempDir dir;
    dir.write("empty", "");
    for (const char* name : {"absent", "empty"})
    {
        EXPECT_TRUE(DatabaseGuard(dir.collPath(name)).prepare().empty()) << name;
        EXPECT_EQ(DatabaseGuard::countRows(dir.collPath(name)).at("VERSION_T"), 1);
        EXPECT_TRUE(DatabaseGuard(dir.collPath(name)).prepare().empty()) << name;
    }
    const CString path = dir.collPath("db");
    {
        CSQLiteDB db(path);
        db.Open();
        db.Execute(u"CREATE TABLE sqliteX (x INTEGER PRIMARY KEY AUTOINCREMENT)");
        EXPECT_EQ(DatabaseGuard::countRows(path), (DatabaseGuard::TableCounts{{"sqliteX", 0}}))
            << "but for the library's own tables all are counted";
        db.Execute(u"INSERT INTO sqliteX VALUES (1)");
        // Rows that look like those of a playlist.
        db.Execute(u"CREATE TABLE diary (x INTEGER PRIMARY KEY, day TEXT, words TEXT)");
        db.Execute(u"INSERT INTO diary VALUES (1, 'monday', 'rain')");
    }
    EXPECT_FALSE(DatabaseGuard(path).check());
    const auto notes = DatabaseGuard(path).prepare();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_TRUE(contains(notes[0], "had no collection in it"));
    const CStringArray copies = Snapshots(path).list();
    ASSERT_EQ(copies.GetSize(), 1);
    EXPECT_EQ(DatabaseGuard::countRows(copies[0]).at("sqliteX"), 1);
}

TEST(DatabaseGuard, OnlyAWholeDatabaseOfThisVersionIsSoundAndTheLookChangesNothing)
{
    const TempDir dir;
    for (const char16_t* const path : {u"C:\\a.mp3", u"C:\\b.mp3"})
        makeDatabase(dir.collPath("whole"), path);
    const std::string whole = dir.read("whole");
    const auto run = [&](const char16_t* sql)
    {
        return [&dir, sql](const std::string& name)
        {
            CSQLiteDB db(dir.collPath(name));
            db.Open();
            db.Execute(sql);
        };
    };
    const auto nothing = [](const std::string&) {};
    const auto emptyIndex = [&](const std::string& name)
    {
        CSQLiteDB db(dir.collPath(name));
        db.Open();
        db.Execute(u"PRAGMA writable_schema = ON");
        db.Execute(u"UPDATE sqlite_master SET rootpage = (SELECT rootpage FROM sqlite_master "
                   u"WHERE name = 'IDX_AS_VELMORA_ID') WHERE name = 'IDX_FT_SESSION'");
    };
    struct Case
    {
        const char* name;
        std::string content;
        std::function<void(const std::string& name)> spoil;
        bool isSound;
    };
    std::string overwritten = whole;
    overwritten.replace(whole.size() / 2, whole.size() / 4, whole.size() / 4, 'x');
    const Case cases[] = {
        {"sound", whole, nothing, true},
        {"empty", "", nothing, false},
        {"text", std::string(5000, 'x'), nothing, false},
        {"cut", whole.substr(0, whole.size() / 2), nothing, false},
        {"overwritten", overwritten, nothing, false},
        {"of another version", whole, run(u"UPDATE VERSION_T SET VT_VERSION = '9.9.9.9'"), false},
        {"without a table", whole, run(u"DROP TABLE PLAYLIST_T"), false},
        {"with an index that lacks rows", whole, emptyIndex, false},
        {"somebody else's", "", run(u"CREATE TABLE diary (day TEXT)"), false},
        {"with changes of another",
         "",
         [&dir](const std::string& name) { dir.write(name + "-wal", std::string(512, 'x')); },
         false}};
    EXPECT_FALSE(DatabaseGuard(dir.collPath("absent")).isSound());
    EXPECT_FALSE(fs::exists(dir.path("absent")));
    for (const Case& each : cases)
    {
        dir.write(each.name, each.content);
        each.spoil(each.name);
        const std::string before = dir.read(each.name);
        EXPECT_EQ(DatabaseGuard(dir.collPath(each.name)).isSound(), each.isSound) << each.name;
        EXPECT_TRUE(dir.read(each.name) == before) << each.name;
    }
}

TEST(DatabaseGuard, LockedDatabaseIsBusyAndUntouched)
{
    const TempDir dir;
    const CString path = dir.collPath("db");
    makeDatabase(path, u"C:\\a.mp3");
    CSQLiteDB other(path);
    other.Open();
    other.Execute(u"BEGIN IMMEDIATE;");
    const std::string message = messageOf(
        [&] { KernelThread().run([&] { return DatabaseGuard(path).prepare(); }); }, ExitCode::busy);
    EXPECT_EQ(message, "the database " + dir.path("db") + " cannot be used: database is locked");
    other.Execute(u"ROLLBACK;");
    // Nobody else can even read now.
    (void)other.CompileStatement(u"PRAGMA journal_mode = DELETE").ExecuteQuery();
    other.Execute(u"BEGIN EXCLUSIVE;");
    messageOf([&] { (void)DatabaseGuard(path).check(); }, ExitCode::busy);
    other.Execute(u"ROLLBACK;");
    EXPECT_TRUE(DatabaseGuard(path).prepare().empty());
}

TEST(DatabaseGuard, ChangesWithoutTheirDatabaseAreNotThrownAway)
{
    const std::string pages(512, 'x');
    const struct
    {
        const char* side;
        std::string content;
        bool isRefused;
    } cases[] = {{"-wal", pages, true},
                 {"-wal", pages.substr(0, 32), false},
                 {"-journal", pages, true},
                 // Left by a process that died while it made the tables.
                 {"-journal", std::string(512, '\0'), false},
                 {"-journal", "", false}};
    for (const auto& c : cases)
    {
        for (const bool isEmpty : {false, true})
        {
            const TempDir dir;
            const std::string side = dir.write(std::string("db") + c.side, c.content);
            if (isEmpty)
                dir.write("db", "");
            const CString path = dir.collPath("db");
            if (!c.isRefused)
            {
                EXPECT_NO_THROW(DatabaseGuard(path).prepare()) << c.side;
                continue;
            }
            const std::string message =
                messageOf([&] { DatabaseGuard(path).prepare(); }, ExitCode::failed);
            EXPECT_TRUE(contains(message, side + " still holds a part of it"));
            EXPECT_EQ(dir.read(std::string("db") + c.side), c.content);
        }
    }
}

TEST(DatabaseError, IsOneSentenceInTheLibrarysWords)
{
    const struct
    {
        int code;
        const char16_t* text;
        const char* words;
        ExitCode exitCode;
    } cases[] = {
        {1, u"no such table: X", "no such table: X", ExitCode::failed},
        {517, u"a [odd] text", "a [odd] text", ExitCode::busy},
        {11, u"", "SQLITE_CORRUPT) and was left alone: \"qo db repair\"", ExitCode::failed}};
    for (const auto& c : cases)
    {
        const HostError error =
            databaseError(CSQLiteException(c.code, c.text, u"SELECT 1\nFROM X"), u"C:\\home\\db");
        const std::string start = c.code == 11 ? "is damaged (" : "cannot be used: ";
        EXPECT_TRUE(contains(error.what(), "the database /home/db " + start + c.words));
        EXPECT_EQ(error.code(), c.exitCode);
    }
    EXPECT_EQ(databaseWords(u"saving : CSQLiteException: [SQLITE_FULL][code 13][disk is full]\nx"),
              "saving : disk is full");
    EXPECT_EQ(databaseWords(u"no room\nx"), "no room");
}

TEST(Snapshots, TheOneJustTakenStaysWhateverTheOthersAreCalled)
{
    const TempDir dir;
    const CString path = dir.collPath("db");
    makeDatabase(path, u"C:\\a.mp3");
    const auto now = fs::file_time_type::clock::now();
    for (int i = 0; i < 6; ++i)
        fs::last_write_time(dir.write("snapshots/qodb-2999010" + std::to_string(i) + "_000000", ""),
                            now + std::chrono::hours(1 + (i == 2 ? 0 : 10 - i)));
    const CString taken = Snapshots(path).take();
    EXPECT_EQ(DatabaseGuard::countRows(taken).at("FILE_T"), 1);
    EXPECT_EQ(Snapshots(path).list().GetSize(), 5);
    // The oldest by its time, and the one after it.
    EXPECT_FALSE(fs::exists(dir.path("snapshots/qodb-29990102_000000")));
    EXPECT_FALSE(fs::exists(dir.path("snapshots/qodb-29990105_000000")));
}

TEST(Snapshots, NewestFiveAreKeptAndOnlyTheirOwnFilesCountAndGo)
{
    const TempDir dir;
    const CString path = dir.collPath("db");
    makeDatabase(path, u"C:\\a.mp3");
    CSQLiteDB open(path);
    open.Open();
    open.Execute(u"INSERT INTO FILE_T (FT_PATH) VALUES ('stands in the log alone')");
    const auto strays = wordsOf("qodb-20990101_000000-wal qodb-20990101_000000-shm "
                                "qodb-20990101_000000.bak qodb-2099 notes.unfinished "
                                "qodb-x.unfinished somebody's-notes");
    const auto swept = wordsOf("qodb-20200101_000000 qodb-20200101_000000-wal "
                               "qodb-20200101_000000-shm qodb-20200101_000000-journal "
                               "qodb-20200101_000000_1.unfinished "
                               "qodb-20200101_000000.unfinished-journal");
    for (const auto& names : {strays, swept})
    {
        for (const std::string& name : names)
            dir.write("snapshots/" + name, "");
    }
    fs::last_write_time(dir.path("snapshots/qodb-20200101_000000"),
                        fs::file_time_type::clock::now() - std::chrono::hours(1));
    for (int i = 1; i < 5; ++i)
        dir.write("snapshots/qodb-2020010" + std::to_string(i) + "_000000_12", "");
    EXPECT_EQ(Snapshots(path).list().GetSize(), 5);
    const CString newest = Snapshots(path).take();
    EXPECT_EQ(DatabaseGuard::countRows(newest).at("FILE_T"), 2);
    const CStringArray copies = Snapshots(path).list();
    ASSERT_EQ(copies.GetSize(), 5);
    EXPECT_EQ(copies[0], newest);
    for (const std::string& name : strays)
        EXPECT_TRUE(fs::exists(dir.path("snapshots/") + name)) << name;
    for (const std::string& name : swept)
        EXPECT_FALSE(fs::exists(dir.path("snapshots/") + name)) << name;
}

TEST(KernelThread, RunsTasksInOrderAndHandsOnFailures)
{
    std::vector<int> order;
    {
        KernelThread thread;
        for (int i = 0; i < 100; ++i)
            thread.post([&order, i] { order.push_back(i); });
        EXPECT_EQ(thread.run([] { return 42; }), 42);
        EXPECT_THROW(thread.run([] { throw std::runtime_error("x"); }), std::runtime_error);
        const std::string message = messageOf(
            [&]
            {
                thread.run(
                    [] {
                        throw std::make_unique<CQoException>(CQoException::outOfMemory, nullptr)
                            .release();
                    });
            },
            ExitCode::failed);
        EXPECT_EQ(message, "there is not enough memory");
    }
    EXPECT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}
