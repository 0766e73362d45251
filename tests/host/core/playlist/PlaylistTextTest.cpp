#include "core/playlist/PlaylistText.h"

#include "core/playlist/SongPlace.h"
#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace qo::host;

namespace
{
std::string shown(const std::vector<ListedSong>& songs)
{
    std::string text;
    for (const ListedSong& song : songs)
        text += song.place + "|" + qo::toUtf8(song.artist) + "|" + qo::toUtf8(song.title) + "|" +
                std::to_string(song.duration) + "\n";
    return text;
}

/// The songs, or what is wrong with the list.
std::string parsed(const std::string& bytes)
{
    std::vector<ListedSong> songs;
    const std::string fault = parsePlaylist(bytes, songs);
    return fault.empty() ? shown(songs) : fault;
}

std::string xspf(const std::string& content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<playlist version=\"1\" "
           "xmlns=\"http://xspf.org/ns/0/\"><trackList>" +
           content + "</trackList></playlist>\n";
}
} // namespace

TEST(PlaylistText, ListsOfManyProgramsAreRead)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"a.mp3", "a.mp3|||0\n"},
        {"\xEF\xBB\xBF#EXTM3U\r\n\r\n#EXTINF:215,Kino - Zvezda\r\nKino\\01.mp3\r\n# x\r\nb.mp3\r\n",
         "Kino\\01.mp3|Kino|Zvezda|215000\nb.mp3|||0\n"},
        {"#extinf:-1 tvg=\"a,b\" x=\"\",News, late\nhttp://radio/x\r",
         "http://radio/x||News, late|0\n"},
        {"#EXTINF:3.5,A - B - C\n#EXTALB:D\na b.mp3", "a b.mp3|A|B - C|3000\n"},
        {"#EXTINF:99999999999999,x\n#EXTART:Ann\ny", "y|Ann|x|0\n"},
        {"#EXTINF:1,Bj\xF6rk - J\xF3ga\nBj\xF6rk.mp3", "Bj\xF6rk.mp3|Bj\u00F6rk|J\u00F3ga|1000\n"},
        {std::string("\xFF\xFE"
                     "a\0\xE9\0.\0m\0\n\0",
                     12),
         "a\u00E9.m|||0\n"},
        {"[Playlist]\nfile2=b.mp3\nTitle2=Kino - Zvezda\nLength2=7\nFile1=a=1.mp3\nFile=x\n"
         "Title9=lost\nFile0=zero\nNumberOfEntries=2\nVersion=2\n",
         "a=1.mp3|||0\nb.mp3|Kino|Zvezda|7000\n"},
        {xspf("<track><location>file:///m/a%20b.mp3</location><title>T&amp;T</title><creator>C"
              "</creator><duration>1234</duration></track>\n<track><location>K%C3%AF/%231.mp3"
              "</location></track><track><title>alone</title></track><track/>"),
         "file:///m/a%20b.mp3|C|T&T|1234\nK\u00EF/#1.mp3|||0\n||alone|0\n"}};
    for (const auto& [bytes, expected] : cases)
        EXPECT_EQ(parsed(bytes), expected) << bytes;
}

TEST(PlaylistText, WhatIsNoListIsRefusedInASentence)
{
    std::string deep;
    for (int i = 0; i < 100; ++i)
        deep += "<a>";
    std::string many;
    for (std::size_t i = 0; i <= mostListedSongs; ++i)
        many += "a\n";
    std::string wide = "<?xml version=\"1.0\"?><playlist>";
    for (int i = 0; i <= 1000000; ++i)
        wide += "<a/>";
    const std::pair<std::string, std::string> cases[] = {
        {std::string("ID3\3\0\0\0", 7), "it is no text"},
        {"a\n" + std::string(longestPlaylistLine + 1, 'x'), "line 2 is longer than 32 KiB"},
        {many, "it has more than 500000 songs"},
        {std::string(largestPlaylist + 1, '\n'), "it is larger than 64 MiB"},
        {"<html/>", "it has no element trackList"},
        {"<playlist><trackList>", "it is no complete XML"},
        {xspf(deep), "it is no complete XML, or has more or deeper elements"},
        {wide + "</playlist>", "more or deeper elements"},
        {"<!DOCTYPE a [<!ENTITY b \"&c;\">]><a>&b;</a>", "it has no element trackList"}};
    for (const auto& [bytes, expected] : cases)
        EXPECT_TRUE(contains(parsed(bytes), expected)) << bytes.substr(0, 40);

    const TempDir dir;
    dir.write("huge.m3u", "");
    std::filesystem::resize_file(dir.path("huge.m3u"), std::uintmax_t(1) << 30);
    EXPECT_TRUE(contains(messageOf([&] { readPlaylistFile(dir.path("huge.m3u")); }),
                         "huge.m3u is no playlist: it is larger than 64 MiB"));
    messageOf([&] { readPlaylistFile(dir.path("away.m3u")); }, ExitCode::notFound);
    messageOf([&] { readPlaylistFile(dir.path()); });
}

