#include "host/cli/QoCommand.h"
#include "support/Contains.h"

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
        const char* artist;
        const char* album;
        const char* by;
        const char* reason;
    } cases[] = {
        {"a/folder.jpg", "Zebra", "Rain", "folder", "the folder agrees on the artist \"Zebra\""},
        {"a/Zebra - Two.txt", "Zebra", "Rain", "name", "its name fits \"2.mp3\" by"},
        {"b/4.jpg", "Pear", "Moon", "exactName", "named like \"4.mp3\""},
        {"b/picnic.png", "", "", "", "more than one artist, as \"Apple\" and \"Pear\""}};
    for (const auto& c : cases)
    {
        const auto row = rowOf(qo, "placed", qo.music(c.file));
        ASSERT_TRUE(row.is_object()) << c.file;
        EXPECT_EQ(row["placed"], *c.by != 0) << row;
        EXPECT_EQ(row["artist"], c.artist) << row;
        EXPECT_EQ(row["album"], c.album) << row;
        EXPECT_EQ(row["by"], c.by) << row;
        EXPECT_TRUE(contains(row["reason"].get<std::string>(), c.reason));
    }
    const auto missing = qo.run({"placed", "--missing", qo.music("b")});
    EXPECT_EQ(missing.out.substr(0, missing.out.find("  ")), qo.music("b/picnic.png"));
    EXPECT_EQ(missing.err, "qo: 1 of 2 pictures and texts found their music\n");
}

TEST(PlacedCommand, WhatAScanPlacedByItsNameVotesInTheNextThatReadsIt)
{
    const QoCommand qo;
    for (const char* name : {"1.mp3", "2.mp3", "3.mp3", "4.mp3"})
        qo.addTrack("a/" + std::string(name), {"artist=Zebra", "album=Rain"});
    qo.addSound("a/Rain front.jpg", "red.jpg");
    qo.addSound("a/folder.jpg", "red.jpg");
    const auto placed = [&qo](const std::vector<std::string>& words)
    {
        EXPECT_EQ(qo.run(words).code, 0);
        return std::make_pair(rowOf(qo, "placed", qo.music("a/Rain front.jpg"))["placed"] == true,
                              rowOf(qo, "placed", qo.music("a/folder.jpg"))["placed"] == true);
    };
    EXPECT_EQ(placed({"scan", qo.music()}), std::make_pair(true, false)) << "2 of 6 went without";
    EXPECT_EQ(placed({"scan"}), std::make_pair(true, false)) << "nothing changed";
    EXPECT_EQ(placed({"scan", "--deep"}), std::make_pair(true, true)) << "1 of 6 goes without";
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

TEST(LyricsCommand, AreTheTagsOrThoseOfATextOfAnyMakeNamedForTheTrack)
{
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"utf8", "Ärger\nnaïve"},
        {"mark", "\xEF\xBB\xBFnaïve\r\rend\n\n"},
        {"latin", "\xC4rger \xFC"},
        {"big", std::string("\xFE\xFF\0n\0\xEF", 6)},
        {"little", std::string("\xFF\xFEt\0\r\0\n\0!\0", 10)},
        {"cut", "\xFF\xFEx"},
        {"pdf", "%PDF-1.4"},
        {"nul", std::string("a\0b", 3)}};
    const QoCommand qo;
    const std::string tagged = qo.addTrack(
        "b/1.flac", {"artist=Z", "album=R", "title=One", "lyrics=tag\none"}, "sound.flac");
    for (const auto& [name, bytes] : texts)
    {
        qo.addTrack("a/" + name + ".mp3", {"artist=Z", "title=" + name});
        qo.dir.write("music/a/" + name + ".txt", bytes);
    }
    ASSERT_EQ(qo.scan().code, 0);
    const auto track = [&](const char* name)
    { return std::vector<std::string>{qo.music(std::string("a/") + name + ".mp3")}; };
    qo.expectRefusals("lyrics",
                      {{{tagged}, 0, "tag\none\n"},
                       {track("utf8"), 0, "Ärger\nnaïve\n"},
                       {track("mark"), 0, "naïve\n\nend\n\n"},
                       {track("latin"), 0, "Ärger ü\n"},
                       {track("big"), 0, "nï\n"},
                       {track("little"), 0, "t\n!\n"},
                       {track("cut"), 4, "there are no lyrics for " + track("cut")[0]},
                       {track("pdf"), 4, "is no plain text; a viewer can show it"},
                       {track("nul"), 4, "is no plain text; a viewer can show it"}});
    EXPECT_EQ(qo.run({"lyrics", tagged}).out, "tag\none\n") << "nothing but the text";
    const auto json = qo.run({"lyrics", "--json", track("big")[0]}).json().at(0);
    EXPECT_EQ(json["source"], "file");
    EXPECT_EQ(json["path"], qo.music("a/big.txt"));
    fs::remove(qo.music("a/big.txt"));
    qo.expectRefusals("lyrics", {{track("big"), 4, "there are no lyrics for "}});
}
