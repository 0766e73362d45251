#include "core/runs/FileMoves.h"

#include "core/base/SystemPath.h"
#include "core/runs/JournalFile.h"
#include "core/runs/Reorganizer.h"
#include "host/core/LoadedCollection.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/OtherDisk.h"
#include "support/TestFileSystem.h"
#include "support/Words.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Logical.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <tuple>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using Deed = MovedFile::Deed;

/// A disk that is not waited for: nobody cuts the power here.
class QuickDisk final : public TestFileSystem
{
public:
    using TestFileSystem::TestFileSystem;
    int sync(const CString&) override { return 0; }
    int syncAll(const CString&) override { return 0; }
};

/// What ends a run as a kill would: nothing of it is written any more.
struct Killed
{
};

class FileMovesTest : public testing::Test
{
protected:
    /// Makes a run that is killed at so many lines of its journal; false if it was not.
    static bool wasKilledAt(int line, const std::function<void()>& deed)
    {
        JournalFile::watcher() = [left = line]() mutable
        {
            if (left-- == 0)
                throw Killed();
        };
        bool wasKilled = false;
        try
        {
            deed();
        }
        catch (const Killed&)
        {
            wasKilled = true;
        }
        JournalFile::watcher() = {};
        return wasKilled;
    }
    /// Paths below the test's own folder; others as they are.
    CString place(const std::string& path) const
    {
        return path.starts_with('/') ? qo::fromSystemPath(path) : here.dir.collPath(path);
    }
    Reorganizer reorganizer() { return Reorganizer(*here.session, here.trash()); }
    void move(const std::string& from, const std::string& to)
    {
        here.carryOut("mv", [&](FileMoves& moves) { moves.move(place(from), place(to)); });
    }
    void remove(const std::string& path)
    {
        here.carryOut("rm", [&](FileMoves& moves) { moves.remove(place(path)); });
    }
    void add(const std::string& from, const std::string& to, Deed deed)
    {
        here.carryOut("add", [&](FileMoves& moves) { moves.add(place(from), place(to), deed); });
    }
    void undo()
    {
        const auto report = here.run([&] { return reorganizer().undo("", *here.progress); });
        EXPECT_TRUE(report.isFinished);
        for (const auto& failure : report.failures)
            ADD_FAILURE() << failure.from << ": " << failure.reason;
    }
    std::string failRemove(const std::string& path)
    {
        return messageOf([&] { remove(path); });
    }
    std::string failAdd(const std::string& from, const std::string& to)
    {
        return messageOf([&] { add(from, to, Deed::move); });
    }
    std::string
    failMove(const std::string& from, const std::string& to, ExitCode code = ExitCode::failed)
    {
        return messageOf([&] { move(from, to); }, code);
    }
    /// Whether the call is one that runs make on the user's folders: the journals and the database
    /// are no part of them, and reading is not.
    bool isOfRuns(const std::string& call, const std::string& path, const std::string& disk) const
    {
        const bool isRead = call == "info" || call == "list" || call == "open" || call == "isLink";
        return !isRead && (isBelow(path, disk) || (isBelow(path, here.dir.path()) &&
                                                   !isBelow(path, here.dir.path("data"))));
    }
    /// Every name below the folders with music, files with their sizes.
    std::map<std::string, std::string> tree() const
    {
        std::map<std::string, std::string> names;
        for (const char* folder : {"music", "outside"})
        {
            if (!exists(folder))
                continue;
            for (const auto& entry : fs::recursive_directory_iterator(here.dir.path(folder)))
            {
                const std::string name = entry.path().native().substr(here.dir.path().size() + 1);
                names[name] = entry.is_regular_file() ? std::to_string(entry.file_size()) : "";
            }
        }
        return names;
    }
    /// From now on none of these changes of the files' table can be saved.
    void breakDatabase(const std::string& changes = "UPDATE INSERT DELETE")
    {
        here.run(
            [&]
            {
                CSQLiteDB db(Session::databasePath());
                db.Open();
                for (const std::string& change : wordsOf(changes))
                    db.Execute(qo::fromUtf8("CREATE TRIGGER no_" + change + " BEFORE " + change +
                                            " ON FILE_T BEGIN SELECT RAISE(ABORT, 'database or "
                                            "disk is full'); END;"));
            });
    }
    bool exists(const std::string& relative) const { return fs::exists(here.dir.path(relative)); }

    LoadedCollection here;
};
} // namespace

