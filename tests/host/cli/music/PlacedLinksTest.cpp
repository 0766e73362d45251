#include "host/cli/QoCommand.h"
#include "support/Contains.h"

namespace fs = std::filesystem;

namespace
{
void expectPlaced(const QoCommand& qo, bool isPlaced, const char* artist, const std::string& reason)
{
    const auto row = qo.run({"placed", "--json"}).json().at(0);
    EXPECT_EQ(row["placed"], isPlaced) << row;
    EXPECT_EQ(row["artist"], artist) << row;
    EXPECT_TRUE(contains(row["reason"].get<std::string>(), reason));
    qo.expect(
        {"placed"}, 0, std::string(isPlaced ? "1" : "0") + " of 1 pictures and texts found their");
}
} // namespace

TEST(PlacedLinks, OwnersHaveToBeThere)
{
    const QoCommand qo;
    qo.addTrack("a/1.mp3", {"artist=Old", "album=One", "title=x"});
    qo.addTrack("a/2.mp3", {"artist=Old", "album=One", "title=y"});
    qo.addTrack("a/3.mp3", {"artist=Old", "album=One", "title=z"});
    qo.addTrack("a/4.mp3", {"artist=Old", "album=One", "title=z"});
    qo.addSound("a/cover.jpg", "red.jpg");
    ASSERT_EQ(qo.scan().code, 0);
    expectPlaced(qo, true, "Old", "the folder agrees on the artist \"Old\"");
    for (const char* name : {"1", "2", "3", "4"})
    {
        const std::string file = qo.music("a/") + name + ".mp3";
        ASSERT_EQ(qo.run({"tag", "set", file, "artist=New"}).code, 0);
        ASSERT_EQ(qo.run({"tag", "write", file}).code, 0);
    }
    ASSERT_EQ(qo.scan().code, 0);
    const std::string stray = "no track has the artist \"Old\" that its record names";
    expectPlaced(qo, false, "", stray);
    for (const char* name : {"1", "2", "3", "4"})
        fs::remove(qo.music("a/") + name + ".mp3");
    ASSERT_EQ(qo.scan().code, 0);
    expectPlaced(qo, false, "", stray);
}

TEST(PlacedLinks, CoverThatCameAheadOfItsTracksIsPlacedByADeepScan)
{
    const struct
    {
        const char* album;
        const char* reason;
    } cases[] = {{"Quiet", "the folder agrees on the artist \"Z\""},
                 {"Cover", "its name fits \"1.mp3\" by album"}};
    for (const auto& c : cases)
    {
        const QoCommand qo;
        qo.addSound("a/cover.jpg", "red.jpg");
        ASSERT_EQ(qo.scan().code, 0);
        for (const char* name : {"1", "2", "3", "4"})
            qo.addTrack(std::string("a/") + name + ".mp3",
                        {"artist=Z", std::string("album=") + c.album, "title=x"});
        for (int i = 0; i < 2; ++i)
        {
            ASSERT_EQ(qo.scan().code, 0);
            expectPlaced(qo, false, "", "\"qo scan --deep\" gives it the artist \"Z\"");
        }
        ASSERT_EQ(qo.run({"scan", "--deep"}).code, 0);
        expectPlaced(qo, true, "Z", c.reason);
    }
}
