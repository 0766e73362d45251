#include "core/collection/FileOperations.h"

#include "host/core/LoadedCollection.h"
#include "support/Contains.h"
#include "support/LogCapture.h"
#include "support/OrdinaryUser.h"
#include "support/OtherDisk.h"
#include "support/Words.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Logical.h>

#include <chrono>
#include <tuple>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using Mode = DiskMove::Mode;

class FileOperationsTest : public testing::Test
{
protected:
    FileOperations operations(FileOperations::Run run = FileOperations::Run::real)
    {
        return FileOperations(*here.session, Trash(here.dir.path("home/Trash")), run);
    }
    /// Paths below the test's own folder; others as they are.
    CString place(const std::string& path) const
    {
        return path.starts_with('/') ? qo::fromSystemPath(path) : here.dir.collPath(path);
    }
    void remove(const std::string& path)
    {
        here.run([&] { operations().remove(place(path), *here.progress); });
    }
    std::string failRemove(const std::string& path)
    {
        return messageOf([&] { remove(path); });
    }
    int add(const std::string& from, const std::string& to, Mode mode)
    {
        return here.run(
            [&] { return operations().add(place(from), place(to), mode, *here.progress).records; });
    }
    std::string failAdd(const std::string& from, const std::string& to)
    {
        return messageOf([&] { add(from, to, Mode::move); });
    }
    void move(const std::string& from,
              const std::string& to,
              FileOperations::Run run = FileOperations::Run::real)
    {
        here.run([&] { operations(run).move(place(from), place(to), *here.progress); });
    }
    std::string
    failMove(const std::string& from, const std::string& to, ExitCode code = ExitCode::failed)
    {
        return messageOf([&] { move(from, to); }, code);
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

TEST_F(FileOperationsTest, MovesAndRenamesKeepTheIdAndReachTheDatabase)
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

TEST_F(FileOperationsTest, FolderTakesAllItsRecordsAndNewFilesAlong)
{
    for (int i = 0; i < 30; ++i)
        here.addSound("music/Old/" + std::to_string(i % 10) + "/" + std::to_string(i) + ".mp3");
    here.addSound("music/stays.mp3");
    here.load();
    const auto before = here.records();
    here.addSound("music/Old/5/unknown.mp3", "sound.flac");
    const auto start = std::chrono::steady_clock::now();
    move("music/Old", "music/old");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
    const auto after = here.records();
    EXPECT_EQ(after.size(), 32U);
    EXPECT_EQ(after.at("music/old/3/23.mp3"), before.at("music/Old/3/23.mp3"));
    EXPECT_TRUE(after.contains("music/old/5/unknown.mp3"));
    EXPECT_EQ(here.stored(), after);
}

TEST_F(FileOperationsTest, RefusedMovesChangeNothing)
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
        EXPECT_NE(messageOf([&] { move(c.from, c.to, FileOperations::Run::trial); }, c.code), "");
    }
    EXPECT_TRUE(exists("music/a/1.mp3") && exists("music/B.mp3") && exists("elsewhere/1.mp3"));
}

TEST_F(FileOperationsTest, RecordWhoseFileIsGoneGivesWayAtTheTarget)
{
    here.addSound("music/1.mp3");
    here.addSound("music/2.mp3");
    here.addSound("outside.mp3", "sound.flac");
    here.load();
    const std::string id = here.records().at("music/1.mp3");
    fs::remove(here.dir.path("music/2.mp3"));
    move("music/1.mp3", "music/2.mp3");
    const std::map<std::string, std::string> expected{{"music/2.mp3", id}};
    here.expectRecords(expected);
    EXPECT_EQ(here.run([] { return CLTManager::getTracks().GetSize(); }), 1);

    fs::remove(here.dir.path("music/2.mp3"));
    add("outside.mp3", "music/2.mp3", Mode::copy);
    EXPECT_EQ(here.stored().size(), 1U);
    EXPECT_NE(here.stored().at("music/2.mp3"), id) << "another file has no claim to the history";
}

TEST_F(FileOperationsTest, UnsavedChangeIsUndoneOnTheDiskToo)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/2.mp3");
    here.addSound("outside/3.mp3");
    here.load();
    const auto before = here.stored();
    breakDatabase();
    for (const std::string& message : {failMove("music/a", "music/b"),
                                       failMove("music/a/1.mp3", "music/1.mp3"),
                                       failRemove("music/a/1.mp3"),
                                       failAdd("outside/3.mp3", "music")})
    {
        EXPECT_TRUE(contains(message, "database or disk is full"));
        EXPECT_TRUE(contains(message, "the disk is as it was before"));
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
    EXPECT_TRUE(exists("music/a/1.mp3") && exists("outside/3.mp3"));
    EXPECT_FALSE(exists("music/b") || exists("music/1.mp3") || exists("music/3.mp3"));
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/files")));
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/info")));
    here.expectRecords(before);
}

TEST_F(FileOperationsTest, FolderWithoutWritePermissionKeepsWhatItHas)
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

TEST_F(FileOperationsTest, MovesFromOneDiskToAnother)
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

    breakDatabase();
    const std::string message = failMove(other.path + "/a", "music/back");
    EXPECT_TRUE(contains(message, "as it was before"));
    EXPECT_TRUE(fs::exists(other.path + "/a/b/2.mp3"));
    EXPECT_FALSE(exists("music/back"));
    EXPECT_EQ(here.records(), after);
    for (const auto& entry : fs::directory_iterator(here.dir.path("music")))
        ADD_FAILURE() << entry.path() << " was left behind";
}

TEST_F(FileOperationsTest, WhatTheProgramAndTheUserCannotBeWithoutStays)
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

TEST_F(FileOperationsTest, FoldersThatDifferInCaseAloneAreTwo)
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

TEST_F(FileOperationsTest, WhatWasSavedAheadOfAFailureIsTold)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/2.mp3");
    here.addSound("music/b/1.mp3");
    here.addSound("music/b/2.mp3");
    here.load();
    const auto before = here.records();
    fs::remove_all(here.dir.path("music/b"));
    breakDatabase("UPDATE");
    const std::string message = failMove("music/a", "music/b");
    EXPECT_TRUE(contains(message, "the first 2 of its changes"));
    EXPECT_TRUE(contains(message, "the disk is as it was before"));
    const std::map<std::string, std::string> expected{
        {"music/a/1.mp3", before.at("music/a/1.mp3")},
        {"music/a/2.mp3", before.at("music/a/2.mp3")}};
    EXPECT_EQ(here.stored(), expected) << "of the files that had gone none comes back";
    EXPECT_EQ(here.records(), expected);
    EXPECT_TRUE(exists("music/a/1.mp3"));
    EXPECT_FALSE(exists("music/b"));
}
