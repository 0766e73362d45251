#include "core/load/RootPresence.h"
#include "host/core/LoadedCollection.h"
#include "platform/TemporaryNames.h"
#include "support/Contains.h"
#include "support/LeftTemporary.h"
#include "support/OrdinaryUser.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

using namespace qo::host;
namespace fs = std::filesystem;

TEST(RootPresence, MissesAFolderThatWentAwayBeforeItWasMade)
{
    const LoadedCollection here;
    here.run(
        [&]
        {
            CStringArray folders;
            folders.Add(here.dir.collPath("music"));
            folders.Add(here.dir.collPath("gone"));
            const CString database = here.dir.collPath("db");
            RootPresence all(folders, database, {});
            EXPECT_FALSE(all.areThere());
            here.dir.makeFolder("gone");
            EXPECT_FALSE(all.areThere()) << "what it was walked without is still missing";
            fs::remove(here.dir.path("gone"));
            RootPresence some(folders, database, {{folders[1], "away"}});
            EXPECT_TRUE(some.areThere());
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

TEST(Scan, SeesTheSameChangeWhateverElseItDoes)
{
    for (const bool withNewRoot : {false, true})
    {
        LoadedCollection here;
        const CString older = here.addSound("music/older.mp3");
        const CString second = here.addSound("music/z/known.mp3");
        here.load();
        auto expected = here.stored();
        const std::int64_t size = here.replaceByOlder("music/older.mp3");
        const FILETIME before =
            here.run([] { return CQoCollection::m_ownCollection.getCollInfo().scanTime; });
        if (withNewRoot)
        {
            here.addSound("fresh/9.mp3");
            here.addRoot(here.dir.collPath("fresh"));
        }
        here.load();
        EXPECT_EQ(here.sizeOf(older), size);
        const FILETIME after =
            here.run([] { return CQoCollection::m_ownCollection.getCollInfo().scanTime; });
        EXPECT_FALSE(CQoCollDbUtils::FILETIMEsAreEqual(before, after)) << withNewRoot;
    }
}

TEST(Scan, ARecordFollowsItsFileFromALinkToTheFileItself)
{
    LoadedCollection here;
    here.addSound("outside/1.mp3");
    fs::create_directory_symlink("../outside", here.dir.path("music/link"));
    here.load();
    const auto known = here.stored();
    ASSERT_EQ(known.count("music/link/1.mp3"), 1U);
    // The folder moves in, and the link leads to its new place.
    fs::rename(here.dir.path("outside"), here.dir.path("music/own"));
    fs::remove(here.dir.path("music/link"));
    fs::create_directory_symlink("own", here.dir.path("music/link"));
    here.load();
    here.expectRecords(LoadedCollection::renamed(known, "music/link/1.mp3", "music/own/1.mp3"));
}

TEST(Scan, DeepReadsEveryFileAndAnInterruptionCostsNoWriteTime)
{
    LoadedCollection here;
    for (int i = 0; i < 6; ++i)
        here.addSound("music/" + std::to_string(i) + ".mp3");
    here.load();
    LoadOptions deep;
    deep.rescan = true;
    deep.deep = true;
    EXPECT_EQ(here.run([&] { return loadCollection(*here.session, deep, *here.progress); }).changed,
              6);
    ProgressReporter* stop = nullptr;
    ProgressReporter stopping(
        [&](const ProgressEvent& event)
        { event.stage == IQoProgress::stageCheck ? stop->cancel() : void(); });
    stop = &stopping;
    here.messageOf([&] { loadCollection(*here.session, deep, stopping); }, ExitCode::interrupted);
    LoadOptions plain;
    plain.rescan = true;
    EXPECT_EQ(
        here.run([&] { return loadCollection(*here.session, plain, *here.progress); }).changed, 0);
}

TEST(Scan, RemovesTheCopyOfAWriterThatWasKilledAndTakesNoneIn)
{
    LoadedCollection here;
    here.addSound("music/a/1.mp3");
    const std::string song = here.dir.path("music/a/1.mp3");
    const std::string own = fs::path(qo::temporaryBeside(song)).filename();
    const std::string working = "music/a/" + own.substr(0, own.size() - 6) + "abcdef";
    const std::string left = "music/a/" + leftTemporaryBeside(song);
    here.addSound(working);
    here.addSound(left);
    here.load();
    EXPECT_EQ(here.stored().size(), 1U);
    EXPECT_FALSE(fs::exists(here.dir.path(left)));
    EXPECT_TRUE(fs::exists(here.dir.path(working)));
}

TEST(Scan, SaysWhatItLeavesOutFromNowOnAndDropsNothingForRulesThatItCannotRead)
{
    LoadedCollection here;
    here.addSound("music/1.mp3");
    here.addSound("music/b/2.mp3");
    here.addSound("music/.hidden/3.mp3");
    here.dir.write("music/.qoignore", "!.hidden\n");
    here.load();
    EXPECT_EQ(here.stored().size(), 3U);
    here.notes.clear();
    here.dir.write("music/.qoignore", "!.hidden\nb/\n");
    here.load();
    EXPECT_EQ(here.stored().size(), 2U);
    EXPECT_TRUE(contains(here.notes, "a file leaves the collection though it is there"))
        << here.notes;
    EXPECT_TRUE(contains(here.notes, here.dir.path("music/b/2.mp3"))) << here.notes;
    here.dir.write("music/.qoignore", std::string((1 << 20) + 1, '#'));
    here.load();
    EXPECT_EQ(here.stored().count("music/.hidden/3.mp3"), 1U) << here.notes;
    EXPECT_TRUE(contains(here.notes, here.dir.path("music/.qoignore") + " could not be read"))
        << here.notes;
}
