#include "core/runs/Reorganizer.h"

#include "core/base/Disk.h"
#include "core/base/SystemPath.h"
#include "host/core/LoadedCollection.h"
#include "host/core/MoveScene.h"
#include "support/Contains.h"

#include <sched.h>
#include <sys/mount.h>

#include <set>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
class ReorganizerTest : public testing::Test
{
protected:
    ReorganizerTest()
    {
        for (const char* song : {"music/a/1.mp3", "music/a/2.mp3", "music/b/3.mp3"})
            here.addSound(song);
        here.load();
        atFirst = here.records();
    }

    /// A plan that moves from the first to the second of each pair; paths below "music".
    ReorganizePlan planFor(const std::vector<std::pair<std::string, std::string>>& moves) const
    {
        ReorganizePlan plan;
        plan.id = "20260131-120000";
        plan.targets = plan.keptFolders = {here.dir.path("music")};
        for (const auto& [from, to] : moves)
        {
            PlannedFile file;
            file.verdict = PlannedFile::Verdict::move;
            file.from = here.dir.path("music/" + from);
            file.to = here.dir.path("music/" + to);
            file.recordId = atFirst.at("music/" + from);
            EXPECT_EQ(markOf(file.from, file.mark), 0);
            plan.files.push_back(file);
        }
        return plan;
    }
    /// The disk's part alone, and there the process ends.
    void moveOnTheDisk(const ReorganizePlan& plan) const
    {
        const std::string path = here.run([&] { return Reorganizer::planPath(plan.id); });
        fs::create_directories(fs::path(path).parent_path());
        const std::string journal = fs::path(path).replace_extension(".running");
        EXPECT_TRUE(MoveRun::begin(journal, plan)->run({}).failures.empty());
    }
    std::map<std::string, std::string> swapped(const std::string& a, const std::string& b) const
    {
        std::map<std::string, std::string> expected = atFirst;
        std::swap(expected.at(a), expected.at(b));
        return expected;
    }
    MoveRun::Report apply(const ReorganizePlan& plan) const
    {
        return here.run([&] { return Reorganizer(*here.session).apply(plan, *here.progress); });
    }
    void undo(const std::string& id = "") const
    {
        const auto report =
            here.run([&] { return Reorganizer(*here.session).undo(id, *here.progress); });
        EXPECT_TRUE(report.isFinished && report.failures.empty());
    }

    LoadedCollection here;
    std::map<std::string, std::string> atFirst; ///< ids by path
};
} // namespace

TEST_F(ReorganizerTest, IdsFollowFilesThatChangePlacesAndComeBack)
{
    const ReorganizePlan plan =
        planFor({{"a/1.mp3", "a/2.mp3"}, {"a/2.mp3", "b/3.mp3"}, {"b/3.mp3", "a/1.mp3"}});
    EXPECT_EQ(apply(plan).moved, 3U);
    const std::map<std::string, std::string> expected = {
        {"music/a/1.mp3", atFirst["music/b/3.mp3"]},
        {"music/a/2.mp3", atFirst["music/a/1.mp3"]},
        {"music/b/3.mp3", atFirst["music/a/2.mp3"]}};
    here.expectRecords(expected);
    EXPECT_EQ(messageOf([&] { apply(plan); }, ExitCode::refused),
              "the plan 20260131-120000 was carried out before: make a new one");
    undo();
    here.expectRecords(atFirst);
}

TEST_F(ReorganizerTest, AScanAfterACrashBeforeTheSaveFindsEveryRecordAtItsFile)
{
    moveOnTheDisk(planFor({{"a/1.mp3", "b/3.mp3"}, {"b/3.mp3", "a/1.mp3"}}));
    here.load(true);
    EXPECT_EQ(here.records(), swapped("music/a/1.mp3", "music/b/3.mp3"));
    // A second start must not change them again.
    here.load(true);
    EXPECT_EQ(here.stored(), swapped("music/a/1.mp3", "music/b/3.mp3"));
    undo();
    EXPECT_EQ(here.stored(), atFirst);
}

