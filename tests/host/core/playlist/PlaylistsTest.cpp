#include "core/playlist/Playlists.h"

#include "core/playlist/PlaylistExport.h"
#include "core/playlist/PlaylistImport.h"
#include "core/playlist/PlaylistRepair.h"
#include "host/core/LoadedCollection.h"
#include "support/Contains.h"

#include <boost/make_shared.hpp>

using namespace qo::host;

namespace
{
StoredEntry entry(int row, const char16_t* title)
{
    StoredEntry entry;
    entry.row = row;
    entry.id = row > 0 ? CString(u"id-") + title : CString();
    entry.title = title;
    return entry;
}

/// "a b -c": titles of entries, those without a row with a sign.
std::string titlesOf(const std::vector<StoredEntry>& entries)
{
    std::string text;
    for (const StoredEntry& each : entries)
        text += (text.empty() ? "" : " ") + std::string(each.row == 0 ? "-" : "") +
                (each.title.IsEmpty() ? std::to_string(each.row) : qo::toUtf8(each.title));
    return text;
}

/// As another program changes a list.
void setTracks(int id, const char16_t* tracks)
{
    boost::shared_ptr<QoPlaylistDbItem> item;
    ASSERT_TRUE(CMpPlaylistUtils::GetPlaylist(id, item));
    item->tracks = CStringArray::split(tracks, u';');
    CMpPlaylistUtils::UpdatePlaylist(item);
}

QoFileDbItemPtr recordAt(const CString& path)
{
    return CQoCollection::m_ownCollection.getFileByPath(path)->getDbItem();
}
} // namespace

TEST(Playlists, WhatAnotherProgramChangesKeepsWhatIsRemembered)
{
    const LoadedCollection collection;
    collection.load();
    collection.run(
        []
        {
            Playlists playlists;
            const std::vector<StoredEntry> entries = {entry(0, u"t0"),
                                                      entry(5, u"a"),
                                                      entry(0, u"t1"),
                                                      entry(7, u"b"),
                                                      entry(9, u"c"),
                                                      entry(5, u"a2")};
            const int id = playlists.make(u"It's 100%", entries).id;
            const auto read = [&] { return titlesOf(playlists.find("it's 100%").entries); };
            EXPECT_EQ(read(), "-t0 a -t1 b c a2");
            const std::pair<const char16_t*, const char*> cases[] = {
                {u"5;7;9;5", "-t0 a -t1 b c a2"},
                {u"9;5;6", "-t0 c a -t1 6"},
                {u"7;7", "-t0 b 7 -t1"},
                {u"", "-t0 -t1"},
                {u"5;5;5", "-t0 a -t1 a2 5"}};
            for (const auto& [tracks, expected] : cases)
            {
                setTracks(id, tracks);
                EXPECT_EQ(read(), expected);
            }
        });
}

TEST(Playlists, ChangeThatWasCutShortCountsAsMade)
{
    const LoadedCollection collection;
    collection.load();
    collection.run(
        []
        {
            Playlists playlists;
            Playlist list = playlists.make(u"x", {entry(1, u"a"), entry(2, u"b")});
            const std::vector<StoredEntry> next = {entry(3, u"c"), entry(0, u"t")};
            HostStore(Session::folder()).beginPlaylistChange(list.id, list.tracks, next);
            list = playlists.find("x");
            EXPECT_EQ(titlesOf(list.entries), "c -t");
            EXPECT_EQ(playlists.all()[0].entries, 2);
            playlists.setEntries(list, list.entries);
            setTracks(list.id, u"1;2");
            EXPECT_EQ(titlesOf(playlists.find("x").entries), "1 2 -t") << "no change is open";

            playlists.remove(list);
            EXPECT_TRUE(HostStore(Session::folder()).playlistEntries(list.id).empty());
        });
}

TEST(Playlists, NamesAreTakenOnceAndFoundInAnyCase)
{
    const LoadedCollection collection;
    collection.load();
    const auto refuse = [&](auto action, ExitCode code, const char* text)
    { EXPECT_TRUE(contains(collection.messageOf(action, code), text)); };
    collection.run(
        []
        {
            Playlists().make(u"Jazz", {});
            Playlists().makeLiving(u"Living", u"genre:jazz");
        });
    refuse([] { Playlists().make(u"JAZZ", {}); }, ExitCode::usage, "\"Jazz\" already");
    refuse([] { Playlists().makeLiving(u"jazz", u"x"); }, ExitCode::usage, "already");
    refuse([] { Playlists().make(u" ", {}); }, ExitCode::usage, "needs a name");
    refuse([] { Playlists().make(u"#9", {}); }, ExitCode::usage, "by its id");
    refuse([] { Playlists().find("Jaz"); }, ExitCode::notFound, "did you mean \"Jazz\"?");
    collection.run(
        []
        {
            Playlists playlists;
            playlists.rename(playlists.find("#1"), u"JAZZ");
            playlists.rename(playlists.find("living"), u"it's");
            EXPECT_EQ(playlists.find("jazz").name, u"JAZZ");
            EXPECT_EQ(playlists.find("IT'S").query, u"genre:jazz");
            CMpPlaylistUtils::NewPlaylist(u"jazz", QoFileDbItemArray());
            CMpPlaylistUtils::NewPlaylist(u"#1", QoFileDbItemArray());
            EXPECT_EQ(playlists.find("#1").name, u"JAZZ");
        });
    refuse([] { Playlists().find("jazz"); }, ExitCode::usage, "as #1 or #2");
}

