#include "core/FileOperations.h"

#include "core/PendingTags.h"
#include "host/core/LoadedCollection.h"
#include "support/LogCapture.h"
#include "support/OrdinaryUser.h"
#include "support/OtherDisk.h"

#include <QoKernel/Logical.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

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
    void remove(const std::string& path)
    {
        here.run([&] { operations().remove(here.dir.collPath(path), *here.progress); });
    }
    void edit(const std::string& path, const std::string& title)
    {
        PendingTags pending(Session::pendingTagsPath());
        pending.set(here.dir.collPath(path), "title", title);
        pending.save();
    }
    /// The edited titles by path, "music/1.mp3=x" and so on.
    std::vector<std::string> edits() const
    {
        const PendingTags pending(Session::pendingTagsPath());
        std::vector<std::string> list;
        for (const CString& path : pending.paths())
            list.push_back(qo::toSystemPath(path).substr(here.dir.path().size() + 1) + "=" +
                           pending.fields(path).at("title"));
        return list;
    }
    void move(const std::string& from, const std::string& to)
    {
        here.run(
            [&]
            { operations().move(here.dir.collPath(from), here.dir.collPath(to), *here.progress); });
    }
    std::string
    failMove(const std::string& from, const std::string& to, ExitCode code = ExitCode::failed)
    {
        return here.messageOf(
            [&]
            { operations().move(here.dir.collPath(from), here.dir.collPath(to), *here.progress); },
            code);
    }
    /// From now on nothing can be saved.
    void breakDatabase()
    {
        here.run(
            []
            {
                CSQLiteDB db(Session::databasePath());
                db.Open();
                db.Execute(u"CREATE TRIGGER no_update BEFORE UPDATE ON FILE_T "
                           u"BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END;");
                db.Execute(u"CREATE TRIGGER no_insert BEFORE INSERT ON FILE_T "
                           u"BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END;");
                db.Execute(u"CREATE TRIGGER no_delete BEFORE DELETE ON FILE_T "
                           u"BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END;");
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
    const struct
    {
        const char* from;
        const char* to;
        const char* place;
    } cases[] = {{"music/a/1.mp3", "music/a/one.mp3", "music/a/one.mp3"},
                 {"music/a/one.mp3", "music/a/ONE.mp3", "music/a/ONE.mp3"},
                 {"music/a/ONE.mp3", "music/b", "music/b/ONE.mp3"},
                 {"music/b/ONE.mp3", "music/\xC3\xBC\\.mp3", "music/\xC3\xBC\\.mp3"}};
    for (const auto& c : cases)
    {
        move(c.from, c.to);
        auto node = expected.extract(c.from);
        node.key() = c.place;
        expected.insert(std::move(node));
        EXPECT_TRUE(exists(c.place)) << c.place;
        EXPECT_FALSE(exists(c.from)) << c.from;
        EXPECT_EQ(here.records(), expected) << c.place;
        EXPECT_EQ(here.stored(), expected) << c.place;
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
        EXPECT_NE(message.find(c.cause), std::string::npos) << message;
        EXPECT_NE(message.find(here.dir.path("")), std::string::npos) << message;
        EXPECT_EQ(here.records(), before) << c.from;
        here.messageOf(
            [&]
            {
                operations(FileOperations::Run::trial)
                    .move(here.dir.collPath(c.from), here.dir.collPath(c.to), *here.progress);
            },
            c.code);
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
    EXPECT_EQ(here.records(), expected);
    EXPECT_EQ(here.stored(), expected);
    EXPECT_EQ(here.run([] { return CLTManager::getTracks().GetSize(); }), 1);

    fs::remove(here.dir.path("music/2.mp3"));
    here.run(
        [&]
        {
            operations().add(here.dir.collPath("outside.mp3"),
                             here.dir.collPath("music/2.mp3"),
                             Mode::copy,
                             *here.progress);
        });
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
    const std::string moved = failMove("music/a", "music/b");
    const std::string alone = failMove("music/a/1.mp3", "music/1.mp3");
    const std::string removed = here.messageOf(
        [&] { operations().remove(here.dir.collPath("music/a/1.mp3"), *here.progress); },
        ExitCode::failed);
    const std::string added = here.messageOf(
        [&]
        {
            operations().add(here.dir.collPath("outside/3.mp3"),
                             here.dir.collPath("music"),
                             Mode::move,
                             *here.progress);
        },
        ExitCode::failed);
    for (const std::string& message : {moved, alone, removed, added})
    {
        EXPECT_NE(message.find("database or disk is full"), std::string::npos) << message;
        EXPECT_NE(message.find("the disk is as it was before"), std::string::npos) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
    EXPECT_TRUE(exists("music/a/1.mp3") && exists("outside/3.mp3"));
    EXPECT_FALSE(exists("music/b") || exists("music/1.mp3") || exists("music/3.mp3"));
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/files")));
    EXPECT_TRUE(fs::is_empty(here.dir.path("home/Trash/info")));
    EXPECT_EQ(here.stored(), before);
    EXPECT_EQ(here.records(), before);
}

TEST_F(FileOperationsTest, ThrownAwayFilesLeaveTheCollectionAndCanBeFoundInTheTrash)
{
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/b/2.mp3");
    here.addSound("music/3.mp3");
    here.load();
    here.run([&] { operations().remove(here.dir.collPath("music/3.mp3"), *here.progress); });
    here.run([&] { operations().remove(here.dir.collPath("music/a"), *here.progress); });
    EXPECT_TRUE(here.records().empty());
    EXPECT_TRUE(here.stored().empty());
    EXPECT_TRUE(exists("music")) << "the root folder stays";
    EXPECT_TRUE(exists("home/Trash/files/3.mp3") && exists("home/Trash/files/a/b/2.mp3"));
}

TEST_F(FileOperationsTest, AddedFilesAndFoldersAreTakenInOrLeftOutside)
{
    here.addSound("outside/1.mp3");
    here.addSound("outside/album/2.flac", "sound.flac");
    here.dir.makeFolder("music/new");
    here.load();
    const auto add = [&](const std::string& from, const std::string& to, Mode mode)
    {
        return here.run(
            [&]
            {
                return operations()
                    .add(here.dir.collPath(from), here.dir.collPath(to), mode, *here.progress)
                    .records;
            });
    };
    EXPECT_EQ(add("outside/1.mp3", "music/new", Mode::copy), 1);
    EXPECT_EQ(add("outside/album", "music/album", Mode::move), 1);
    EXPECT_TRUE(exists("outside/1.mp3"));
    EXPECT_FALSE(exists("outside/album"));
    const auto records = here.records();
    EXPECT_EQ(records.size(), 2U);
    EXPECT_TRUE(records.contains("music/new/1.mp3") && records.contains("music/album/2.flac"));
    EXPECT_EQ(here.stored(), records);
    EXPECT_EQ(here.dir.read("music/new/1.mp3"), here.dir.read("outside/1.mp3"));
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
    const CString file = here.dir.collPath("music/locked/1.mp3");
    const std::string messages[] = {
        failMove("music/locked/1.mp3", "music/1.mp3"),
        failMove("music/2.mp3", "music/locked/2.mp3"),
        here.messageOf([&] { operations().remove(file, *here.progress); }, ExitCode::failed),
        here.messageOf(
            [&]
            {
                operations().move(file,
                                  other.path.empty() ? here.dir.collPath("music/3.mp3")
                                                     : qo::fromSystemPath(other.path + "/3.mp3"),
                                  *here.progress);
            },
            ExitCode::failed)};
    for (const std::string& message : messages)
        EXPECT_NE(message.find("Permission denied"), std::string::npos) << message;
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
    const auto toOther = [&](const std::string& from, const std::string& to)
    {
        operations().move(
            here.dir.collPath(from), qo::fromSystemPath(other.path + to), *here.progress);
    };
    here.run([&] { toOther("music/a", "/a"); });
    here.run([&] { toOther("music/3.mp3", "/3.mp3"); });
    const auto after = here.records();
    EXPECT_EQ(after.at(other.path + "/a/b/2.mp3"), before.at("music/a/b/2.mp3"));
    EXPECT_EQ(after.at(other.path + "/3.mp3"), before.at("music/3.mp3"));
    EXPECT_EQ(here.stored(), after);
    EXPECT_EQ(fs::last_write_time(other.path + "/a/b/2.mp3"), time);
    EXPECT_EQ(fs::read_symlink(other.path + "/a/link"), "1.mp3");
    EXPECT_FALSE(exists("music/a") || exists("music/3.mp3"));
    EXPECT_EQ(fs::file_size(other.path + "/3.mp3"), sound.size());

    breakDatabase();
    const std::string message = here.messageOf(
        [&]
        {
            operations().move(qo::fromSystemPath(other.path + "/a"),
                              here.dir.collPath("music/back"),
                              *here.progress);
        },
        ExitCode::failed);
    EXPECT_NE(message.find("as it was before"), std::string::npos) << message;
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
    for (const char* path : {"data",
                             "data/Qorganizer",
                             "data/Qorganizer/qodb",
                             "link/Qorganizer",
                             "home",
                             "home/Trash",
                             "music",
                             "outer",
                             "",
                             "/"})
    {
        SCOPED_TRACE(path);
        const CString from = qo::fromSystemPath(*path == '/' ? path
                                                : *path      ? here.dir.path(path)
                                                             : here.dir.path());
        const CString to = here.dir.collPath("music/a/new");
        const std::string messages[] = {
            here.messageOf([&] { operations().remove(from, *here.progress); }, ExitCode::failed),
            here.messageOf([&] { operations().move(from, to, *here.progress); }, ExitCode::failed),
            here.messageOf([&] { operations().add(from, to, Mode::move, *here.progress); },
                           ExitCode::failed)};
        for (const std::string& message : messages)
            EXPECT_TRUE(message.find("it is ") != std::string::npos) << message;
        EXPECT_FALSE(exists("music/a/new"));
    }
    const std::string into = failMove("music/a/1.mp3", "data/Qorganizer/qodb-wal2");
    EXPECT_NE(into.find("part of this program's data"), std::string::npos) << into;
    EXPECT_EQ(here.records(), before);
    remove("link");
    EXPECT_TRUE(exists("data/Qorganizer/qodb"));
}

TEST_F(FileOperationsTest, PendingEditsFollowTheirFiles)
{
    for (const char* path : {"music/a/1.mp3", "music/2.mp3", "music/3.mp3", "outside/4.mp3"})
    {
        here.addSound(path);
        edit(path, path);
    }
    here.load();
    using List = std::vector<std::string>;
    move("music/a", "music/b");
    move("music/b/1.mp3", "music/b/ONE.mp3");
    EXPECT_EQ(edits(),
              (List{"music/2.mp3=music/2.mp3",
                    "music/3.mp3=music/3.mp3",
                    "music/b/ONE.mp3=music/a/1.mp3",
                    "outside/4.mp3=outside/4.mp3"}));
    fs::remove(here.dir.path("music/3.mp3"));
    move("music/2.mp3", "music/3.mp3");
    here.run(
        [&]
        {
            operations().add(here.dir.collPath("outside/4.mp3"),
                             here.dir.collPath("music/2.mp3"),
                             Mode::move,
                             *here.progress);
        });
    const List moved{
        "music/2.mp3=outside/4.mp3", "music/3.mp3=music/2.mp3", "music/b/ONE.mp3=music/a/1.mp3"};
    EXPECT_EQ(edits(), moved);
    remove("music/b");
    EXPECT_EQ(edits(), (List{moved[0], moved[1]}));
    breakDatabase();
    failMove("music/2.mp3", "music/5.mp3");
    EXPECT_EQ(edits(), (List{moved[0], moved[1]})) << "the file is where it was";
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
    auto node = expected.extract("music/ABC/1.mp3");
    node.key() = "music/x/1.mp3";
    expected.insert(std::move(node));
    EXPECT_EQ(here.records(), expected);
    EXPECT_EQ(here.stored(), expected);
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
    here.run(
        []
        {
            CSQLiteDB db(Session::databasePath());
            db.Open();
            db.Execute(u"CREATE TRIGGER no_update BEFORE UPDATE ON FILE_T "
                       u"BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END;");
        });
    const std::string message = failMove("music/a", "music/b");
    EXPECT_NE(message.find("the first 2 of its changes"), std::string::npos) << message;
    EXPECT_NE(message.find("the disk is as it was before"), std::string::npos) << message;
    const std::map<std::string, std::string> expected{
        {"music/a/1.mp3", before.at("music/a/1.mp3")},
        {"music/a/2.mp3", before.at("music/a/2.mp3")}};
    EXPECT_EQ(here.stored(), expected) << "of the files that had gone none comes back";
    EXPECT_EQ(here.records(), expected);
    EXPECT_TRUE(exists("music/a/1.mp3"));
    EXPECT_FALSE(exists("music/b"));
}
