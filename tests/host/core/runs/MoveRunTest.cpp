#include "core/runs/MoveRun.h"

#include "core/plan/TargetName.h"
#include "host/core/MessageOf.h"
#include "host/core/MoveScene.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"
#include "support/TestFileSystem.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
class MoveRunTest : public testing::Test
{
protected:
    std::string journal(const std::string& id = "run") const { return dir.path(id + ".running"); }
    MoveRun::Report apply() const { return begin()->run({}); }
    std::unique_ptr<MoveRun> begin() const { return MoveRun::begin(journal(), scene.plan("run")); }
    MoveRun::Report undo() const { return MoveRun::beginUndo(journal("undo"), journal())->run({}); }
    bool exists(const std::string& relative) const { return fs::exists(scene.path(relative)); }
    /// "from: reason" of each failure.
    std::vector<std::string> failures(const MoveRun::Report& report) const
    {
        std::vector<std::string> list;
        for (const MoveRun::Failure& failure : report.failures)
            list.push_back(fs::path(failure.from).lexically_relative(scene.path("")).native() +
                           ": " + failure.reason);
        return list;
    }
    static void overwrite(const std::string& path, const std::string& content)
    {
        std::ofstream(path) << content;
    }
    /// Does the work in a process of its own for which a disk of 64 kB is mounted on the folder.
    /// False where that cannot be.
    template <class Work>
    static bool onSmallDisk(const std::string& folder, const Work& work)
    {
        constexpr int impossible = 100;
        const pid_t child = ::fork();
        if (child == 0)
        {
            if (::unshare(CLONE_NEWNS) != 0 ||
                ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k,mode=755") != 0)
                ::_exit(impossible);
            work();
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) % impossible == 0);
        return !WIFEXITED(status) || WEXITSTATUS(status) != impossible;
    }

    TempDir dir;
    MoveScene scene{{dir.path("base")}};
};

/// A disk that takes names that differ in case alone for one.
class CaseBlindDisk final : public TestFileSystem
{
public:
    int look(const CString& path, qo::NameInfo& info) override
    {
        return TestFileSystem::look(found(path), info);
    }
    int lookThrough(const CString& path, qo::NameInfo& info) override
    {
        return TestFileSystem::lookThrough(found(path), info);
    }
    int moveFileNoReplace(const CString& from, const CString& to) override
    {
        qo::NameInfo info;
        return look(to, info) == 0 ? EEXIST : TestFileSystem::moveFileNoReplace(found(from), to);
    }

private:
    static CString found(const CString& path)
    {
        const fs::path wanted = qo::toSystemPath(path);
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(wanted.parent_path(), error))
        {
            if (sameNameKey(entry.path().native()) == sameNameKey(wanted.native()))
                return qo::fromSystemPath(entry.path().native());
        }
        return path;
    }
};

using Lines = std::vector<std::string>;
} // namespace

TEST_F(MoveRunTest, ManyFilesEndInThePlannedTreeAndGoBack)
{
    scene.addMany();
    const auto first = scene.tree();
    const MoveRun::Report report = apply();
    EXPECT_TRUE(report.isFinished);
    EXPECT_TRUE(scene.holds(scene.planned(first)));
    EXPECT_EQ(failures(report).size(), 3U);
    EXPECT_EQ(failures(report).front(), "blocked/00: there is already a file of that name");
    const MoveRun::Report undone = undo();
    EXPECT_EQ(undone.moved, report.moved);
    EXPECT_TRUE(scene.holds(first));
    // An undo is a run that can be undone.
    EXPECT_TRUE(MoveRun::beginUndo(journal("redo"), journal("undo"))->run({}).isFinished);
    EXPECT_TRUE(scene.holds(scene.planned(first)));
}

TEST_F(MoveRunTest, SourceThatIsNotAsItWasStaysWithWhatDependsOnIt)
{
    for (const char* name : {"edited", "gone", "replaced", "link"})
        scene.addMove(name, std::string("new/") + name);
    scene.addMove("waits", "edited");
    scene.addMove("fine", "new/fine");
    const auto plan = scene.plan("run");
    overwrite(scene.path("edited"), "something else");
    fs::remove(scene.path("gone"));
    fs::rename(scene.path("replaced"), scene.path("aside"));
    fs::copy_file(scene.path("aside"), scene.path("replaced"));
    fs::rename(scene.path("link"), scene.path("target"));
    fs::create_symlink("target", scene.path("link"));
    const MoveRun::Report report = MoveRun::begin(journal(), plan)->run({});
    EXPECT_EQ(failures(report),
              (Lines{"edited: it has changed since",
                     "gone: it is no longer there",
                     "replaced: it has changed since",
                     "link: it is no file any more",
                     "waits: its place is still taken by a file that does not move"}));
    EXPECT_TRUE(report.isFinished);
    EXPECT_EQ(report.moved, 1U);
    EXPECT_TRUE(exists("new/fine"));
}

