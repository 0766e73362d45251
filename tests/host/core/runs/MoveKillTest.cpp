#include "core/runs/JournalFile.h"
#include "host/core/MoveScene.h"
#include "support/OtherDisk.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
/// Where a process is killed: before and after each write to its journal, or each time it asks
/// whether it shall stop, which it does while it copies.
enum class Point
{
    write,
    question
};

/// Does the work in a process of its own that is killed at the given point; false when it came to
/// its end before that.
template <class Work>
bool killAt(Point point, int count, const Work& work)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        int left = count;
        const auto pass = [&]
        {
            if (left-- == 0)
                ::raise(SIGKILL);
        };
        MoveRun::Events events;
        if (point == Point::write)
            JournalFile::watcher() = pass;
        else
            events.stop = [&]
            {
                pass();
                return false;
            };
        work(events);
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

/// One of several equal shares of all the points at which a run is killed, so that they are tested
/// side by side.
class MoveKillTest : public testing::TestWithParam<int>
{
protected:
    static constexpr int shares = 4;
    /// Only the points before each write, when the disk has what the journal does not say.
    static constexpr int lostLines = 2;

    void makeScene(bool isAcross)
    {
        if (other.path.empty())
            GTEST_SKIP() << "there is only one file system";
        // Where waiting for the disk costs nothing, unless it takes two.
        std::vector<std::string> bases = {other.path + "/base"};
        if (isAcross)
            bases.push_back(makeSecondDisk());
        scene = std::make_unique<MoveScene>(bases);
        scene->addMany();
        first = scene->tree();
        last = scene->planned(first);
    }
    /// In memory where that is allowed, since each copy waits for its disk; else fewer points.
    std::string makeSecondDisk()
    {
        const std::string folder = dir.makeFolder("disk");
        isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                    ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    ::mount("none", folder.c_str(), "tmpfs", 0, "size=16m,mode=755") == 0;
        stride = isMounted ? 1 : 10;
        return folder + "/base";
    }
    void TearDown() override
    {
        if (isMounted)
            ::umount2(dir.path("disk").c_str(), MNT_DETACH);
    }
    std::string journal(const std::string& id) const { return other.path + "/" + id + ".running"; }
    void forget() const
    {
        for (const char* id : {"run", "undo"})
        {
            fs::remove(journal(id));
            fs::remove(journal(id) + ".new");
        }
    }
    bool hasRun() const { return fs::exists(journal("run")); }
    void begin(const MoveRun::Events& events) const
    {
        MoveRun::begin(journal("run"), scene->plan("run"))->run(events);
    }
    void resume(const std::string& id, const MoveRun::Events& events = {}) const
    {
        const auto run = MoveRun::open(journal(id));
        EXPECT_TRUE(run->run(events).isFinished);
    }
    void undo(const MoveRun::Events& events = {}) const
    {
        const auto run = MoveRun::beginUndo(journal("undo"), journal("run"));
        const MoveRun::Report report = run->run(events);
        EXPECT_TRUE(report.isFinished);
        EXPECT_TRUE(report.failures.empty()) << report.failures.front().reason;
        EXPECT_TRUE(report.notes.empty()) << report.notes.front();
    }
    /// Kills a run at each of its points that belong to this share.
    template <class Check>
    void killEverywhere(bool isAcross, Point point, int step, Check check)
    {
        makeScene(isAcross);
        if (!scene)
            return;
        step *= stride;
        for (int count = GetParam() * step;; count += shares * step)
        {
            SCOPED_TRACE(count);
            const bool wasKilled =
                killAt(point, count, [this](const auto& events) { begin(events); });
            if (hasRun())
                check();
            ASSERT_TRUE(scene->holds(first));
            ASSERT_FALSE(HasFailure());
            forget();
            if (!wasKilled)
            {
                EXPECT_GT(count, 200);
                return;
            }
        }
    }
    void resumeAndUndo()
    {
        resume("run");
        EXPECT_TRUE(scene->holds(last));
        undo();
    }

    TempDir dir;
    OtherDisk other;
    bool isMounted = false;
    int stride = 1;
    std::unique_ptr<MoveScene> scene;
    MoveScene::Tree first;
    MoveScene::Tree last;
};

