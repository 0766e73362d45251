#include "core/runs/Reorganizer.h"

#include "host/core/LoadedCollection.h"
#include "support/Contains.h"

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
    void moveWithoutTelling(const ReorganizePlan& plan) const
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
    moveWithoutTelling(planFor({{"a/1.mp3", "b/3.mp3"}, {"b/3.mp3", "a/1.mp3"}}));
    here.load(true);
    EXPECT_EQ(here.records(), swapped("music/a/1.mp3", "music/b/3.mp3"));
    // A second start must not change them again.
    here.load(true);
    EXPECT_EQ(here.stored(), swapped("music/a/1.mp3", "music/b/3.mp3"));
    undo();
    EXPECT_EQ(here.stored(), atFirst);
}

TEST_F(ReorganizerTest, ACrashBehindTheSaveDoesNotTellTheCollectionTwice)
{
    const ReorganizePlan plan = planFor({{"a/1.mp3", "a/2.mp3"}, {"a/2.mp3", "a/1.mp3"}});
    moveWithoutTelling(plan);
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

TEST_F(ReorganizerTest, ADamagedJournalLocksNobodyOut)
{
    moveWithoutTelling(planFor({{"a/1.mp3", "a/4.mp3"}}));
    here.dir.write("data/Qorganizer/reorganize/20260101-000000.running", "{}\n");
    here.load();
    EXPECT_TRUE(here.records().contains("music/a/4.mp3"));
    EXPECT_TRUE(contains(here.notes, "20260101-000000.running"));
}
