#include "host/cli/QoCommand.h"

#include <cstdlib>

namespace
{
using nlohmann::json;

/// A track that another program gave an album artist, a disc, a comment, four stars and seven
/// plays.
class RatedShelf : public QoCommand
{
public:
    RatedShelf()
    {
        addTrack("a/1.mp3", {"artist=Ann", "album=Gold", "title=One"});
        rateAsOthersDo("a/1.mp3");
        addTrack("b/2.ogg", {"artist=Bob", "album=Gold", "title=Two"}, "sound.ogg");
        rateAsOthersDo("b/2.ogg");
        addTrack("night/3.mp3", {"artist=Bea", "album=Night", "title=Three"});
        addTrack("night/4.mp3", {"artist=Zoe", "album=Night", "title=Four"});
        dir.write("music/night/cover.jpg", "picture");
        EXPECT_EQ(scan().code, 0);
    }

    void rateAsOthersDo(const std::string& name) const
    {
        const std::string call =
            "/usr/bin/python3 '" QO_SOURCE_DIR "/tests/KVTagLib/rated.py' '" + music(name) + "'";
        EXPECT_EQ(std::system(call.c_str()), 0);
    }
    /// Some fields of the file with that title, "|" between them.
    std::string noted(const std::string& title) const
    {
        const auto found = run({"ls", "--json", "kind:music", "title:" + title}).json();
        if (found.size() != 1)
            return std::to_string(found.size()) + " files";
        std::string text;
        for (const std::string field : {"albumArtist", "disc", "comment", "rating", "plays"})
            text += (field == "albumArtist" ? "" : "|") + (found[0][field].is_string()
                                                               ? found[0][field].get<std::string>()
                                                               : found[0][field].dump());
        return text;
    }
    std::string found(const std::string& query) const
    {
        std::string text = run({"ls", "--format", "{title}", query}).out;
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text;
    }
};

bool haveMutagen()
{
    return std::system("/usr/bin/python3 -c 'import mutagen' 2>/dev/null") == 0;
}
} // namespace

TEST(Rate, RatingsOfTagsAndOfPeopleAreFoundAndFollowTheFile)
{
    if (!haveMutagen())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const RatedShelf qo;
    EXPECT_EQ(qo.noted("one"), "Various|1/2|fine|4|7");
    EXPECT_EQ(qo.noted("three"), "|||null|0");
    for (const auto& [query, titles] : std::initializer_list<std::pair<const char*, const char*>>{
             {"rating:3.5..4", "One Two "},
             {"rating: kind:music", "Three Four "},
             {"albumartist:VAR plays:7", "One Two "},
             {"disc:1 comment:fin", "One Two "},
             {"played: kind:picture", " "},
             {"played:-1d", ""}})
        EXPECT_EQ(qo.found(query), titles) << query;

    ASSERT_EQ(qo.run({"rate", qo.music("night"), "4.5"}).err, "qo: rated 2 files\n");
    ASSERT_EQ(qo.run({"played", "title:three", "--at", "2024-05-31"}).code, 0);
    ASSERT_EQ(qo.run({"played", "title:three", "--at", "2023"}).code, 0);
    ASSERT_EQ(qo.run({"mv", qo.music("night/3.mp3"), qo.music("a/3.mp3")}).code, 0);
    std::filesystem::rename(qo.music("night/4.mp3"), qo.music("b/4.mp3"));
    ASSERT_EQ(qo.run({"scan", "--find-moved", "--deep", "--yes"}).code, 0);
    EXPECT_EQ(qo.noted("three"), "|||4.5|2");
    EXPECT_EQ(qo.noted("four"), "|||4.5|0");
    EXPECT_EQ(qo.found("played:2024-05-31"), "Three ");

    const std::string before = qo.dir.read("music/a/1.mp3");
    ASSERT_EQ(qo.run({"rate", "title:one", "2"}).code, 0);
    EXPECT_EQ(qo.dir.read("music/a/1.mp3"), before);
    EXPECT_EQ(qo.noted("one"), "Various|1/2|fine|2|7");
    ASSERT_EQ(qo.run({"rate", "title:one", "tag"}).code, 0);
    EXPECT_EQ(qo.noted("one"), "Various|1/2|fine|4|7");
    ASSERT_EQ(qo.run({"rate", "title:one", "0"}).code, 0);
    EXPECT_EQ(qo.noted("one"), "Various|1/2|fine|null|7");
    ASSERT_EQ(qo.run({"rate", "title:three", "1.5", "--write"}).code, 0);
    ASSERT_EQ(qo.run({"rate", "title:three", "tag"}).code, 0);
    EXPECT_EQ(qo.noted("three"), "|||1.5|2");
    qo.expectRefusals("rate",
                      {{{"title:one", "6"}, 2, "write 4, 3.5"},
                       {{"title:one", "1..2"}, 2, "no number of stars"},
                       {{"5"}, 2, "say which files"},
                       {{"kind:picture", "5"}, 4, "none of these files is music"},
                       {{"title:one", "tag", "--write"}, 2, "in the file already"}});
}

TEST(Rate, AlbumsOfSeveralArtistsAreOne)
{
    if (!haveMutagen())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const RatedShelf qo;
    // By one artist, in two folders; of the same name, in a folder of two album artists.
    qo.addTrack("solo/1/1.mp3", {"artist=Ann", "album=Solo", "title=A"});
    qo.addTrack("solo/2/1.mp3", {"artist=ann", "album=solo", "title=B"});
    qo.addTrack("a/5.mp3", {"artist=Eve", "album=gold", "title=C"});
    ASSERT_EQ(qo.run({"scan"}).code, 0);
    std::string rows;
    for (const json& row : qo.run({"albums", "--json"}).json())
        rows += row["artist"].get<std::string>() + (row["severalArtists"] ? "*" : "") + "/" +
                row["album"].get<std::string>() + " " + row["tracks"].dump() + "\n";
    EXPECT_EQ(rows, "*/Night 2\nAnn/Solo 2\nVarious/Gold 3\n");
    EXPECT_NE(qo.run({"albums"}).out.find("(several artists)  Night  2 tracks"), std::string::npos);
}