TEST_F(MoveRunTest, BrokenCircleGoesBackToWhereItWas)
{
    for (int i = 0; i < 4; ++i)
        scene.addMove(std::to_string(i), std::to_string((i + 1) % 4));
    const auto plan = scene.plan("run");
    overwrite(scene.path("1"), "something else");
    const auto first = scene.tree();
    const MoveRun::Report report = MoveRun::begin(journal(), plan)->run({});
    EXPECT_TRUE(scene.holds(first));
    EXPECT_EQ(failures(report),
              (Lines{"0: its place is still taken by a file that does not move",
                     "1: it has changed since",
                     "2: it went back, since another file needed its place",
                     "3: it went back, since another file needed its place"}));
    EXPECT_TRUE(report.notes.empty());
}

TEST_F(MoveRunTest, FileThatCannotGoBackGetsANameBesideAndANote)
{
    scene.addMove("song.mp3", "Song.mp3");
    auto run = begin();
    // While it waits under its temporary name others take both its names.
    const MoveRun::Report report = run->run(atThirdQuestion(
        [this]
        {
            scene.add("Song.mp3");
            scene.add("song.mp3");
        }));
    EXPECT_EQ(report.notes,
              Lines{scene.path("song.mp3") + " is now " + scene.path("song.mp3_1") +
                    ", since its place was taken"});
    EXPECT_EQ(scene.tree().size(), 3U);
    run.reset();
    EXPECT_EQ(messageOf([&] { undo(); }),
              "the run run cannot be taken back: " + scene.path("song.mp3_1") +
                  " cannot go back because its first place " + scene.path("song.mp3") +
                  " is taken");
}

TEST_F(MoveRunTest, StoppedRunGoesOnAndGivesEachFileOnce)
{
    scene.addMany();
    const auto first = scene.tree();
    const auto plan = scene.plan("run");
    std::vector<std::string> known;
    for (const PlannedFile& file : plan.files)
        known.push_back(file.from);
    MoveRun::begin(journal(), plan);
    bool isFinished = false;
    for (int rounds = 0; !isFinished; ++rounds)
    {
        ASSERT_LT(rounds, 50);
        const auto run = MoveRun::open(journal());
        isFinished = run->run(stopAfter(30)).isFinished;
        for (const MoveRun::Place& place : run->notApplied())
        {
            EXPECT_EQ(known[place.file], place.from);
            EXPECT_TRUE(fs::exists(place.to)) << place.to;
            known[place.file] = place.to;
        }
        // What was not noted as applied is given again after the next start.
        if (rounds % 2 == 0)
            run->setApplied();
        else
            for (const MoveRun::Place& place : run->notApplied())
                known[place.file] = place.from;
    }
    const auto run = MoveRun::open(journal());
    for (const MoveRun::Place& place : run->notApplied())
        known[place.file] = place.to;
    for (std::size_t i = 0; i < known.size(); ++i)
        EXPECT_TRUE(known[i] == plan.files[i].to || fs::exists(plan.files[i].from)) << known[i];
    EXPECT_TRUE(scene.holds(scene.planned(first)));
}

TEST_F(MoveRunTest, UndoRefusesFileByFileWhatChangedSince)
{
    for (const char* name : {"a", "b", "c", "d", "e"})
        scene.addMove(name, std::string("new/") + name);
    scene.addMove("1", "2");
    scene.addMove("2", "3");
    apply();
    overwrite(scene.path("new/a"), "edited");
    fs::remove(scene.path("new/b"));
    scene.add("c");
    overwrite(scene.path("2"), "edited"); // was 1, and keeps what was 2 from its place
    const MoveRun::Report report = undo();
    EXPECT_EQ(failures(report),
              (Lines{"new/a: " + scene.path("new/a") + " has changed since",
                     "new/b: it is no longer at " + scene.path("new/b"),
                     "new/c: its first place " + scene.path("c") + " is taken",
                     "2: " + scene.path("2") + " has changed since",
                     "3: its first place " + scene.path("2") +
                         " is still taken by a file that does not go back"}));
    EXPECT_EQ(report.moved, 2U);
    EXPECT_TRUE(exists("d") && exists("e") && exists("new/a") && exists("3"));
}