TEST(PlaylistText, WhatIsWrittenIsReadAlike)
{
    const std::vector<ListedSong> songs = {{"#1 \u00E9%20&<\"'.mp3",
                                            u"Tit\u00E9l & <b>",
                                            u"\u041A\u0438\u043D\u043E",
                                            u"Album",
                                            61000},
                                           {"/m/a b.mp3", u"only", u"", u"", 0},
                                           {"http://radio/?a=1&b=2", u"x\ny", u"a\x1B", u"", 1000}};
    const std::string expected =
        "#1 \u00E9%20&<\"'.mp3|\u041A\u0438\u043D\u043E|Tit\u00E9l & <b>|61000\n"
        "/m/a b.mp3||only|0\nhttp://radio/?a=1&b=2|a|x y|1000\n";
    for (const char* name : {"a.m3u8", "a.M3U", "a.pls", "a.xspf"})
    {
        std::string text = parsed(playlistText(playlistFormatOf(name), u"It's <1>", songs));
        if (text.starts_with("./"))
            text.erase(0, 2);
        const std::string address = "file:///m/a%20b.mp3";
        if (const std::size_t at = text.find(address); at != std::string::npos)
            text.replace(at, address.size(), "/m/a b.mp3");
        EXPECT_EQ(text, expected) << name;
    }
    const TempDir dir;
    dir.write("a.xspf", playlistText(PlaylistFormat::xspf, u"It's <\x01>", songs));
    const std::string lint = "xmllint --noout '" + dir.path("a.xspf") + "' 2>/dev/null";
    const int code = std::system(lint.c_str()); // NOLINT(concurrency-mt-unsafe)
    constexpr int notInstalled = 127 << 8;
    EXPECT_TRUE(code == 0 || code == notInstalled);
}

TEST(PlaylistText, OddTextsStillMakeAListThatCanBeRead)
{
    const std::vector<ListedSong> songs = {
        {"http://x/a b\xFF", CString(u'x', 100000), u"a - b", u"", 0}};
    for (const PlaylistFormat format :
         {PlaylistFormat::m3u, PlaylistFormat::pls, PlaylistFormat::xspf})
    {
        std::vector<ListedSong> again;
        EXPECT_EQ(parsePlaylist(playlistText(format, u"", songs), again), "");
        EXPECT_EQ(again.size(), 1U);
    }
    EXPECT_TRUE(
        contains(parsed(xspf("<track><location>" + std::string(longestPlaylistLine + 1, 'x') +
                             "</location></track>")),
                 "a location is longer than 32 KiB"));
}

TEST(SongPlace, MeansPathsOfThisSystemOrOfAnother)
{
    struct Case
    {
        const char* place;
        std::vector<std::string> paths;
        const char* foreign = "";
    };
    const Case cases[] = {{"Kino/01.mp3", {"/l/Kino/01.mp3"}},
                          {"../m/./a.mp3", {"/m/a.mp3"}},
                          {"/m//a.mp3", {"/m/a.mp3"}},
                          {"Kino\\01.mp3", {"/l/Kino\\01.mp3", "/l/Kino/01.mp3"}},
                          {"100%25.mp3", {"/l/100%25.mp3", "/l/100%.mp3"}},
                          {"\xF6.mp3", {"/l/\xF6.mp3", "/l/\u00F6.mp3"}},
                          {"FILE:///m/a%20b.mp3", {"/m/a b.mp3"}},
                          {"file://localhost/m/a.mp3", {"/m/a.mp3"}},
                          {"file:/m/%zz.mp3", {"/m/%zz.mp3"}},
                          {"file:///m/%00", {}},
                          {"http://radio/x", {}},
                          {"", {}},
                          {"C:\\M\\a.mp3", {}, "C:/M/a.mp3"},
                          {"c:/M/a.mp3", {}, "c:/M/a.mp3"},
                          {"\\\\nas\\M\\a.mp3", {}, "//nas/M/a.mp3"},
                          {"file:///C:/M/a%20b.mp3", {}, "C:/M/a b.mp3"},
                          {"file://nas/M/a.mp3", {}, "//nas/M/a.mp3"}};
    for (const Case& each : cases)
    {
        const SongPlace meaning = meaningOf(each.place, "/l");
        EXPECT_EQ(meaning.paths, each.paths) << each.place;
        EXPECT_EQ(meaning.foreign, each.foreign) << each.place;
    }
}

TEST(SongPlace, RelativePlacesGoUpAsFarAsNeeded)
{
    const std::vector<std::string> cases[] = {{"/l", "/l/a", "a"},
                                              {"/l", "/l2/a", "../l2/a"},
                                              {"/l2", "/l/a", "../l/a"},
                                              {"/l/m/n", "/l/a", "../../a"},
                                              {"/l/m", "/x/y/a", "../../x/y/a"},
                                              {"/", "/x/a", "x/a"},
                                              {"/l", "/a", "../a"},
                                              {"/l/m", "/l/mm", "../mm"},
                                              {"/l/mm", "/l/m", "../m"}};
    for (const auto& row : cases)
        EXPECT_EQ(placeFor(row[1], PlaceStyle::relative, row[0]), row[2]) << row[0];
}

TEST(SongPlace, PathsComeBackFromEveryStyle)
{
    for (const std::string path : {"/m/a b.mp3",
                                   "/l/#1.mp3",
                                   "/l/C:/x.mp3",
                                   "/l/http://x",
                                   "/l/\\x",
                                   "/m/a\nb.mp3",
                                   "/m/50%25.mp3",
                                   "/m/\xF6.mp3"})
        for (const PlaceStyle style :
             {PlaceStyle::relative, PlaceStyle::absolute, PlaceStyle::address})
        {
            const std::string place = placeFor(path, style, "/l");
            EXPECT_EQ(place.find('\n'), std::string::npos);
            const std::vector<std::string> paths = meaningOf(place, "/l").paths;
            EXPECT_EQ(paths.empty() ? "" : paths[0], path == "/l/http://x" ? "/l/http:/x" : path)
                << place;
        }
}