TEST_F(FileMovesTest, MovesAndRenamesKeepTheIdAndReachTheDatabase)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/2.mp3");
    here.dir.makeFolder("music/b");
    here.load();
    auto expected = here.records();
    ASSERT_EQ(expected.size(), 2U);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"music/a/1.mp3", "music/a/one.mp3", "music/a/one.mp3"},
        {"music/a/one.mp3", "music/a/ONE.mp3", "music/a/ONE.mp3"},
        {"music/a/ONE.mp3", "music/b", "music/b/ONE.mp3"},
        {"music/b/ONE.mp3", "music/\xC3\xBC\\.mp3", "music/\xC3\xBC\\.mp3"}};
    for (const auto& [from, to, place] : cases)
    {
        move(from, to);
        expected = here.renamed(expected, from, place);
        EXPECT_TRUE(exists(place)) << place;
        EXPECT_FALSE(exists(from)) << from;
        here.expectRecords(expected);
    }
    here.load();
    EXPECT_EQ(here.records(), expected);
}

TEST_F(FileMovesTest, FolderTakesAllItsRecordsAndNewFilesAlong)
{
    for (int i = 0; i < 30; ++i)
        here.addSound("music/Old/" + std::to_string(i % 10) + "/" + std::to_string(i) + ".mp3");
    here.addSound("music/stays.mp3");
    here.load();
    const auto before = here.records();
    here.addSound("music/Old/5/unknown.mp3", "sound.flac");
    move("music/Old", "music/old");
    const auto after = here.records();
    EXPECT_EQ(after.size(), 32U);
    EXPECT_EQ(after.at("music/old/3/23.mp3"), before.at("music/Old/3/23.mp3"));
    EXPECT_TRUE(after.contains("music/old/5/unknown.mp3"));
    EXPECT_EQ(here.stored(), after);
}

TEST_F(FileMovesTest, RefusedMovesChangeNothing)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/2.mp3");
    here.addSound("music/B.mp3");
    here.addSound("elsewhere/1.mp3");
    here.load();
    const auto before = here.records();
    const struct
    {
        const char* from;
        const char* to;
        const char* cause;
        ExitCode code = ExitCode::failed;
    } cases[] = {{"music/gone.mp3", "music/x.mp3", "No such file or directory", ExitCode::notFound},
                 {"music/a/1.mp3", "music/a/2.mp3", "already a file of that name"},
                 {"music/a/1.mp3", "music/a", "is there already"},
                 {"music/a/1.mp3", "music/b.mp3", "music/B.mp3 differs from it in case alone"},
                 {"music/a/1.mp3", "music/nowhere/1.mp3", "No such file or directory"},
                 {"music/a/1.mp3", "elsewhere/2.mp3", "is in no root folder"},
                 {"music/a", "music/a/b", "cannot be put into itself"},
                 {"music", "music2", "is a root folder"},
                 {"elsewhere/1.mp3", "music/3.mp3", "is in no root folder", ExitCode::notFound}};
    for (const auto& c : cases)
    {
        const std::string message = failMove(c.from, c.to, c.code);
        EXPECT_TRUE(contains(message, c.cause));
        EXPECT_TRUE(contains(message, here.dir.path("")));
        EXPECT_EQ(here.records(), before) << c.from;
    }
    EXPECT_TRUE(exists("music/a/1.mp3") && exists("music/B.mp3") && exists("elsewhere/1.mp3"));
}

TEST_F(FileMovesTest, RecordWhoseFileIsGoneGivesWayAtTheTarget)
{
    here.addSound("music/1.mp3");
    here.addSound("music/2.mp3");
    here.addSound("outside.mp3", "sound.flac");
    here.load();
    here.dir.write("music/notes.log", "an empty root folder would seem to be away");
    const std::string id = here.records().at("music/1.mp3");
    fs::remove(here.dir.path("music/2.mp3"));
    move("music/1.mp3", "music/2.mp3");
    const std::map<std::string, std::string> expected{{"music/2.mp3", id}};
    here.expectRecords(expected);
    EXPECT_EQ(here.run([] { return CLTManager::getTracks().GetSize(); }), 1);

    fs::remove(here.dir.path("music/2.mp3"));
    add("outside.mp3", "music/2.mp3", Deed::copy);
    EXPECT_EQ(here.stored().size(), 1U);
    EXPECT_NE(here.stored().at("music/2.mp3"), id) << "another file has no claim to the history";
}

