#include "host/cli/QoCommand.h"

namespace fs = std::filesystem;

namespace
{
nlohmann::json rowOf(const QoCommand& qo, const char* command, const std::string& path)
{
    for (const auto& row : qo.run({command, "--json"}).json())
    {
        if (row["path"] == path)
            return row;
    }
    return {};
}
} // namespace

TEST(PlacedCommand, TellsWhatFoundItsMusicAndWhy)
{
    const QoCommand qo;
    // Two of four may go without a tag.
    ASSERT_EQ(qo.run({"config", "set", "UnrelMaxPercent", "50"}).code, 0);
    qo.addTrack("a/1.mp3", {"artist=Zebra", "album=Rain", "title=One"});
    qo.addTrack("a/2.mp3", {"artist=Zebra", "album=Rain", "title=Two"});
    qo.addSound("a/folder.jpg", "red.jpg");
    qo.dir.write("music/a/Zebra - Two.txt", "la la");
    qo.addTrack("b/3.mp3", {"artist=Apple", "album=Sun", "title=A"});
    qo.addTrack("b/4.mp3", {"artist=Pear", "album=Moon", "title=B"});
    qo.addSound("b/4.jpg", "red.jpg");
    qo.addSound("b/picnic.png", "blue.png");
    ASSERT_EQ(qo.scan().code, 0);

    const struct
    {
        const char* file;
        bool placed;
        const char* artist;
        const char* album;
        const char* by;
        const char* reason;
    } cases[] = {
        {"a/folder.jpg",
         true,
         "Zebra",
         "Rain",
         "folder",
         "the folder agrees on the artist \"Zebra\""},
        {"a/Zebra - Two.txt", true, "Zebra", "Rain", "name", "its name fits \"2.mp3\" by"},
        {"b/4.jpg", true, "Pear", "Moon", "exactName", "named like \"4.mp3\""},
        {"b/picnic.png", false, "", "", "", "more than one artist, as \"Apple\" and \"Pear\""}};
    for (const auto& c : cases)
    {
        const auto row = rowOf(qo, "placed", qo.music(c.file));
        ASSERT_TRUE(row.is_object()) << c.file;
        EXPECT_EQ(row["placed"], c.placed) << row;
        EXPECT_EQ(row["artist"], c.artist) << row;
        EXPECT_EQ(row["album"], c.album) << row;
        EXPECT_EQ(row["by"], c.by) << row;
        EXPECT_NE(row["reason"].get<std::string>().find(c.reason), std::string::npos) << row;
    }
    const auto missing = qo.run({"placed", "--missing", qo.music("b")});
    EXPECT_EQ(missing.out.substr(0, missing.out.find("  ")), qo.music("b/picnic.png"));
    EXPECT_EQ(missing.err, "qo: 1 of 2 pictures and texts found their music\n");
}

TEST(LyricsCommand, ShowsTheTagsAndThoseOfTheTextNamedForTheTrack)
{
    const QoCommand qo;
    const std::string one = qo.addTrack(
        "a/1.flac", {"artist=Z", "album=R", "title=One", "lyrics=tag\none"}, "sound.flac");
    const std::string two = qo.addTrack("a/2.mp3", {"artist=Z", "album=R", "title=Two"});
    const std::string text =
        qo.dir.write("music/a/2.txt", std::string("\xFF\xFEt\0w\0o\0\r\0\n\0!\0", 14));
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"lyrics", one}).out, "tag\none\n");
    EXPECT_EQ(qo.run({"lyrics", two}).out, "two\n!\n");
    const auto json = qo.run({"lyrics", "--json", two}).json().at(0);
    EXPECT_EQ(json["source"], "file");
    EXPECT_EQ(json["path"], text);
    fs::remove(text);
    const auto none = qo.run({"lyrics", two});
    EXPECT_EQ(none.code, 4);
    EXPECT_NE(none.err.find("there are no lyrics for " + two), std::string::npos) << none.err;
}

TEST(UntaggedCommand, ListsMusicWithWhatIsMissing)
{
    const QoCommand qo;
    qo.addTrack("a/1.mp3", {"artist=x", "album=y", "title=z"});
    qo.addTrack("b/2.mp3", {"title=z"});
    qo.addSound("c/05 - Some - Thing.mp3");
    qo.addSound("c/cover.jpg", "red.jpg");
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"untagged"}).out,
              "no artist, album         " + qo.music("b/2.mp3") + "\n" +
                  "no artist, title, album  " + qo.music("c/05 - Some - Thing.mp3") + "\n");
    const auto row = qo.run({"untagged", "--json", qo.music("c")}).json().at(0);
    EXPECT_EQ(row["missing"], (nlohmann::json{"artist", "title", "album"}));
    EXPECT_EQ(row["artistByName"], "Some");
    EXPECT_EQ(row["titleByName"], "Thing");
}

TEST(DuplicatesCommand, FindsEqualTracksAndEqualSounds)
{
    const QoCommand qo;
    qo.addTrack("a/1.mp3", {"artist=x", "album=y", "title=z"});
    qo.addTrack("b/1.flac", {"artist=X", "album=Y", "title=Z", "track=3"}, "sound.flac");
    qo.addTrack("b/2.mp3", {"artist=x", "album=y", "title=other"});
    qo.addSound("c/1.wav", "sound.wav");
    qo.addSound("c/2.wav", "sound.wav");
    ASSERT_EQ(qo.scan().code, 0);
    const auto groups = qo.run({"dup", "--json"}).json();
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0]["kind"], "track");
    EXPECT_EQ(groups[0]["files"].size(), 2U);
    EXPECT_EQ(groups[1]["kind"], "file");
    EXPECT_EQ(groups[1]["files"].at(0)["path"], qo.music("c/1.wav"));
    EXPECT_EQ(qo.run({"dup", "--files", "--json"}).json().size(), 1U);
}

TEST(LyricsCommand, TextsOfAnyMakeCanBeRead)
{
    const struct
    {
        const char* name;
        std::string bytes;
        int code;
        const char* text;
    } cases[] = {{"utf8", "Ärger\nnaïve", 0, "Ärger\nnaïve\n"},
                 {"mark", "\xEF\xBB\xBFnaïve\r\rend\n\n", 0, "naïve\n\nend\n\n"},
                 {"latin", "\xC4rger \xFC", 0, "Ärger ü\n"},
                 {"big", std::string("\xFE\xFF\0n\0\xEF", 6), 0, "nï\n"},
                 {"cut", "\xFF\xFEx", 4, "there are no lyrics for "},
                 {"pdf", "%PDF-1.4", 4, "is no plain text; a viewer can show it"},
                 {"nul", std::string("a\0b", 3), 4, "is no plain text; a viewer can show it"}};
    const QoCommand qo;
    for (const auto& c : cases)
    {
        qo.addTrack(std::string("a/") + c.name + ".mp3",
                    {"artist=Z", std::string("title=") + c.name});
        qo.dir.write(std::string("music/a/") + c.name + ".txt", c.bytes);
    }
    ASSERT_EQ(qo.scan().code, 0);
    for (const auto& c : cases)
    {
        const auto result = qo.run({"lyrics", qo.music(std::string("a/") + c.name + ".mp3")});
        EXPECT_EQ(result.code, c.code) << c.name << result.err;
        if (c.code == 0)
            EXPECT_EQ(result.out, c.text) << c.name;
        else
            EXPECT_NE(result.err.find(c.text), std::string::npos) << result.err;
    }
}