TEST_F(MoveRunTest, UndoOfWhichNothingCanGoBackLeavesTheRunAsItIs)
{
    scene.addMove("a", "new/a");
    scene.addMove("b", "new/b");
    scene.addMove("c", "new/c");
    EXPECT_FALSE(begin()->run(stopAfter(4)).isFinished);
    fs::rename(scene.path("new"), scene.path("away"));
    EXPECT_EQ(messageOf([&] { undo(); }),
              "the run run cannot be taken back: " + scene.path("new/a") +
                  " cannot go back because it is no longer at " + scene.path("new/a") +
                  ", and neither can 1 more");
    EXPECT_FALSE(fs::exists(journal("undo")));
    fs::rename(scene.path("away"), scene.path("new"));
    EXPECT_EQ(MoveRun::open(journal())->run({}).moved, 3U);
}

TEST_F(MoveRunTest, LaterUndoTakesBackWhatAnEarlierOneLeft)
{
    for (const char* name : {"old/a", "old/b", "c"})
        scene.addMove(name, std::string("new/") + name);
    scene.addMove("1", "2");
    scene.addMove("2", "3");
    const auto first = scene.tree();
    apply();
    scene.add("c");
    scene.add("1");
    {
        const auto run = MoveRun::beginUndo(journal("undo"), journal());
        EXPECT_EQ(run->run({}).moved, 2U);
        EXPECT_EQ(run->refused(), 3U);
    }
    fs::remove(scene.path("c"));
    fs::remove(scene.path("1"));
    const auto run = MoveRun::beginUndo(journal("again"), journal());
    EXPECT_EQ(failures(run->run({})), Lines());
    EXPECT_EQ(run->refused(), 0U);
    EXPECT_TRUE(scene.holds(first));
}

TEST_F(MoveRunTest, RunWhoseFilesAreAllAwayGoesOnWhenTheyAreBack)
{
    scene.addMove("disk/a", "new/a");
    scene.addMove("disk/b", "new/b");
    const auto first = scene.tree();
    const auto run = begin();
    fs::rename(scene.path("disk"), dir.path("aside"));
    const MoveRun::Report report = run->run({});
    EXPECT_FALSE(report.isFinished);
    EXPECT_EQ(failures(report),
              (Lines{"disk/a: it is no longer there", "disk/b: it is no longer there"}));
    EXPECT_EQ(report.notes,
              Lines{"The run stays open, since no file could be moved and there is none where "
                    "files were: their disk may be away"});
    fs::rename(dir.path("aside"), scene.path("disk"));
    EXPECT_EQ(run->run({}).moved, 2U);
    EXPECT_TRUE(scene.holds(scene.planned(first)));
}

TEST_F(MoveRunTest, OpenRunThatDidNothingCanBeTakenBack)
{
    scene.addMove("gone", "new/gone");
    const auto plan = scene.plan("run");
    fs::remove(scene.path("gone"));
    EXPECT_FALSE(MoveRun::begin(journal(), plan)->run({}).isFinished);
    EXPECT_TRUE(undo().isFinished);
    EXPECT_TRUE(scene.tree().empty());
}

TEST_F(MoveRunTest, TargetThatIsNotThereIsMadeOnlyInAKeptFolderThatStands)
{
    const std::string away = dir.path("away");
    const std::string base = scene.path("a").substr(0, scene.path("a").rfind('/'));
    const struct
    {
        const char* what;
        std::string target;
        Lines kept;
        std::string reason;
    } cases[] = {{"a root", away, {base, away}, "the folder " + away + " is not there"},
                 {"in a root that is away",
                  away + "/deep/target",
                  {dir.path(), base, away, away + "/deep/target"},
                  "the folder " + away + " is not there"},
                 {"in a root", base + "/deep/target", {base, base + "/deep/target"}, ""}};
    const std::string source = scene.add("a");
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        ReorganizePlan plan;
        plan.id = "run";
        plan.targets = {c.target};
        plan.keptFolders = c.kept;
        plan.files.push_back(
            {PlannedFile::Verdict::move, source, c.target + "/by/a", {}, {}, {}, {}, {}});
        EXPECT_EQ(markOf(source, plan.files[0].mark), 0);
        const MoveRun::Report report = MoveRun::begin(journal(), plan)->run({});
        EXPECT_EQ(failures(report), c.reason.empty() ? Lines() : Lines{"a: " + c.reason});
        EXPECT_EQ(fs::exists(c.target + "/by/a"), c.reason.empty());
        EXPECT_FALSE(fs::exists(away));
        fs::remove(journal());
    }
}