TEST_F(FileMovesTest, FolderWithoutWritePermissionKeepsWhatItHas)
{
    const OtherDisk other;
    here.addSound("music/locked/1.mp3");
    here.addSound("music/2.mp3");
    if (!other.path.empty())
        here.addRoot(qo::fromSystemPath(other.path));
    here.load();
    const auto before = here.records();
    if (!other.path.empty())
        fs::permissions(other.path, fs::perms::all);
    const OrdinaryUser user(here.dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the build folder is closed to ordinary users";
    const std::string locked = here.dir.path("music/locked");
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    const std::string messages[] = {
        failMove("music/locked/1.mp3", "music/1.mp3"),
        failMove("music/2.mp3", "music/locked/2.mp3"),
        failRemove("music/locked/1.mp3"),
        failMove("music/locked/1.mp3", other.path.empty() ? "music/3.mp3" : other.path + "/3.mp3")};
    for (const std::string& message : messages)
        EXPECT_TRUE(contains(message, "Permission denied"));
    EXPECT_EQ(here.stored(), before);
    EXPECT_TRUE(exists("music/locked/1.mp3") && exists("music/2.mp3"));
    EXPECT_FALSE(!other.path.empty() && fs::exists(other.path + "/3.mp3"));
    fs::permissions(locked, fs::perms::owner_all);
}

TEST_F(FileMovesTest, MovesFromOneDiskToAnother)
{
    const OtherDisk other;
    if (other.path.empty())
        GTEST_SKIP() << "there is no second file system to be had";
    here.addRoot(qo::fromSystemPath(other.path));
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/b/2.mp3");
    here.addSound("music/3.mp3");
    fs::create_symlink("1.mp3", here.dir.path("music/a/link"));
    fs::copy_file(here.dir.path("music/3.mp3"), other.path + "/here.mp3");
    here.load();
    const auto before = here.records();
    const std::string sound = here.dir.read("music/3.mp3");
    const auto time = fs::last_write_time(here.dir.path("music/a/b/2.mp3"));
    here.dir.write("music/h/huge.bin", "");
    fs::resize_file(here.dir.path("music/h/huge.bin"), fs::space(other.path).available + 1);
    EXPECT_TRUE(contains(messageOf([&] { move("music/h", other.path + "/h"); }),
                         "there is no room in " + other.path));
    move("music/a", other.path + "/a");
    move("music/3.mp3", other.path + "/3.mp3");
    const auto after = here.records();
    EXPECT_EQ(after.at(other.path + "/a/b/2.mp3"), before.at("music/a/b/2.mp3"));
    EXPECT_EQ(after.at(other.path + "/3.mp3"), before.at("music/3.mp3"));
    EXPECT_EQ(here.stored(), after);
    EXPECT_EQ(fs::last_write_time(other.path + "/a/b/2.mp3"), time);
    EXPECT_EQ(fs::read_symlink(other.path + "/a/link"), "1.mp3");
    EXPECT_FALSE(exists("music/a") || exists("music/3.mp3"));
    EXPECT_EQ(fs::file_size(other.path + "/3.mp3"), sound.size());

    undo();
    undo();
    EXPECT_EQ(here.stored(), before);
    EXPECT_EQ(fs::last_write_time(here.dir.path("music/a/b/2.mp3")), time);
    EXPECT_EQ(fs::read_symlink(here.dir.path("music/a/link")), "1.mp3");
    EXPECT_FALSE(fs::exists(other.path + "/a") || fs::exists(other.path + "/3.mp3"));
}

TEST_F(FileMovesTest, WhatTheProgramAndTheUserCannotBeWithoutStays)
{
    here.addSound("music/a/1.mp3");
    here.addSound("outer/music2/2.mp3");
    here.dir.makeFolder("home/Trash/files");
    here.addRoot(here.dir.collPath("outer/music2"));
    here.addRoot(qo::fromSystemPath(here.dir.path()));
    fs::create_directory_symlink(here.dir.path("data"), here.dir.path("link"));
    here.load();
    ASSERT_TRUE(here.run(
        [&]
        {
            return CQoCollection::m_ownCollection.isDirInCollection(
                CQoCollPath(here.dir.collPath("data")));
        }));
    const auto before = here.records();
    for (const auto& [path, id] : before)
        EXPECT_FALSE(path.starts_with("data/")) << path << " is the program's own";
    auto kept = wordsOf("data data/Qorganizer data/Qorganizer/qodb link/Qorganizer home home/Trash "
                        "music outer /");
    kept.push_back(here.dir.path());
    for (const std::string& path : kept)
    {
        SCOPED_TRACE(path);
        for (const std::string& message :
             {failRemove(path), failMove(path, "music/a/new"), failAdd(path, "music/a/new")})
            EXPECT_TRUE(contains(message, "it is "));
        EXPECT_FALSE(exists("music/a/new"));
    }
    const std::string into = failMove("music/a/1.mp3", "data/Qorganizer/qodb-wal2");
    EXPECT_TRUE(contains(into, "part of this program's data"));
    EXPECT_EQ(here.records(), before);
    remove("link");
    EXPECT_TRUE(exists("data/Qorganizer/qodb"));
}

TEST_F(FileMovesTest, FoldersThatDifferInCaseAloneAreTwo)
{
    here.addSound("music/ABC/1.mp3");
    here.addSound("music/abc/2.mp3");
    here.addSound("music/abc/3.mp3");
    if (exists("music/Abc"))
        GTEST_SKIP() << "the disk takes both for one";
    here.load();
    auto expected = here.records();
    ASSERT_EQ(expected.size(), 3U);
    move("music/ABC", "music/x");
    expected = here.renamed(expected, "music/ABC/1.mp3", "music/x/1.mp3");
    here.expectRecords(expected);
    here.addSound("music/ABC/4.mp3");
    remove("music/ABC");
    EXPECT_EQ(here.records(), expected);
    fs::remove(here.dir.path("music/abc/3.mp3"));
    move("music/abc", "music/y");
    EXPECT_TRUE(here.records().contains("music/y/2.mp3"));
    EXPECT_FALSE(here.records().contains("music/y/3.mp3")) << "it was gone before";
}

TEST_F(FileMovesTest, WhatMovesGoesAndComesIsTakenBackWithTheLastingIds)
{
    for (const char* song : {"music/a/1.mp3", "music/a/b/2.mp3", "music/3.mp3", "outside/x/4.mp3"})
        here.addSound(song);
    here.dir.write("music/a/notes.log", "notes");
    here.load();
    const auto before = here.records();
    const auto first = tree();
    const struct
    {
        const char* what;
        std::function<void()> deed;
        std::size_t files;
    } cases[] = {{"mv of a file", [&] { move("music/a/b/2.mp3", "music/two.mp3"); }, 4},
                 {"mv of a folder", [&] { move("music/a", "music/c"); }, 4},
                 {"rm of a file", [&] { remove("music/3.mp3"); }, 3},
                 {"rm of a folder", [&] { remove("music/a"); }, 1},
                 {"add", [&] { add("outside/x", "music", Deed::copy); }, 5},
                 {"add --move", [&] { add("outside/x", "music", Deed::move); }, 5},
                 {"add of a file", [&] { add("outside/x/4.mp3", "music/a", Deed::copy); }, 5}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        c.deed();
        EXPECT_NE(tree(), first);
        EXPECT_EQ(here.records().size(), c.files);
        undo();
        EXPECT_EQ(tree(), first);
        here.expectRecords(before);
    }
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/files")));
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/info")));
    here.load();
    EXPECT_EQ(here.records(), before);
}

TEST_F(FileMovesTest, ACopyThatMayBeTheOnlyOneByNowStays)
{
    here.addSound("outside/1.mp3");
    here.load();
    add("outside/1.mp3", "music", Deed::copy);
    fs::remove(here.dir.path("outside/1.mp3"));
    const std::string message =
        messageOf([&] { here.run([&] { reorganizer().undo("", *here.progress); }); });
    EXPECT_TRUE(contains(message, "it may be the only one by now"));
    EXPECT_TRUE(exists("music/1.mp3"));
}

TEST_F(FileMovesTest, AChangeThatCannotBeSavedIsAppliedByTheNextLoad)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/2.mp3");
    here.addSound("outside/3.mp3");
    here.load();
    const auto before = here.stored();
    breakDatabase();
    const struct
    {
        std::function<void()> deed;
        std::string place;
    } cases[] = {{[&] { move("music/a", "music/b"); }, "music/b/1.mp3"},
                 {[&] { remove("music/2.mp3"); }, "home/Trash/files/2.mp3"},
                 {[&] { add("outside/3.mp3", "music", Deed::move); }, "music/3.mp3"}};
    for (const auto& c : cases)
    {
        const std::string message = messageOf(c.deed);
        EXPECT_TRUE(contains(message, "database or disk is full"));
        EXPECT_TRUE(contains(message, "the next command brings it up to date"));
        EXPECT_TRUE(exists(c.place)) << c.place;
        EXPECT_EQ(here.stored(), before);
        here.run(
            []
            {
                CSQLiteDB db(Session::databasePath());
                db.Open();
                for (const char16_t* change : {u"UPDATE", u"INSERT", u"DELETE"})
                    db.Execute(CString(u"DROP TRIGGER no_") + change);
            });
        here.load(false);
        EXPECT_EQ(here.stored().contains(c.place), !c.place.starts_with("home")) << c.place;
        undo();
        EXPECT_EQ(here.stored(), before);
        breakDatabase();
    }
}