TEST_F(ReorganizerTest, ACrashAfterTheSaveDoesNotApplyMovesTwice)
{
    const ReorganizePlan plan = planFor({{"a/1.mp3", "a/2.mp3"}, {"a/2.mp3", "a/1.mp3"}});
    moveOnTheDisk(plan);
    const std::string path = here.run([&] { return Reorganizer::planPath(plan.id); });
    const fs::path journal = fs::path(path).replace_extension(".running");
    const fs::path copy = here.dir.path("copy");
    fs::copy_file(journal, copy);
    here.load();
    fs::copy_file(copy, journal, fs::copy_options::overwrite_existing);
    here.load();
    EXPECT_EQ(here.records(), swapped("music/a/1.mp3", "music/a/2.mp3"));
}

TEST_F(ReorganizerTest, NothingMovesWhileARootFolderIsAway)
{
    const ReorganizePlan plan = planFor({{"a/1.mp3", "c/1.mp3"}});
    fs::rename(here.dir.path("music"), here.dir.path("away"));
    messageOf([&] { apply(plan); }, ExitCode::away);
    EXPECT_FALSE(fs::exists(here.dir.path("music")));
    fs::rename(here.dir.path("away"), here.dir.path("music"));
    apply(plan);
    fs::rename(here.dir.path("music"), here.dir.path("away"));
    messageOf([&] { undo(); }, ExitCode::away);
    fs::rename(here.dir.path("away"), here.dir.path("music"));
    undo();
    EXPECT_EQ(here.stored(), atFirst);
}

TEST_F(ReorganizerTest, UndoTakesBackWhatLastLedAwayBeItAnUndoneUndo)
{
    const ReorganizePlan plan = planFor({{"a/1.mp3", "c/1.mp3"}});
    apply(plan);
    undo();
    const std::string first = here.run([] { return Reorganizer::runs().back().id; });
    messageOf([&] { undo(); }, ExitCode::notFound);
    undo(first);
    EXPECT_TRUE(fs::exists(here.dir.path("music/c/1.mp3")));
    undo();
    EXPECT_EQ(here.stored(), atFirst);
}

TEST_F(ReorganizerTest, APlanLearnsTheIdsOfRecordsAndOfFilesThatCameToItsPlaces)
{
    ReorganizePlan plan = planFor({{"a/1.mp3", "c/1.mp3"}, {"a/2.mp3", "c/2.mp3"}});
    for (PlannedFile& file : plan.files)
        file.recordId = "of another time";
    here.addSound("music/C/2.MP3");
    here.load();
    const auto expected = here.records();
    const auto report = apply(plan);
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].reason,
              "the collection takes " + here.dir.path("music/C/2.MP3") + " for the same name");
    EXPECT_EQ(here.stored(), here.renamed(expected, "music/a/1.mp3", "music/c/1.mp3"));
}

TEST_F(ReorganizerTest, ADamagedJournalLocksNobodyOutTakesNoRecordAndCanBeSetAside)
{
    moveOnTheDisk(planFor({{"a/1.mp3", "a/4.mp3"}}));
    const std::string damaged = "20260101-000000";
    here.dir.write("data/Qorganizer/reorganize/" + damaged + ".running", "{}\n");
    here.load();
    EXPECT_TRUE(here.records().contains("music/a/4.mp3"));
    EXPECT_TRUE(contains(here.notes, damaged + ".running"));
    ReorganizePlan plan = planFor({{"a/2.mp3", "a/5.mp3"}});
    plan.id = "20260201-000000";
    EXPECT_TRUE(contains(messageOf([&] { apply(plan); }, ExitCode::refused),
                         "\"qo reorg forget " + damaged + "\" sets it aside"));
    const std::string moved = here.dir.path("music/b/3.mp3");
    fs::rename(moved, here.dir.path("3.mp3"));
    EXPECT_TRUE(contains(messageOf([&] { here.load(); }, ExitCode::refused), "the run " + damaged));
    fs::rename(here.dir.path("3.mp3"), moved);
    here.run([&] { Reorganizer::forget(damaged); });
    here.load();
    EXPECT_EQ(apply(plan).moved, 1U);
}

