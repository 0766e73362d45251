#include "core/load/WalkAhead.h"

#include "host/core/LoadedCollection.h"

#include <set>
#include <thread>

using namespace qo::host;

namespace
{
/// In which stages of a load folders are listed ahead.
class Stages
{
public:
    explicit Stages(LoadedCollection& here)
    {
        here.progress = std::make_unique<ProgressReporter>(
            [this, &here](const ProgressEvent& event)
            {
                if (qo::folderAhead())
                    m_ahead.insert(event.stage);
                if (event.stage == m_cancelAt)
                    here.progress->cancel();
            });
    }
    void cancelAt(int stage) { m_cancelAt = stage; }
    bool have(int stage) const { return m_ahead.contains(stage); }
    bool areEmpty() const { return m_ahead.empty(); }

private:
    std::set<int> m_ahead;
    int m_cancelAt = -1;
};
} // namespace

TEST(WalkAhead, FoldersAreListedWhileARescanReadsTheDatabaseAndAtNoOtherTime)
{
    LoadedCollection here;
    here.addSound("music/a/1.mp3");
    here.addSound("music/b/2.mp3");
    here.load();
    here.addSound("music/c/3.mp3");
    std::filesystem::remove(here.dir.path("music/a/1.mp3"));
    const auto isGone = [&] { return here.run([] { return qo::folderAhead() == nullptr; }); };
    {
        const Stages plain(here);
        here.load(false);
        EXPECT_TRUE(plain.areEmpty());
        EXPECT_EQ(here.records().size(), 2U);
    }
    Stages stages(here);
    here.load();
    EXPECT_TRUE(stages.have(IQoProgress::stageReadDb));
    EXPECT_TRUE(isGone());
    const auto records = here.records();
    EXPECT_EQ(records.size(), 2U);
    EXPECT_TRUE(records.contains("music/c/3.mp3"));
    Stages cancelled(here);
    cancelled.cancelAt(IQoProgress::stageReadDb);
    EXPECT_THROW(here.load(), HostError);
    EXPECT_TRUE(cancelled.have(IQoProgress::stageReadDb));
    EXPECT_TRUE(isGone());
}

TEST(WalkAhead, StartsWhereTheKernelsWalkStarts)
{
    const TempDir dir;
    dir.write("root/inner/x", "x");
    CStringArray roots;
    roots.Add(dir.collPath("root/inner"));
    roots.Add(dir.collPath("missing"));
    roots.Add(dir.collPath("root"));
    roots.Add(u"no path");
    const WalkAhead ahead(roots);
    ASSERT_NE(qo::folderAhead(), nullptr);
    std::vector<qo::DirEntry> entries;
    EXPECT_NE(qo::folderAhead()->list(dir.collPath("missing"), entries), 0);
    EXPECT_EQ(qo::folderAhead()->list(dir.collPath("root"), entries), 0);
    EXPECT_EQ(qo::folderAhead()->list(dir.collPath("root/inner"), entries), 0);
    EXPECT_EQ(entries.size(), 1U);
    std::thread([] { EXPECT_EQ(qo::folderAhead(), nullptr) << "another thread's walks"; }).join();
}