TEST_F(FileMovesTest, EveryFailureOfTheDiskLeavesARunThatCanGoOnOrBeTakenBack)
{
    const OtherDisk other;
    if (other.path.empty())
        GTEST_SKIP() << "there is no second file system to be had";
    here.addRoot(qo::fromSystemPath(other.path));
    here.addSound("music/a/1.mp3");
    here.addSound("music/2.mp3");
    here.addSound("outside/3.mp3");
    fs::copy_file(here.dir.path("music/2.mp3"), other.path + "/here.mp3");
    here.load();
    const auto before = here.stored();
    const auto first = tree();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"rename", [&] { move("music/a", "music/b"); }},
        {"copy", [&] { move("music/a", other.path + "/a"); }},
        {"trash", [&] { remove("music/2.mp3"); }},
        {"add", [&] { add("outside/3.mp3", "music/a", Deed::copy); }}};
    for (const auto& [what, deed] : cases)
    {
        int failed = 0;
        for (int count = 0;; ++count)
        {
            SCOPED_TRACE(std::string(what) + " " + std::to_string(count));
            int left = count;
            bool wasHit = false;
            {
                const QuickDisk disk(
                    [&](const std::string& call, const CString& path)
                    {
                        if (!isOfRuns(call, qo::toSystemPath(path), other.path) || left-- != 0)
                            return 0;
                        wasHit = true;
                        return EIO;
                    });
                try
                {
                    deed();
                }
                catch (const HostError&)
                {
                    ++failed;
                }
            }
            here.load(false);
            const auto runs = here.run([] { return Reorganizer::runs(); });
            if (!runs.empty() && runs.back().isForward && runs.back().moved > 0)
                undo();
            else if (!runs.empty() && runs.back().isRunning)
                undo();
            ASSERT_EQ(tree(), first);
            ASSERT_EQ(here.stored(), before);
            if (!wasHit)
                break;
        }
        EXPECT_GT(failed, 3) << what;
    }
}

