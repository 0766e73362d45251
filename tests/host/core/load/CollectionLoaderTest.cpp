#include "core/load/CollectionLoader.h"

#include "core/load/UnfinishedScan.h"
#include "host/core/LoadedCollection.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Tags.h>

#include <sys/stat.h>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
void tag(const CString& file)
{
    CMusicTagEx values;
    values.setArtist(u"Ann", CTagAttribValue::SV_Edited, true);
    values.setAlbum(u"Red", CTagAttribValue::SV_Edited, true);
    ASSERT_TRUE(values.writeTag(file));
}

int placedPictures(const LoadedCollection& here)
{
    return here.run([] { return CLTManager::getPictures().GetSize(); });
}

FILETIME lastSave(const LoadedCollection& here)
{
    return here.run([] { return CQoCollection::m_ownCollection.getCollInfo().modifiedTime; });
}

UnfinishedScan markOf(const LoadedCollection& here)
{
    return here.run([] { return UnfinishedScan(Session::folder()); });
}
} // namespace

TEST(CollectionLoader, ALoadReadsNewRootsAloneAndAnalysesTheirNames)
{
    LoadedCollection here;
    here.addSound("music/1.mp3");
    here.load(false);
    EXPECT_EQ(here.stored().size(), 1U);
    here.addSound("music/2.mp3");
    constexpr int tracks = 8;
    for (int i = 0; i < tracks; ++i)
        tag(here.addSound("new/a/" + std::to_string(i) + ".mp3"));
    here.dir.write("new/a/cover.jpg", "a picture");
    here.addRoot(here.dir.collPath("new"));
    here.load(false);
    auto expected = here.stored();
    EXPECT_EQ(expected.count("music/2.mp3"), 0U);
    EXPECT_EQ(expected.size(), 1U + tracks + 1U);
    EXPECT_EQ(placedPictures(here), 1);
    here.expectRecords(expected);

    // And the files of a root leave without a look at the others, which may be away.
    fs::rename(here.dir.path("music"), here.dir.path("away"));
    here.run(
        [&]
        {
            RootFolders roots;
            roots.remove(here.dir.collPath("new"));
            roots.store();
        });
    here.load(false);
    here.expectRecords({*expected.find("music/1.mp3")});
    EXPECT_EQ(placedPictures(here), 0);
    fs::rename(here.dir.path("away"), here.dir.path("music"));
    here.load();
    EXPECT_EQ(here.stored().count("music/2.mp3"), 1U);
}

TEST(CollectionLoader, ARootAboveOrBelowAnotherKeepsTheRecordsOfBoth)
{
    LoadedCollection here;
    here.addSound("music/in/1.mp3");
    here.addSound("music/2.mp3");
    here.load(false);
    const auto first = here.stored();
    const auto become = [&](const std::string& from, const std::string& to)
    {
        here.run(
            [&]
            {
                RootFolders roots;
                roots.remove(here.dir.collPath(from));
                roots.add(here.dir.collPath(to), CQoPathInfo::audioIsMusic);
                roots.store();
            });
        here.load(false);
    };
    become("music", "music/in");
    here.expectRecords({*first.find("music/in/1.mp3")});
    become("music/in", "music");
    EXPECT_EQ(here.stored().at("music/in/1.mp3"), first.at("music/in/1.mp3"));
    EXPECT_EQ(here.stored().size(), 2U);
    // And so does one whose row was lost with a damaged page.
    const auto all = here.stored();
    for (const char16_t* const loss :
         {u"DELETE FROM COLL_T", u"UPDATE COLL_T SET CT_ROOT_DIRS = NULL"})
    {
        for (const bool isScan : {true, false})
        {
            here.run(
                [loss]
                {
                    CSQLiteDB db(Session::databasePath());
                    db.Open();
                    db.Execute(loss);
                });
            here.load(isScan);
            here.expectRecords(all);
        }
    }
}

TEST(CollectionLoader, AScanWhoseNamesWereSavedIsOverWhateverItsMarkSays)
{
    LoadedCollection here;
    here.addSound("music/1.mp3");
    here.load();
    CStringArray roots;
    roots.Add(here.dir.collPath("music"));
    const FILETIME saved = lastSave(here);
    FILETIME before = saved;
    --before.dwLowDateTime;
    const auto begin = [&](const FILETIME& time)
    {
        here.run(
            [&]
            {
                const UnfinishedScan scan(Session::folder());
                scan.begin(roots);
                scan.beginNames(time);
            });
    };

    begin(before);
    EXPECT_TRUE(markOf(here).wasThere());
    here.load(false);
    EXPECT_FALSE(markOf(here).wasThere());

    begin(saved);
    here.load(false);
    EXPECT_TRUE(markOf(here).wasThere()) << "the names are still to be analysed";
    // What is saved from now on says nothing about the names.
    here.run([&] { UnfinishedScan(Session::folder()).settle(before); });
    EXPECT_TRUE(markOf(here).wasThere());
    here.load();
    EXPECT_FALSE(markOf(here).wasThere());

    // All is scanned in one piece when the kind of a folder changed.
    here.run(
        [&]
        {
            UnfinishedScan(Session::folder()).begin(roots);
            RootFolders folders;
            folders.add(roots[0], CQoPathInfo::allIsMusic);
            folders.store();
        });
    here.load();
    EXPECT_FALSE(markOf(here).wasThere());
}