/// A row id that was given again, one that is gone, and how their songs are found.
TEST(PlaylistRepair, EntriesAreFoundByLastingIdPathAndTags)
{
    const LoadedCollection collection;
    std::vector<CString> paths;
    for (const char* name : {"a", "b", "c", "d", "e"})
        paths.push_back(collection.addSound("music/x/" + std::string(name) + ".mp3"));
    collection.load();
    collection.run(
        [&]
        {
            std::vector<StoredEntry> entries;
            for (const CString& path : paths)
                entries.push_back(entryOf(*recordAt(path)));
            const StoredEntry other = entries[4];
            recordAt(paths[3])->artist = u"B\u00F6b";
            recordAt(paths[3])->title = u"Dawn";
            entries[0].row = other.row; // now of another song, with its id elsewhere
            entries[1].id = u"lost";    // a new record at the same path
            entries[2] = {999, u"gone", u"C:\\away.mp3", {}, u"DAWN", u"Bob", 653};
            entries[3] = {0, {}, {}, u"C:\\X\\y.mp3", u"Dusk", u"Bob", 0};
            entries[4] = {0, {}, {}, u"http://radio/x", {}, {}, 0};
            Playlists playlists;
            const Playlist list = playlists.make(u"x", entries);

            std::vector<EntryFinding> findings = checkEntries(list);
            std::vector<StoredEntry> repaired;
            repairEntries(list, findings, repaired);
            std::string text;
            for (const EntryFinding& finding : findings)
                text += std::to_string(finding.index) + " " + wordOf(finding.state) + " " +
                        wordsOf(finding.by) + "\n";
            EXPECT_EQ(text, "0 other lasting id\n1 other path\n2 gone tags\n3 text nothing\n");
            ASSERT_EQ(repaired.size(), 5U);
            EXPECT_EQ(repaired[0], entryOf(*recordAt(paths[0])));
            EXPECT_EQ(repaired[1], entryOf(*recordAt(paths[1])));
            EXPECT_EQ(repaired[2], entryOf(*recordAt(paths[3])));
            EXPECT_EQ(repaired[3], entries[3]);

            // What is not found any more loses its row, which may come to mean another song.
            Playlist lost = list;
            lost.entries = {{999, u"gone", u"C:\\away.mp3", {}, u"No", u"Nobody", 1}};
            findings = checkEntries(lost);
            repairEntries(lost, findings, repaired);
            EXPECT_EQ(repaired[0].row, 0);
            EXPECT_EQ(repaired[0].path, u"C:\\away.mp3");
        });
}

TEST(PlaylistImport, SongsAreFoundInEverySpellingOfTheirPlaces)
{
    const LoadedCollection collection;
    collection.addSound("music/Kino/Album/01.mp3");
    collection.addSound("music/Other/Album/01.mp3");
    collection.addSound("music/Bj\u00F6rk/J\u00F3ga.mp3");
    collection.addSound("music/twins/e\u0301.mp3");
    collection.addSound("music/twins/\u00E9.mp3", "sound.flac");
    collection.addSound("music/a%20b.mp3");
    collection.load();
    const std::string music = collection.dir.path("music");
    std::filesystem::create_symlink(music, collection.dir.path("link"));
    struct Case
    {
        std::string place;
        std::string found; ///< "" for nothing
        bool match = false;
    };
    const Case cases[] = {{"Kino/Album/01.mp3", "Kino/Album/01.mp3"},
                          {"kino/ALBUM/01.MP3", "Kino/Album/01.mp3"},
                          {"Kino\\Album\\01.mp3", "Kino/Album/01.mp3"},
                          {collection.dir.path("link/Kino/Album/01.mp3"), "Kino/Album/01.mp3"},
                          {"D:\\Musik\\Kino\\Album\\01.mp3", "Kino/Album/01.mp3"},
                          {"D:\\Musik\\Album\\01.mp3", ""},
                          {"D:\\01.mp3", ""},
                          {"/elsewhere/Kino/Album/01.mp3", ""},
                          {"/elsewhere/Kino/Album/01.mp3", "Kino/Album/01.mp3", true},
                          {"Bj\xF6rk/J\xF3ga.mp3", "Bj\u00F6rk/J\u00F3ga.mp3"},
                          {"Bjo\u0308rk/Jo\u0301ga.mp3", "Bj\u00F6rk/J\u00F3ga.mp3"},
                          {"twins/e\u0301.mp3", "twins/e\u0301.mp3"},
                          {"twins/\u00E9.mp3", "twins/\u00E9.mp3"},
                          {"TWINS/E\u0301.mp3", "twins/e\u0301.mp3"},
                          {"a%20b.mp3", "a%20b.mp3"},
                          {"a%2520b.mp3", "a%20b.mp3"},
                          {"file://" + music + "/Kino/Album/01.mp3", "Kino/Album/01.mp3"},
                          {"http://radio/x", ""}};
    collection.run(
        [&]
        {
            for (const Case& each : cases)
            {
                ListedSong song;
                song.place = each.place;
                song.title = u"T";
                const ImportedSongs imported = importSongs({song}, music, each.match);
                ASSERT_EQ(imported.entries.size(), 1U);
                const StoredEntry& made = imported.entries[0];
                EXPECT_EQ(made.row == 0 ? "" : placeOf(made),
                          each.found.empty() ? "" : music + "/" + each.found)
                    << each.place;
                EXPECT_EQ(imported.withoutFile.size(), each.found.empty() ? 1U : 0U);
                EXPECT_TRUE(placeOf(made) == each.place || made.row != 0) << placeOf(made);
            }
        });
}

