#include "core/watch/FolderWatch.h"

#include "core/watch/FolderChanges.h"
#include "host/core/LoadedCollection.h"
#include "support/Contains.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <set>
#include <thread>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using std::chrono::milliseconds;
constexpr milliseconds settle(50);

/// All events until it has been quiet for a while.
std::vector<FolderEvent> eventsOf(FolderWatch& watch)
{
    std::vector<FolderEvent> all;
    for (int i = 0; i < 50; ++i)
    {
        const std::vector<FolderEvent> batch = watch.wait(milliseconds(400));
        if (batch.empty())
            break;
        all.insert(all.end(), batch.begin(), batch.end());
    }
    return all;
}

/// "+a *b -c d>e", sorted, with paths below the folder.
std::string reported(FolderWatch& watch, const TempDir& dir)
{
    const auto relative = [&dir](const std::string& path)
    { return path.starts_with(dir.path()) ? path.substr(dir.path().size() + 1) : path; };
    std::multiset<std::string> words;
    for (const FolderEvent& event : eventsOf(watch))
    {
        if (event.kind == FolderEvent::Kind::moved)
            words.insert(relative(event.path) + ">" + relative(event.newPath));
        else if (event.kind == FolderEvent::Kind::needRescan)
            words.insert("?");
        else
            words.insert(std::string(1, "+*-"[static_cast<int>(event.kind)]) +
                         relative(event.path));
    }
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}
} // namespace

TEST(FolderWatch, TellsWhatHappensInFoldersOldAndNew)
{
    const TempDir dir;
    dir.write("r/a/1", "x");
    dir.write("r/a/2", "x");
    dir.write("r/b/c/3", "x");
    FolderWatch watch({dir.path("r")}, settle);
    EXPECT_EQ(watch.watchedFolders(), 4);
    const struct
    {
        const char* name;
        std::function<void()> happens;
        const char* reported;
    } cases[] = {
        {"written", [&] { dir.write("r/a/1", "y"); }, "*r/a/1"},
        {"removed", [&] { fs::remove(dir.path("r/a/2")); }, "-r/a/2"},
        {"renamed", [&] { fs::rename(dir.path("r/a/1"), dir.path("r/b/1")); }, "r/a/1>r/b/1"},
        {"new folders at once", [&] { dir.write("r/n/e/w/4", "x"); }, "+r/n/e/w/4"},
        {"in a new folder", [&] { dir.write("r/n/e/5", "x"); }, "+r/n/e/5"},
        {"folder renamed", [&] { fs::rename(dir.path("r/n"), dir.path("r/m")); }, "r/n>r/m"},
        {"in a renamed folder", [&] { dir.write("r/m/e/w/4", "y"); }, "*r/m/e/w/4"},
        {"folder gone elsewhere", [&] { fs::rename(dir.path("r/m"), dir.path("m")); }, "-r/m"},
        {"which is watched no more", [&] { dir.write("m/e/w/4", "z"); }, ""},
        {"and comes back",
         [&] { fs::rename(dir.path("m"), dir.path("r/m")); },
         "+r/m/e/5 +r/m/e/w/4"},
        {"folder removed", [&] { fs::remove_all(dir.path("r/b")); }, "-r/b"},
        {"root gone", [&] { fs::rename(dir.path("r"), dir.path("q")); }, "?"}};
    for (const auto& c : cases)
    {
        c.happens();
        EXPECT_EQ(reported(watch, dir), c.reported) << c.name;
    }
}

TEST(FolderWatch, MissesNothingOfATreeThatGrowsWhileItIsFound)
{
    const TempDir dir;
    dir.makeFolder("r");
    FolderWatch watch({dir.path("r")}, settle);
    std::thread writer(
        [&]
        {
            for (int i = 0; i < 300; ++i)
                dir.write("r/" + std::to_string(i % 20) + "/" + std::to_string(i % 7) + "/" +
                              std::to_string(i),
                          "x");
        });
    std::set<std::string> found;
    // On an idle machine each wait may bring a single event.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (found.size() < 300 && std::chrono::steady_clock::now() < end)
        for (const FolderEvent& event : watch.wait(milliseconds(100)))
            found.insert(event.path);
    writer.join();
    EXPECT_EQ(found.size(), 300U);
}

