#include "core/runs/MoveRun.h"
#include "host/core/MoveScene.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
/// Runs whose disk or journal is changed while no process has them.
class MoveRecoveryTest : public testing::Test
{
protected:
    std::string journal() const { return dir.path("run.running"); }
    void begin() const { MoveRun::begin(journal(), scene.plan("run")); }
    void append(const std::string& lines) const
    {
        std::ofstream(journal(), std::ios::app) << lines;
    }
    bool exists(const std::string& relative) const { return fs::exists(scene.path(relative)); }
    /// As if each disk had had another number when the journal was written.
    void renumberDisks() const
    {
        FileMark mark;
        EXPECT_EQ(markOf(dir.path(), mark), 0);
        const std::string number = "\"mark\":[" + std::to_string(mark.device) + ",";
        std::string text = dir.read("run.running");
        for (std::size_t at = 0; (at = text.find(number, at)) != std::string::npos; ++at)
            text.replace(at, number.size(), "\"mark\":[" + std::to_string(mark.device + 7) + ",");
        dir.write("run.running", text);
    }

    TempDir dir;
    MoveScene scene{{dir.path("base")}};
};

using Lines = std::vector<std::string>;
} // namespace

TEST_F(MoveRecoveryTest, DiskWithAnotherNumberIsTheSameAsLongAsTheFileIs)
{
    for (const char* name : {"same", "edited", "replaced", "song"})
        scene.addMove(name, name == std::string("song") ? "Song" : std::string("new/") + name);
    begin();
    renumberDisks();
    std::ofstream(scene.path("edited")) << "something else";
    fs::rename(scene.path("replaced"), scene.path("aside"));
    fs::copy_file(scene.path("aside"), scene.path("replaced"));
    fs::last_write_time(scene.path("replaced"), fs::last_write_time(scene.path("aside")));
    for (int start = 0; start < 2; ++start)
    {
        const MoveRun::Report report = MoveRun::open(journal())->run({});
        ASSERT_EQ(report.failures.size(), 2U);
        EXPECT_EQ(report.failures[0].from, scene.path("edited"));
        EXPECT_EQ(report.failures[1].from, scene.path("replaced"));
        EXPECT_TRUE(exists("new/same") && exists("Song"));
    }
}

TEST_F(MoveRecoveryTest, OldNameGoesOnlyIfItsMoveHadBegunAndTheNewOneWasFreeThen)
{
    const struct
    {
        const char* what;
        const char* line;
        bool hasMoved;
    } cases[] = {{"waiting", "", false},
                 {"begun", "{\"begin\":0,\"free\":true}\n", true},
                 {"linked-before", "{\"begin\":0}\n", false}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        MoveScene links({dir.path(c.what)});
        links.addMove("a", "b");
        MoveRun::begin(journal(), links.plan("run"));
        fs::create_hard_link(links.path("a"), links.path("b"));
        append(c.line);
        const auto run = MoveRun::open(journal());
        EXPECT_EQ(run->moved(), c.hasMoved ? 1U : 0U);
        EXPECT_EQ(run->run({}).failures.size(), c.hasMoved ? 0U : 1U);
        EXPECT_NE(fs::exists(links.path("a")), c.hasMoved);
        EXPECT_TRUE(fs::exists(links.path("b")));
        fs::remove(journal());
    }
}