TEST_F(FileMovesTest, KilledAtAnyLineOfItsJournalARunKeepsEveryIdAndCanBeTakenBack)
{
    const QuickDisk disk;
    for (const char* song : {"music/a/1.mp3", "music/a/2.mp3", "music/3.mp3", "outside/x/4.mp3"})
        here.addSound(song);
    here.load();
    const auto before = here.stored();
    const auto first = tree();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"mv",
         [&]
         {
             here.carryOut("mv",
                           [&](FileMoves& moves)
                           {
                               moves.move(place("music/a"), place("music/b"));
                               moves.move(place("music/3.mp3"), place("music/4.mp3"));
                           });
         }},
        {"rm", [&] { remove("music/a"); }},
        {"add", [&] { add("outside/x", "music", Deed::copy); }},
        {"add --move", [&] { add("outside/x", "music", Deed::move); }}};
    for (const auto& [what, deed] : cases)
    {
        bool wasKilled = true;
        for (int count = 0; wasKilled; ++count)
        {
            SCOPED_TRACE(std::string(what) + " " + std::to_string(count));
            wasKilled = wasKilledAt(count, deed);
            here.load(true);
            for (const auto& [path, id] : here.stored())
            {
                EXPECT_TRUE(exists(path)) << path;
                EXPECT_TRUE(what[0] == 'a' || std::any_of(before.begin(),
                                                          before.end(),
                                                          [&id = id](const auto& record)
                                                          { return record.second == id; }));
            }
            const auto runs = here.run([] { return Reorganizer::runs(); });
            if (!runs.empty() && runs.back().isForward)
            {
                if (runs.back().isRunning && count % 2 == 0)
                    here.run([&] { reorganizer().goOn(runs.back().id, *here.progress); });
                undo();
            }
            ASSERT_EQ(tree(), first);
            ASSERT_EQ(here.stored(), before);
        }
    }
}