TEST(FolderWatch, OverflowAsksForARescanAndWatchesOn)
{
    std::ifstream limit("/proc/sys/fs/inotify/max_queued_events");
    int most = 0;
    if (!(limit >> most) || most > 100'000)
        GTEST_SKIP() << "the system's queue is too long to be filled";
    const TempDir dir;
    dir.makeFolder("r");
    FolderWatch watch({dir.path("r")}, settle);
    const std::string a = dir.write("r/a", "x");
    const std::string b = dir.path("r/b");
    for (int i = 0; i <= most; ++i)
        i % 2 == 0 ? fs::rename(a, b) : fs::rename(b, a);
    dir.makeFolder("r/new");
    const auto events = eventsOf(watch);
    EXPECT_TRUE(std::any_of(events.begin(),
                            events.end(),
                            [](const FolderEvent& event)
                            { return event.kind == FolderEvent::Kind::needRescan; }));
    dir.write("r/new/c", "x");
    EXPECT_EQ(reported(watch, dir), "+r/new/c");
}

TEST(FolderWatch, StopEndsTheWaitFromAnotherThread)
{
    const TempDir dir;
    FolderWatch watch({dir.path()}, settle);
    std::thread stopper([&watch] { watch.stop(); });
    EXPECT_TRUE(watch.wait().empty());
    stopper.join();
    EXPECT_TRUE(watch.wait().empty());
}

TEST(FolderChanges, WhatWasSeenReachesTheCollectionWithItsIds)
{
    LoadedCollection here;
    here.addSound("music/a/1.mp3");
    here.addSound("music/a/2.mp3");
    here.addSound("music/3.mp3");
    here.load();
    const auto before = here.records();
    FolderWatch watch({here.dir.path("music")}, settle);
    const auto apply = [&]
    {
        const std::vector<FolderEvent> events = eventsOf(watch);
        here.run([&] { FolderChanges(*here.session).apply(events, *here.progress); });
        EXPECT_EQ(here.stored(), here.records());
        return here.records();
    };
    here.addSound("music/new/4.flac", "sound.flac");
    EXPECT_EQ(apply().count("music/new/4.flac"), 1U);

    fs::rename(here.dir.path("music/a"), here.dir.path("music/b"));
    fs::rename(here.dir.path("music/b/1.mp3"), here.dir.path("music/3.mp3"));
    const auto moved = apply();
    EXPECT_EQ(moved.size(), 3U);
    EXPECT_EQ(moved.at("music/b/2.mp3"), before.at("music/a/2.mp3"));
    EXPECT_EQ(moved.at("music/3.mp3"), before.at("music/a/1.mp3")) << "the overwritten one goes";

    // A program that saves by way of a copy.
    here.addSound("music/.tmp", "sound.mp3");
    fs::rename(here.dir.path("music/.tmp"), here.dir.path("music/3.mp3"));
    EXPECT_EQ(apply(), moved);

    fs::remove_all(here.dir.path("music/b"));
    EXPECT_EQ(apply().size(), 2U);
}

TEST(FolderChanges, OnlyNoteWhatHappenedOnTheDisk)
{
    LoadedCollection here;
    here.addSound("music/a/1.mp3");
    here.addSound("music/b/2.mp3");
    here.load();
    const std::string file = here.dir.path("music/a/1.mp3");
    fs::remove(file);
    here.dir.makeFolder("music/c");
    fs::rename(here.dir.path("music/b/2.mp3"), here.dir.path("music/c/2.mp3"));
    const std::vector<FolderEvent> events{{FolderEvent::Kind::moved,
                                           here.dir.path("music/b/2.mp3"),
                                           here.dir.path("music/c/2.mp3"),
                                           {}},
                                          {FolderEvent::Kind::removed, file, {}, {}}};
    here.run([&] { FolderChanges(*here.session).apply(events, *here.progress); });
    EXPECT_EQ(here.stored().count("music/c/2.mp3"), 1U);
    EXPECT_EQ(here.stored().size(), 1U);
    EXPECT_TRUE(fs::exists(here.dir.path("music/a"))) << "a folder of the user's";
    EXPECT_TRUE(fs::exists(here.dir.path("music/b")));
}

TEST(FolderChanges, RemoveNothingWhileARootIsAway)
{
    LoadedCollection here;
    here.addSound("music/a/1.mp3");
    here.load();
    const auto before = here.stored();
    const std::vector<FolderEvent> events{
        {FolderEvent::Kind::removed, here.dir.path("music/a"), {}, {}}};
    fs::rename(here.dir.path("music"), here.dir.path("away"));
    const std::string message = here.messageOf(
        [&] { FolderChanges(*here.session).apply(events, *here.progress); }, ExitCode::away);
    EXPECT_TRUE(contains(message, "nothing was changed"));
    EXPECT_EQ(here.stored(), before);
}

TEST(FolderChanges, ReadAFileThatGaveWayToAnOlderOne)
{
    LoadedCollection here;
    const CString path = here.addSound("music/1.mp3");
    here.load();
    const std::int64_t size = here.replaceByOlder("music/1.mp3");
    const std::vector<FolderEvent> events{
        {FolderEvent::Kind::changed, here.dir.path("music/1.mp3"), {}, {}}};
    here.run([&] { FolderChanges(*here.session).apply(events, *here.progress); });
    EXPECT_EQ(here.sizeOf(path), size);
}

TEST(FolderWatch, PassesOverTheProgramsOwnFoldersAndReportsFilesByTheirOwnPaths)
{
    LoadedCollection here;
    here.dir.makeFolder("music/z/y/x");
    fs::create_directory_symlink("z/y/x", here.dir.path("music/a"));
    FolderWatch watch({here.dir.path()}, settle);
    here.dir.write("data/Qorganizer/x", "x");
    here.dir.write("music/1", "x");
    here.dir.write("music/z/y/x/2", "x");
    EXPECT_EQ(reported(watch, here.dir), "+music/1 +music/z/y/x/2");
}