TEST_F(ReorganizerTest, FilesWhoseNamesDifferInCaseAloneKeepTheirIdsWhereverARunStops)
{
    using Moves = std::vector<std::pair<std::string, std::string>>;
    const Moves cases[] = {{{"a/1.mp3", "a/2.MP3"}, {"a/2.mp3", "t/Z.mp3"}},
                           {{"a/1.mp3", "a/2.MP3"}, {"a/2.mp3", "a/1.MP3"}}};
    int number = 0;
    for (const Moves& moves : cases)
    {
        bool isDone = false;
        for (int stop = 1; !isDone; ++stop)
        {
            SCOPED_TRACE(stop);
            ReorganizePlan plan = planFor(moves);
            plan.id = "20260131-" + std::to_string(120000 + ++number);
            const std::string path = here.run([&] { return Reorganizer::planPath(plan.id); });
            fs::create_directories(fs::path(path).parent_path());
            isDone = MoveRun::begin(fs::path(path).replace_extension(".running"), plan)
                         ->run(stopAfter(stop))
                         .isFinished;
            here.load(true);
            std::set<std::string> ids;
            for (const auto& [file, id] : here.stored())
            {
                ids.insert(id);
                EXPECT_TRUE(fs::exists(here.dir.path(file))) << file;
            }
            EXPECT_EQ(ids.size(), atFirst.size());
            undo(plan.id);
            here.expectRecords(atFirst);
        }
    }
}

TEST_F(ReorganizerTest, PlansAndJournalsCannotWidenWhatARunMayTouch)
{
    here.addSound("outside/4.mp3");
    fs::create_directory_symlink(here.dir.path("outside"), here.dir.path("music/link"));
    ReorganizePlan plan = planFor({{"a/1.mp3", "c/1.mp3"}});
    ReorganizePlan inward = plan;
    inward.files[0].from = here.dir.path("music/link/4.mp3");
    ASSERT_EQ(markOf(inward.files[0].from, inward.files[0].mark), 0);
    inward.keptFolders.push_back(here.dir.path("music/link"));
    ReorganizePlan outward = plan;
    outward.id = "20260131-120001";
    outward.files[0].to = here.dir.path("music/link/1.mp3");
    outward.targets.push_back(here.dir.path("music/link"));
    EXPECT_EQ(apply(inward).moved, 0U);
    messageOf([&] { apply(outward); });
    EXPECT_TRUE(fs::exists(here.dir.path("outside/4.mp3")));
    EXPECT_FALSE(fs::exists(here.dir.path("outside/1.mp3")));

    // A folder that became a link since, and a journal that speaks of places elsewhere.
    plan.id = "20260131-120002";
    EXPECT_EQ(apply(plan).moved, 1U);
    fs::remove(here.dir.path("music/link"));
    fs::rename(here.dir.path("music/a"), here.dir.path("elsewhere"));
    fs::create_directory_symlink(here.dir.path("elsewhere"), here.dir.path("music/a"));
    const auto report =
        here.run([&] { return Reorganizer(*here.session).undo(plan.id, *here.progress); });
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_TRUE(contains(report.failures[0].reason, "a link leads out of the folder"));
    const std::string journal = "data/Qorganizer/reorganize/" + plan.id + ".journal";
    std::string text = here.dir.read(journal);
    const std::string place = here.dir.path("music/a/1.mp3");
    text.replace(text.find("\"" + place), place.size() + 1, "\"" + here.dir.path("outside/1.mp3"));
    here.dir.write(journal, text);
    EXPECT_TRUE(contains(messageOf([&] { undo(plan.id); }), "is in no folder that it may use"));
}