TEST_F(MoveRecoveryTest, RunOverNamesOfOneFileThatIsCutShortRemovesNone)
{
    // A chain and a ring. Stopped after each step, with what a power cut leaves of the journal: at
    // least that the steps begin.
    for (const char* last : {"Z", "X"})
    {
        for (int cut = 0; cut < 40; ++cut)
        {
            SCOPED_TRACE(last + std::to_string(cut));
            MoveScene links({dir.path(last + std::to_string(cut))});
            links.addMove("X", "Y");
            links.addMove("Y", last);
            fs::remove(links.path("Y"));
            fs::create_hard_link(links.path("X"), links.path("Y"));
            MoveRun::begin(journal(), links.plan("run"))->run(stopAfter(1 + cut / 8));
            std::string text = dir.read("run.running");
            std::size_t end = text.rfind("begin");
            for (int line = 0; line <= cut % 8; ++line)
                end = std::min(text.find('\n', end), text.size() - 1) + 1;
            dir.write("run.running", text.substr(0, cut % 8 == 7 ? text.size() : end));
            const auto count = [&] {
                return std::distance(fs::directory_iterator(links.path("")),
                                     fs::directory_iterator());
            };
            const auto run = MoveRun::open(journal());
            EXPECT_EQ(count(), 2);
            EXPECT_EQ(run->run({}).moved, 2U);
            EXPECT_EQ(count(), 2);
            EXPECT_TRUE(fs::exists(links.path("Y")) && fs::exists(links.path(last)));
            fs::remove(journal());
        }
    }
}

TEST_F(MoveRecoveryTest, StepsOfOneFileAreFoundWhenAPowerCutTookTheirEnds)
{
    scene.addMove("song.mp3", "Song.mp3");
    scene.addMove("a", "b");
    scene.addMove("b", "a");
    const auto first = scene.tree();
    const auto done = scene.planned(first);
    EXPECT_TRUE(MoveRun::begin(journal(), scene.plan("run"))->run({}).isFinished);
    // To the last line that the disk had for certain: that the steps begin.
    std::string text = dir.read("run.running");
    text.resize(text.find("{\"done\""));
    dir.write("run.running", text);
    auto run = MoveRun::open(journal());
    EXPECT_EQ(run->moved(), 3U);
    EXPECT_TRUE(run->run({}).failures.empty());
    run.reset();
    EXPECT_TRUE(scene.holds(done));
    EXPECT_TRUE(MoveRun::beginUndo(journal() + ".undo", journal())->run({}).failures.empty());
    EXPECT_TRUE(scene.holds(first));
}

TEST_F(MoveRecoveryTest, HalfACopyGoesAlsoWhenItsRunIsOver)
{
    scene.addMove("a", "b");
    begin();
    append("{\"begin\":0}\n{\"lost\":0}\n{\"finished\":true}\n");
    scene.add(".qo-run-copy-0/copy");
    scene.add(".qo-run-copy-1/copy");
    EXPECT_TRUE(MoveRun::open(journal())->isFinished());
    EXPECT_FALSE(exists(".qo-run-copy-0"));
    EXPECT_TRUE(exists(".qo-run-copy-1/copy")) << "no step of the run";
}

TEST_F(MoveRecoveryTest, FileEditedUnderItsTemporaryNameGoesHomeAsItIs)
{
    scene.addMove("song.mp3", "Song.mp3");
    const auto edit = [this] { std::ofstream(scene.path(".qo-run-0.mp3")) << "edited"; };
    const MoveRun::Report report =
        MoveRun::begin(journal(), scene.plan("run"))->run(atThirdQuestion(edit));
    EXPECT_TRUE(report.isFinished);
    EXPECT_EQ(report.notes, Lines());
    EXPECT_EQ(dir.read("base/song.mp3"), "edited");
}

TEST_F(MoveRecoveryTest, RunStaysOpenWhileAFileHasATemporaryName)
{
    scene.addMove("in/song.mp3", "in/Song.mp3");
    const OrdinaryUser user(dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the other user cannot reach the folder";
    const MoveRun::Events events =
        atThirdQuestion([this] { fs::permissions(scene.path("in"), fs::perms(0500)); });
    const auto run = MoveRun::begin(journal(), scene.plan("run"));
    for (int round = 0; round < 2; ++round)
    {
        const MoveRun::Report report = run->run(events);
        EXPECT_FALSE(report.isFinished);
        EXPECT_EQ(report.notes,
                  Lines{"The run stays open, since " + scene.path("in/song.mp3") + " is now " +
                        scene.path("in/.qo-run-0.mp3") + " and could not be given back its name"});
    }
    fs::permissions(scene.path("in"), fs::perms(0755));
    EXPECT_TRUE(run->run({}).isFinished);
    EXPECT_TRUE(exists("in/song.mp3"));
}