TEST(CollectionLoader, AFileThatVanishesBeforeItIsReadLeavesNoRecord)
{
    LoadedCollection here;
    here.addSound("music/1.mp3");
    here.addSound("music/2.mp3");
    for (const bool inSlices : {true, false})
    {
        const std::string late = inSlices ? "music/2.mp3" : "music/3.mp3";
        if (!inSlices)
            here.addSound(late);
        bool isGone = false;
        here.progress = std::make_unique<ProgressReporter>(
            [&](const ProgressEvent& event)
            {
                // Behind the walk.
                if (event.stage == IQoProgress::stageCheck && !std::exchange(isGone, true))
                    fs::remove(here.dir.path(late));
            });
        here.load();
        EXPECT_TRUE(isGone);
        EXPECT_EQ(here.stored().size(), 1U) << inSlices;
        here.expectRecords(here.stored());
    }
}

TEST(CollectionLoader, ARootThatGoesAwayWhileItsFilesAreReadKeepsItsRecords)
{
    LoadedCollection here;
    for (int i = 0; i < 4; ++i)
        here.addSound("music/" + std::to_string(i) + ".mp3");
    here.load();
    const auto before = here.stored();
    for (const bool inSlices : {false, true})
    {
        if (inSlices)
        {
            here.addSound("new/5.mp3");
            here.addRoot(here.dir.collPath("new"));
        }
        // As if all were to be read again.
        here.run(
            []
            {
                CSQLiteDB db(Session::databasePath());
                db.Open();
                db.Execute(u"UPDATE FILE_T SET FT_MODIF_TIME = 0");
            });
        for (const int stage : {IQoProgress::stageScan, IQoProgress::stageCheck})
        {
            here.progress = std::make_unique<ProgressReporter>(
                [&](const ProgressEvent& event)
                {
                    if (event.stage != stage || fs::exists(here.dir.path("away")))
                        return;
                    fs::rename(here.dir.path("music"), here.dir.path("away"));
                    if (inSlices) // the empty place of a disk
                        here.dir.makeFolder("music");
                });
            EXPECT_TRUE(contains(messageOf([&] { here.load(); }, ExitCode::away), "music"));
            if (inSlices)
                fs::remove(here.dir.path("music"));
            fs::rename(here.dir.path("away"), here.dir.path("music"));
            for (const auto& record : before)
                EXPECT_EQ(here.stored().count(record.first), 1U) << inSlices << stage;
        }
        here.progress = std::make_unique<ProgressReporter>([](const ProgressEvent&) {});
        here.load();
        EXPECT_EQ(here.stored().size(), before.size() + inSlices);
    }
}

TEST(CollectionLoader, SlicesOfChangedFilesKeepANewRootInMind)
{
    LoadedCollection here;
    for (int i = 0; i < 3; ++i)
        here.addSound("music/" + std::to_string(i) + ".mp3");
    here.load();
    for (const auto& entry : fs::directory_iterator(here.dir.path("music")))
        fs::last_write_time(entry, fs::last_write_time(entry) + std::chrono::hours(1));
    here.addSound("new/5.mp3");
    here.addRoot(here.dir.collPath("new"));
    ProgressReporter* stop = nullptr;
    ProgressReporter stopping(
        [&](const ProgressEvent& event)
        {
            if (event.stage == IQoProgress::stageCheck && event.count > 1)
                stop->cancel();
        },
        [now = ProgressReporter::Clock::time_point()]() mutable
        { return now += std::chrono::seconds(1); });
    stop = &stopping;
    LoadOptions scan;
    scan.rescan = true;
    scan.filesInSlice = 1;
    EXPECT_TRUE(contains(here.messageOf([&] { loadCollection(*here.session, scan, stopping); },
                                        ExitCode::interrupted),
                         "files read so far were kept, and the next scan goes on"));
    EXPECT_TRUE(markOf(here).wasThere());
    here.load();
    EXPECT_EQ(here.stored().size(), 4U);
}

TEST(CollectionLoader, WhatCouldNotBeReadIsTold)
{
    LoadedCollection here;
    here.addSound("music/1.mp3");
    here.addSound("music/A.mp3");
    here.addSound("music/a.mp3");
    here.dir.write("music/empty.mp3", "");
    here.addSound("music/closed/2.mp3");
    here.addSound("music/locked.mp3");
    const OrdinaryUser user(here.dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the folder cannot be given away";
    ASSERT_EQ(::chmod(here.dir.path("music/closed").c_str(), 0), 0);
    ASSERT_EQ(::chmod(here.dir.path("music/locked.mp3").c_str(), 0), 0);
    here.load();
    EXPECT_EQ(here.notes,
              "a folder could not be read (Permission denied), and what is there is not in the "
              "collection: " +
                  here.dir.path("music/closed") +
                  "\n2 files have tags that could not be read (\"qo info\" says "
                  "why): " +
                  here.dir.path("music/empty.mp3") + ", " + here.dir.path("music/locked.mp3") +
                  "\na file was left out, as the collection knows another one by its name, upper "
                  "and lower case being the same: " +
                  here.dir.path("music/a.mp3") + "\n");
    here.notes.clear();
    here.load();
    EXPECT_EQ(here.notes, "") << "said once";
    ::chmod(here.dir.path("music/closed").c_str(), 0755);
    LoadOptions scan;
    scan.rescan = true;
    for (const int changed : {0, 1, 0})
    {
        const LoadReport report =
            here.run([&] { return loadCollection(*here.session, scan, *here.progress); });
        EXPECT_EQ(report.changed, changed) << "is read once it may be read";
        ::chmod(here.dir.path("music/locked.mp3").c_str(), 0644);
    }
}
