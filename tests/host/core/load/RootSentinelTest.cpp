#include "core/load/RootSentinel.h"

#include "host/core/LoadedCollection.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"

#include <sys/stat.h>

using namespace qo::host;
namespace fs = std::filesystem;

TEST(RootSentinel, MissesAFolderThatWentAwayBeforeItWasMade)
{
    const LoadedCollection here;
    here.run(
        [&]
        {
            CStringArray folders;
            folders.Add(here.dir.collPath("music"));
            folders.Add(here.dir.collPath("gone"));
            const CString database = here.dir.collPath("db");
            RootSentinel all(*here.progress, folders, database, {});
            ASSERT_EQ(all.look().size(), 1U);
            EXPECT_EQ(all.look()[0].folder, folders[1]);
            here.dir.makeFolder("gone");
            EXPECT_FALSE(all.look().empty()) << "what it was walked without is still missing";
            fs::remove(here.dir.path("gone"));
            RootSentinel some(*here.progress, folders, database, {{folders[1], "away"}});
            EXPECT_TRUE(some.look().empty());
        });
}

TEST(Scan, RecordsOfFoldersThatCannotBeReadStay)
{
    LoadedCollection here;
    here.addSound("music/closed/in/1.mp3");
    here.addSound("music/unlistable/2.mp3");
    here.addSound("music/unlistable/in/3.mp3");
    here.addSound("music/open/4.mp3");
    here.addSound("music/open/5.mp3");
    here.load();
    auto expected = here.stored();
    here.addSound("fresh/9.mp3");
    const OrdinaryUser user(here.dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the folder cannot be given away";
    ASSERT_EQ(::chmod(here.dir.path("music/closed").c_str(), 0), 0);
    ASSERT_EQ(::chmod(here.dir.path("music/unlistable").c_str(), 0311), 0);
    for (const bool inSlices : {false, true})
    {
        const char* const gone = inSlices ? "music/open/4.mp3" : "music/open/5.mp3";
        fs::remove(here.dir.path(gone));
        expected.erase(gone);
        if (inSlices)
            here.addRoot(here.dir.collPath("fresh"));
        here.notes.clear();
        here.load();
        auto stored = here.stored();
        EXPECT_EQ(stored.erase("fresh/9.mp3"), inSlices ? 1U : 0U);
        EXPECT_EQ(stored, expected) << inSlices;
        EXPECT_EQ(here.stored(), here.records());
        for (const char* const folder : {"music/closed", "music/unlistable"})
            EXPECT_TRUE(contains(here.notes,
                                 "the folder " + here.dir.path(folder) +
                                     " could not be read: Permission denied"));
    }
    ::chmod(here.dir.path("music/closed").c_str(), 0755);
    ::chmod(here.dir.path("music/unlistable").c_str(), 0755);
}

TEST(Scan, InSlicesLeavesFoldersAloneAndReadsAFileThatGaveWayToAnOlderOne)
{
    const LoadedCollection here;
    here.addSound("music/a/1.mp3");
    const CString path = here.addSound("music/2.mp3");
    here.load();
    fs::remove(here.dir.path("music/a/1.mp3"));
    const std::int64_t size = here.replaceByOlder("music/2.mp3");
    // With a root folder that is new the scan reads in slices.
    here.addSound("fresh/9.mp3");
    here.addRoot(here.dir.collPath("fresh"));
    here.load();
    EXPECT_EQ(here.stored().size(), 2U);
    EXPECT_TRUE(fs::exists(here.dir.path("music/a")));
    EXPECT_EQ(here.sizeOf(path), size);
}