TEST_F(MoveRunTest, KeptFoldersAndWhatIsNotEmptyStay)
{
    scene.addMove("kept/a", "new/a");
    scene.addMove("above/kept/b", "new/b");
    scene.addMove("full/c", "new/c");
    scene.addMove("empty/deep/d", "new/d");
    scene.add("full/hidden");
    fs::create_directories(scene.path("was empty before"));
    auto plan = scene.plan("run");
    plan.keptFolders = {scene.path("kept"), scene.path("above/kept"), dir.path("base")};
    EXPECT_TRUE(MoveRun::begin(journal(), plan)->run({}).notes.empty());
    for (const char* folder : {"kept", "above/kept", "full", "was empty before"})
        EXPECT_TRUE(exists(folder)) << folder;
    EXPECT_FALSE(exists("empty"));
}

TEST_F(MoveRunTest, NothingLeavesTheTargetsAndNothingIsTakenFromBehindALinkOrFromElsewhere)
{
    dir.makeFolder("outside/deep");
    fs::create_symlink(dir.path("outside"), scene.path("link"));
    scene.addMove("a", "link/a");
    scene.addMove("link/deep/c", "c");
    scene.addMove("b", "real/b");
    const auto plan = scene.plan("other");
    EXPECT_EQ(failures(apply()),
              (Lines{"a: a link leads out of the folder " + scene.path("link"),
                     "link/deep/c: a link leads out of the folder " + scene.path("link/deep")}));
    EXPECT_TRUE(fs::exists(dir.path("outside/deep/c")));
    EXPECT_FALSE(fs::exists(dir.path("outside/a")));
    auto outward = plan;
    outward.files[0].to = dir.path("outside/a");
    EXPECT_EQ(messageOf([&] { MoveRun::begin(journal("other"), outward); }),
              "the plan other cannot be carried out: the line of " + scene.path("a") +
                  " leads out of the folders of the plan: " + dir.path("outside/a"));
    auto foreign = plan;
    foreign.files[0].from = dir.path("outside/deep/c");
    EXPECT_EQ(messageOf([&] { MoveRun::begin(journal("other"), foreign); }),
              "the plan other cannot be carried out: the line of " + dir.path("outside/deep/c") +
                  " is about no file in the folders of the plan");
    EXPECT_FALSE(fs::exists(journal("other")));
}