TEST(PlaylistImport, TagsAreAskedWithTheLengthOnRequest)
{
    const LoadedCollection collection;
    const CString first = collection.addSound("music/1.mp3");
    const CString second = collection.addSound("music/2.mp3");
    collection.load();
    collection.run(
        [&]
        {
            for (const CString& path : {first, second})
            {
                recordAt(path)->artist = u"Simon - Half";
                recordAt(path)->title = u"S\u00F6ng";
            }
            recordAt(first)->duration = 200000;
            recordAt(second)->duration = 205000;
            const auto found = [](const char16_t* artist, const char16_t* title, int duration)
            {
                const ImportedSongs imported =
                    importSongs({{"/x.mp3", title, artist, {}, duration}}, "/", true);
                return placeOf(imported.entries[0]).substr(placeOf(imported.entries[0]).rfind('/'));
            };
            EXPECT_EQ(found(u"simon - half", u"SONG", 204000), "/2.mp3");
            EXPECT_EQ(found(u"Simon", u"Half - Song", 201000), "/1.mp3");
            EXPECT_EQ(found(u"Simon - Half", u"Song", 0), "/1.mp3") << "the first path";
            EXPECT_EQ(found(u"Simon - Half", u"Song", 300000), "/x.mp3");
            EXPECT_EQ(found(u"", u"Song", 200000), "/x.mp3");
        });
}

TEST(PlaylistExport, CopiesHaveNamesForAnyDiskAndReplaceNothing)
{
    const LoadedCollection collection;
    const CString path = collection.addSound("music/a:b?.mp3");
    const CString flac = collection.addSound("music/c.flac", "sound.flac");
    collection.load();
    collection.run(
        [&]
        {
            recordAt(path)->artist = u"AC/DC";
            recordAt(path)->title = u"What? \"No\" " + CString(u'\u00E9', 300);
            const std::vector<StoredEntry> entries = {
                entryOf(*recordAt(flac)), entry(0, u"text"), entryOf(*recordAt(path))};
            const std::string stick = collection.dir.path("stick");
            collection.dir.write("stick/01 c.flac", "of somebody");
            const auto namesOf = [](const std::vector<SongCopy>& copies)
            {
                std::string names;
                for (const SongCopy& copy : copies)
                    names += copy.song.place + (copy.isThere ? "!" : "") + "\n";
                return names;
            };
            std::vector<SongCopy> copies = planCopies(entries, stick);
            ASSERT_EQ(copies.size(), 2U);
            EXPECT_TRUE(namesOf(copies).starts_with("01 c (2).flac\n03 AC_DC - What_ _No_ \u00E9"));
            EXPECT_TRUE(copies[1].song.place.ends_with("\u00E9.mp3"));
            EXPECT_LE(copies[1].song.place.size(), 200U);
            makeCopies(copies, stick, [] { return false; });
            EXPECT_EQ(copies[0].failure + copies[1].failure, "");
            EXPECT_EQ(collection.dir.read("stick/01 c.flac"), "of somebody");
            EXPECT_EQ(collection.dir.read("stick/01 c (2).flac"),
                      collection.dir.read("music/c.flac"));
            EXPECT_EQ(namesOf(planCopies(entries, stick)),
                      "01 c (2).flac!\n" + copies[1].song.place + "!\n");

            copies = planCopies(entries, collection.dir.path("other"));
            messageOf([&]
                      { makeCopies(copies, collection.dir.path("other"), [] { return true; }); },
                      ExitCode::interrupted);
            copies[0].size = std::int64_t(1) << 60;
            EXPECT_TRUE(contains(messageOf([&] { checkCopies(copies, collection.dir.path("o2")); }),
                                 "there is no room in"));
            EXPECT_FALSE(std::filesystem::exists(collection.dir.path("o2")));
        });
    EXPECT_EQ(portableName(u" CON", ".m3u8"), "CON_.m3u8");
    EXPECT_EQ(portableName(u"..", ".m3u8"), "._.m3u8");
    EXPECT_EQ(portableName(u"", ".m3u8"), "_.m3u8");
}
