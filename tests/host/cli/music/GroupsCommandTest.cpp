#include "host/cli/QoCommand.h"

#include <tuple>

namespace
{
/// Two artists, one of them written in two ways, a genre that both have, and a track without names.
void addLibrary(const QoCommand& qo)
{
    qo.addTrack("a/1.mp3", {"artist=Zebra", "album=Rain", "title=One", "genre=Jazz", "year=1999"});
    qo.addTrack(
        "a/2.mp3",
        {"artist=ZEBRA", "album=Rain", "title=Two", "genre=jazz", "year=2004", "track=2/12"});
    qo.addTrack("a/3.flac", {"artist=Zebra", "album=Snow", "title=Six", "track=10"}, "sound.flac");
    qo.addTrack("b/4.ogg", {"artist=apple", "album=Rain", "title=A", "genre=Rock"}, "sound.ogg");
    qo.addSound("c/5.mp3");
    qo.addSound("d/6.mp3");
    ASSERT_EQ(qo.scan().code, 0);
}

/// Some fields of every row, with blanks between.
std::string
rows(const QoCommand& qo, std::vector<std::string> words, const std::vector<std::string>& fields)
{
    words.emplace_back("--json");
    const auto result = qo.run(words);
    std::string text;
    for (const auto& row : result.json())
    {
        for (const std::string& field : fields)
            text += (row[field].is_string() ? row[field].get<std::string>() : row[field].dump()) +
                    (&field == &fields.back() ? "\n" : " ");
    }
    return result.code == 0 ? text : std::to_string(result.code) + " " + result.err;
}
} // namespace

TEST(GroupsCommand, MusicIsCountedByItsNames)
{
    const QoCommand qo;
    addLibrary(qo);
    const std::tuple<std::vector<std::string>, std::vector<std::string>, const char*> cases[] = {
        // What has no name stands ahead, all of it in one row.
        {{"artists"},
         {"name", "albums", "tracks", "yearFrom", "yearTo"},
         " 0 2 null null\napple 1 1 null null\nZebra 2 3 1999 2004\n"},
        {{"artists", "--album", "rain"}, {"name", "tracks"}, "apple 1\nZebra 2\n"},
        {{"artists", "--genre", "ROCK"}, {"name", "tracks"}, "apple 1\n"},
        {{"albums"},
         {"artist", "album", "tracks", "yearFrom", "yearTo"},
         "  2 null null\napple Rain 1 null null\nZebra Rain 2 1999 2004\nZebra Snow 1 null null\n"},
        {{"albums", "--artist", "zebra"}, {"album"}, "Rain\nSnow\n"},
        {{"albums", "--album", "Rain"}, {"artist"}, "apple\nZebra\n"},
        {{"genres"}, {"name", "tracks", "artists"}, " 3 1\nJazz 2 1\nRock 1 1\n"},
        {{"tracks", "--artist", "Zebra"},
         {"artist", "album", "track", "title"},
         "Zebra Rain  One\nZebra Rain 2/12 Two\nZebra Snow 10 Six\n"},
        {{"tracks", "--artist", ""}, {"title"}, "\n\n"},
        {{"tracks", "--artist", "Zebr"},
         {},
         "4 qo: there is no artist \"Zebr\"; the closest is \"Zebra\"\n"},
        {{"tracks", "--album", "Rein"},
         {},
         "4 qo: there is no album \"Rein\"; the closest is \"Rain\"\n"},
        {{"genres", "--genre", "Polka"}, {}, "4 qo: there is no genre \"Polka\"\n"},
        {{"tracks", "--artist", "apple", "--album", "Snow"},
         {},
         "4 qo: no track has all of these names\n"}};
    for (const auto& [words, fields, text] : cases)
        EXPECT_EQ(rows(qo, words, fields), text) << testing::PrintToString(words);
}

TEST(GroupsCommand, PeopleGetColumnsAndMachinesTabs)
{
    const QoCommand qo;
    addLibrary(qo);
    EXPECT_EQ(qo.run({"artists"}).out,
              "[unknown]  0 albums  2 tracks  0:01\n"
              "apple       1 album   1 track  0:00\n"
              "Zebra      2 albums  3 tracks  0:01  1999-2004\n");
    EXPECT_EQ(qo.run({"genres", "--long", "--genre", "Rock"}).out.substr(0, 37),
              "name\ttracks\tartists\tduration\nRock\t1\t1");
    EXPECT_EQ(qo.run({"tracks", "--album", "Snow"}).out,
              "10  Six  Zebra  Snow  0:00  " + qo.music("a/3.flac") + "\n");
    const std::string table = qo.run({"tracks", "--long", "--album", "Snow"}).out;
    EXPECT_EQ(table.substr(table.rfind('\t')), "\t" + qo.music("a/3.flac") + "\n");
}

TEST(AlbumsCommand, CoverIsTheTagsOrAPictureBeside)
{
    const QoCommand qo;
    ASSERT_EQ(qo.run({"config", "set", "UnrelMaxPercent", "50"}).code, 0);
    const std::string behind = qo.addSound("b/cover.jpg", "red.jpg");
    const std::string ahead = qo.addSound("c/3.jpg", "green.jpg");
    qo.addTrack("a/1.mp3", {"artist=x", "album=1 tagged", "title=1", "picture=" + behind});
    qo.addTrack("b/2.mp3", {"artist=x", "album=2 behind", "title=2"});
    qo.addTrack("c/3.mp3", {"artist=x", "album=3 ahead", "title=3"});
    qo.addTrack("d/4.mp3", {"artist=x", "album=4 none", "title=4"});
    ASSERT_EQ(qo.scan().code, 0);
    const auto albums = qo.run({"albums", "--json"}).json();
    ASSERT_EQ(albums.size(), 4U);
    EXPECT_NE(albums[0]["cover"], "");
    EXPECT_EQ(albums[1]["cover"], behind);
    EXPECT_EQ(albums[2]["cover"], ahead);
    EXPECT_EQ(albums[3]["cover"], "");
}

TEST(TracksCommand, NamesThatAreNoTextKeepTheirBytesAndTheirRow)
{
    const QoCommand qo;
    const std::string file = qo.addTrack("a\xFF.mp3", {"artist=tab\there\nline", "title=x\x1b[1m"});
    ASSERT_EQ(qo.scan().code, 0);
    const auto row = qo.run({"tracks", "--json"}).json().at(0);
    EXPECT_EQ(row["artist"], "tab\there\nline");
    EXPECT_EQ(row["pathUri"], "file://" + qo.music("a%FF.mp3"));
    const std::string table = qo.run({"tracks", "--long"}).out;
    EXPECT_EQ(table,
              "track\ttitle\tartist\talbum\tyear\tgenre\tduration\tpath\n"
              "\tx [1m\ttab here line\t\t\t\t" +
                  row["duration"].dump() + "\t" + file + "\n");
}