/// A single copy, killed between the moment when it is in its place and that when its source goes.
class MoveCopyKillTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (other.path.empty())
            GTEST_SKIP() << "there is only one file system";
        scene = std::make_unique<MoveScene>(
            std::vector<std::string>{dir.path("base"), other.path + "/base"});
        scene->addMove("song", "song", 0, 1);
        fs::create_hard_link(from(), dir.path("keep"));
        constexpr int doneIsWritten = 6;
        killAt(Point::write,
               doneIsWritten,
               [this](const auto& events)
               { MoveRun::begin(journal(), scene->plan("run"))->run(events); });
        ASSERT_FALSE(fs::exists(from()));
        ASSERT_TRUE(fs::exists(to()));
        fs::rename(dir.path("keep"), from());
    }
    std::string journal() const { return dir.path("run.running"); }
    std::string from() const { return scene->path("song"); }
    std::string to() const { return scene->path("song", 1); }

    TempDir dir;
    OtherDisk other;
    std::unique_ptr<MoveScene> scene;
};

INSTANTIATE_TEST_SUITE_P(Share, MoveKillTest, testing::Range(0, 4));
} // namespace

TEST_P(MoveKillTest, RunThatGoesOnEndsInThePlannedTree)
{
    killEverywhere(false, Point::write, 1, [this] { resumeAndUndo(); });
}

TEST_P(MoveKillTest, RunThatIsTakenBackEndsInTheFirstTree)
{
    killEverywhere(false, Point::write, lostLines, [this] { undo(); });
}

TEST_P(MoveKillTest, RunAcrossTwoDisksThatGoesOnEndsInThePlannedTree)
{
    killEverywhere(true, Point::write, 1, [this] { resumeAndUndo(); });
}

TEST_P(MoveKillTest, RunAcrossTwoDisksThatIsTakenBackEndsInTheFirstTree)
{
    killEverywhere(true, Point::write, lostLines, [this] { undo(); });
}

TEST_P(MoveKillTest, CopyThatIsKilledHalfWayLeavesNothing)
{
    killEverywhere(true,
                   Point::question,
                   3,
                   [this, isOdd = false]() mutable
                   {
                       isOdd = !isOdd;
                       isOdd ? resumeAndUndo() : undo();
                   });
}

TEST_P(MoveKillTest, ResumeAndUndoMayBeKilledToo)
{
    makeScene(true);
    if (!scene)
        return;
    for (int count = 5 + GetParam() * 10; count < 500; count += shares * 10)
    {
        SCOPED_TRACE(count);
        killAt(Point::write, count, [this](const auto& events) { begin(events); });
        ASSERT_TRUE(hasRun());
        killAt(Point::write, 40, [this](const auto& events) { resume("run", events); });
        killAt(Point::write, 90, [this](const auto& events) { undo(events); });
        if (fs::exists(journal("undo")))
            resume("undo");
        else
            undo();
        ASSERT_TRUE(scene->holds(first));
        forget();
    }
}

TEST_F(MoveCopyKillTest, SourceOfACopyInPlaceGoes)
{
    EXPECT_EQ(MoveRun::open(journal())->run({}).moved, 1U);
    EXPECT_FALSE(fs::exists(from()));
    EXPECT_TRUE(fs::exists(to()));
}

TEST_F(MoveCopyKillTest, SourceThatChangedAfterItsCopyStaysAndTheCopyGoes)
{
    std::ofstream(from()) << "edited since";
    const MoveRun::Report report = MoveRun::open(journal())->run({});
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].reason, "it has changed since");
    EXPECT_TRUE(fs::exists(from()));
    EXPECT_FALSE(fs::exists(to()));
}

TEST_F(MoveCopyKillTest, CopyThatChangedStaysAsWellAsItsSource)
{
    std::ofstream(to()) << "edited since";
    const MoveRun::Report report = MoveRun::open(journal())->run({});
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].reason, "there is already a file of that name");
    EXPECT_TRUE(fs::exists(from()));
    EXPECT_TRUE(fs::exists(to()));
}