TEST_F(ReorganizerTest, AFinishedRunThatOnlyTheLoadHasClosedCountsAsDone)
{
    const ReorganizePlan plan = planFor({{"a/1.mp3", "c/1.mp3"}});
    moveOnTheDisk(plan);
    EXPECT_TRUE(here.run([&] { return Reorganizer::canGoOn(plan.id); }));
    here.load(false);
    const auto report =
        here.run([&] { return Reorganizer(*here.session).goOn(plan.id, *here.progress); });
    EXPECT_TRUE(report.isFinished);
    EXPECT_EQ(report.moved, 1U);
}

TEST(ReorganizerDisks, OneThatRanEmptyIsThereAndOneThatIsAwayGetsNothing)
{
    // Ahead of the kernel's thread, which shall see the disks as well.
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        GTEST_SKIP() << "only the administrator can mount";
    const LoadedCollection here;
    const std::string disk = here.dir.makeFolder("disk");
    const std::string inner = here.dir.makeFolder("music/inner");
    for (const std::string& folder : {disk, inner})
        ASSERT_EQ(::mount("none", folder.c_str(), "tmpfs", 0, "size=4m"), 0);
    here.addRoot(here.dir.collPath("disk"));
    here.addSound("disk/1.mp3");
    here.addSound("music/2.mp3");
    here.load();
    const auto before = here.stored();
    const auto moved = [&](const char* id, const std::string& from, const std::string& to)
    {
        ReorganizePlan plan;
        plan.id = id;
        plan.targets = plan.keptFolders = {here.dir.path("music"), disk};
        PlannedFile file;
        file.verdict = PlannedFile::Verdict::move;
        file.from = here.dir.path(from);
        file.to = here.dir.path(to);
        qo::NameInfo info;
        EXPECT_EQ(disk::look(parentOf(file.to), info), 0);
        file.targetDevice = info.device;
        EXPECT_EQ(markOf(file.from, file.mark), 0);
        plan.files.push_back(file);
        return plan;
    };
    const auto apply = [&](const ReorganizePlan& plan)
    { return here.run([&] { return Reorganizer(*here.session).apply(plan, *here.progress); }); };
    EXPECT_EQ(apply(moved("20260131-120000", "disk/1.mp3", "music/1.mp3")).moved, 1U);
    EXPECT_TRUE(fs::is_empty(disk));
    EXPECT_EQ(here.run([&] { return Reorganizer(*here.session).undo("", *here.progress); }).moved,
              1U);
    EXPECT_EQ(here.stored(), before);

    // One that no scan has seen holds up its own files, one that the last scan saw the whole run.
    const std::string late = here.dir.makeFolder("music/late");
    ASSERT_EQ(::mount("none", late.c_str(), "tmpfs", 0, "size=4m"), 0);
    const ReorganizePlan plan = moved("20260131-120001", "music/2.mp3", "music/late/2.mp3");
    ASSERT_EQ(::umount(late.c_str()), 0);
    const auto report = apply(plan);
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].reason,
              "the disk that was mounted in " + late + " or above is away");
    EXPECT_EQ(apply(moved("20260131-120002", "music/2.mp3", "music/inner/2.mp3")).moved, 1U);
    EXPECT_EQ(apply(moved("20260131-120003", "music/inner/2.mp3", "music/2.mp3")).moved, 1U);
    ASSERT_EQ(::umount(inner.c_str()), 0);
    const auto undo = [&]
    { here.run([&] { return Reorganizer(*here.session).undo("", *here.progress); }); };
    EXPECT_EQ(messageOf(undo, ExitCode::away),
              "the disk of the folder " + inner +
                  " is away: no disk is mounted there, as one was at the last scan" +
                  sentenceBreak + "nothing was moved");
    EXPECT_TRUE(fs::is_empty(inner) && fs::is_empty(late));
    ::umount(disk.c_str());
}