TEST_F(MoveRunTest, FileWithoutPermissionStaysAndTheRestGoesOn)
{
    scene.addMove("closed/a", "new/a");
    scene.addMove("open/b", "shut/b");
    scene.addMove("open/c", "new/c");
    fs::create_directories(scene.path("shut"));
    const OrdinaryUser user(dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the other user cannot reach the folder";
    fs::permissions(scene.path("closed"), fs::perms(0500));
    fs::permissions(scene.path("shut"), fs::perms(0500));
    const MoveRun::Report report = apply();
    EXPECT_EQ(failures(report),
              (Lines{"closed/a: Permission denied", "open/b: Permission denied"}));
    EXPECT_TRUE(exists("closed/a") && exists("open/b") && exists("new/c"));
}

TEST_F(MoveRunTest, FullDiskStopsTheRunWithAllFilesWholeUntilThereIsRoom)
{
    const std::string small = dir.makeFolder("small");
    MoveScene far({dir.path("base"), small});
    for (int i = 0; i < 30; ++i)
    {
        far.addMove("big" + std::to_string(i), "big" + std::to_string(i), 0, 1);
        overwrite(far.path("big" + std::to_string(i)), std::string(100'000, 'x'));
    }
    const auto story = [&]
    {
        const auto first = far.tree();
        const auto run = MoveRun::begin(journal(), far.plan("run"));
        const MoveRun::Report report = run->run({});
        EXPECT_FALSE(report.isFinished);
        EXPECT_EQ(report.failures.size(), 20U);
        EXPECT_EQ(report.failures.back().reason, "No space left on device");
        EXPECT_EQ(report.notes,
                  Lines{"The run was stopped, since one file after another met the same trouble: "
                        "No space left on device"});
        EXPECT_TRUE(far.holds(first));
        EXPECT_EQ(::mount("none", small.c_str(), "tmpfs", MS_REMOUNT, "size=8m"), 0);
        EXPECT_EQ(run->run({}).moved, 30U);
        EXPECT_TRUE(far.holds(far.planned(first)));
    };
    if (!onSmallDisk(small, story))
        GTEST_SKIP() << "only the administrator can make a small disk";
}

TEST_F(MoveRunTest, JournalIsTakenUpWithATornLineOnlyByOneAndOnlyIfItIsOne)
{
    scene.addMove("a", "new/a");
    const auto run = begin();
    EXPECT_TRUE(contains(messageOf([&] { begin(); }), "cannot be made: File exists"));
    EXPECT_TRUE(contains(messageOf([&] { MoveRun::open(journal()); }, ExitCode::busy),
                         "another process works with it"));
    const std::string whole = dir.read("run.running");
    dir.write("torn", whole + "{\"begin\":0}\n{\"do");
    EXPECT_TRUE(MoveRun::open(dir.path("torn"))->run({}).isFinished);
    EXPECT_TRUE(exists("new/a"));
    const struct
    {
        const char* what;
        std::string text;
    } cases[] = {{"empty", ""},
                 {"a note", "my songs without an end of the line"},
                 {"no start", whole.substr(0, whole.find("{\"start\""))},
                 {"garbage", whole + "garbage\n"},
                 {"other version", "{\"journal\":2" + whole.substr(12)},
                 {"no such step", whole + "{\"begin\":7}\n"},
                 {"done without begin", whole + "{\"done\":1}\n"},
                 {"done twice", whole + "{\"begin\":1}\n{\"done\":1}\n{\"done\":1}\n"},
                 {"applied too much", whole + "{\"applied\":1}\n"},
                 {"lost and not there", whole + "{\"lost\":1}\n"},
                 {"known and no file", whole + "{\"known\":1,\"mark\":[1,2,3,4]}\n"},
                 {"known as nothing", whole + "{\"known\":0}\n"},
                 {"negative", whole + "{\"begin\":-1}\n"},
                 {"way up", whole + "{\"step\":\"move\",\"file\":0,\"to\":\"/a/../b\"}\n"}};
    for (const auto& c : cases)
    {
        dir.write("bad", c.text);
        EXPECT_TRUE(
            contains(messageOf([&] { MoveRun::open(dir.path("bad")); }), "is no journal of a run"))
            << c.what;
        EXPECT_EQ(dir.read("bad"), c.text) << c.what;
    }
}

TEST_F(MoveRunTest, MovesThatTheDiskLostAreMadeAgain)
{
    scene.addMany();
    const auto first = scene.tree();
    begin()->run(stopAfter(150));
    // As after a power cut: the journal is on the disk and the latest renames are not.
    const std::string text = dir.read("run.running");
    int taken = 0;
    for (const auto& [path, content] : scene.tree())
    {
        const std::string title = " title.mp3";
        if (!path.ends_with(title) || ++taken > 20)
            continue;
        const std::string number = path.substr(path.size() - title.size() - 2, 2);
        fs::rename(
            path,
            scene.path("old/" + std::to_string(std::stoi(number) % 9) + "/" + number + ".mp3"));
    }
    EXPECT_GT(taken, 20);
    EXPECT_TRUE(MoveRun::open(journal())->run({}).isFinished);
    EXPECT_TRUE(scene.holds(scene.planned(first)));
    EXPECT_TRUE(undo().failures.empty());
    EXPECT_TRUE(scene.holds(first));
}

TEST_F(MoveRunTest, DiskThatDoesNotSeeCaseSwapsNamesAndTakesThemBack)
{
    const CaseBlindDisk disk;
    scene.addMove("a", "B");
    scene.addMove("b", "A");
    scene.addMove("song", "Song");
    scene.addMove("x", "Y");
    scene.addMove("y", "Z");
    const auto first = scene.tree();
    const MoveRun::Report report = apply();
    EXPECT_EQ(failures(report), Lines());
    EXPECT_TRUE(scene.holds(scene.planned(first)));
    EXPECT_EQ(failures(undo()), Lines());
    EXPECT_TRUE(scene.holds(first));
}
