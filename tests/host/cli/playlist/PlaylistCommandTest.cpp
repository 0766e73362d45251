#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <fstream>

namespace
{
/// A library of three songs.
class PlaylistCommand : public testing::Test
{
protected:
    PlaylistCommand()
    {
        first = qo.addTrack("Kino/Album/01.mp3", {"artist=Kino", "title=Zvezda", "year=1988"});
        second = qo.addTrack("Ann/Gold/02 Rain.mp3", {"artist=Ann", "title=Rain", "year=2001"});
        third = qo.addTrack("Ann/Gold/03.mp3", {"artist=Ann", "title=Sun", "year=2001"});
        EXPECT_EQ(qo.scan().code, 0);
    }

    /// "1 found Kino Zvezda" for each entry.
    std::string show(const std::string& name) const
    {
        std::string text;
        for (const auto& record : qo.run({"playlist", "show", name, "--json"}).json())
            text += std::to_string(record["position"].get<int>()) + " " +
                    record["state"].get<std::string>() + " " + record["artist"].get<std::string>() +
                    " " + record["title"].get<std::string>() + "\n";
        return text;
    }

    const QoCommand qo;
    std::string first;
    std::string second;
    std::string third;
};

TEST_F(PlaylistCommand, SongsAreAddedTakenOutAndPutInOrder)
{
    qo.expect({"playlist", "new", "It's 100%", "artist:ann"}, 0, "made \"It's 100%\" with 2 songs");
    qo.expect({"playlist", "add", "it's 100%", first, "--at", "1"}, 0, "it has 3 songs");
    qo.expect({"playlist", "add", "#1", "title:sun"}, 0, "it has 4 songs");
    EXPECT_EQ(show("It's 100%"),
              "1 found Kino Zvezda\n2 found Ann Rain\n3 found Ann Sun\n4 found Ann Sun\n");
    qo.expect({"playlist", "move", "#1", "1,4", "2"}, 0, "moved 2 songs");
    EXPECT_EQ(show("#1"),
              "1 found Ann Rain\n2 found Kino Zvezda\n3 found Ann Sun\n4 found Ann Sun\n");
    qo.expect({"playlist", "remove", "#1", "--at", "1,3-4"}, 0, "it has 1 song");
    qo.expect({"playlist", "remove", "#1", "kino"}, 0, "it has 0 songs");
    qo.expectRefusals("playlist",
                      {{{"new", "IT'S 100%"}, 2, "already"},
                       {{"new", "x\xFF"}, 2, "has to be UTF-8"},
                       {{"new", "x", "nothing-fits"}, 4, "fits"},
                       {{"add", "#1"}, 2, "say which files"},
                       {{"add", "Its 100", "kino"}, 4, "did you mean \"It's 100%\"?"},
                       {{"remove", "#1"}, 2, "say which songs"},
                       {{"move", "#1", "1", "1"}, 2, "there is no position 1"},
                       {{"move", "#1", "x", "1"}, 2, "write numbers and ranges"},
                       {{"move", "#1", "", "1"}, 2, "write numbers and ranges"},
                       {{"rm", "It's 100%"}, 7, "with its 0 songs will be removed"}});
    qo.expect({"playlist", "rm", "It's 100%", "--yes"}, 0, "removed");
    EXPECT_EQ(qo.run({"playlist", "ls"}).out, "");
}

TEST_F(PlaylistCommand, LivingListIsLookedUpWhenItIsShown)
{
    qo.expect({"playlist", "new", "New", "--query", "year:2001, kino"}, 0, "finds 3 songs now");
    EXPECT_EQ(qo.run({"tag", "set", third, "year=1960"}).code, 0);
    EXPECT_EQ(qo.run({"tag", "write", third}).code, 0);
    EXPECT_EQ(show("new"), "1 found Ann Rain\n2 found Kino Zvezda\n");
    EXPECT_TRUE(contains(qo.run({"playlist", "export", "New", "-"}).out, second));
    qo.expectRefusals("playlist",
                      {{{"add", "New", "kino"}, 2, "is a living list"},
                       {{"check", "New"}, 2, "is a living list"},
                       {{"new", "a", "--query", "nofield:x"}, 2, "nofield"},
                       {{"new", "a", "--query", "../x kino"}, 2, "is looked up from any folder"},
                       {{"new", "a", "kino", "--query", "x"}, 2, "--query"}});
    qo.expect({"playlist", "rename", "New", "Old"}, 0, "renamed");
    EXPECT_EQ(qo.run({"playlist", "ls"}).out, "Old  living  year:2001, kino\n");
}

TEST_F(PlaylistCommand, RowThatIsGivenToAnotherSongIsNamedAndRepaired)
{
    EXPECT_EQ(qo.run({"playlist", "new", "x", "artist:ann"}).code, 0);
    // The record of the last row goes, and the next file gets its id.
    qo.runSql("DELETE FROM FILE_T WHERE FT_PATH LIKE '%Rain%'; UPDATE FILE_T SET FT_ID = 900 WHERE "
              "FT_PATH LIKE '%03.mp3'");
    EXPECT_EQ(qo.run({"scan"}).code, 0);
    const QoCommand::Result check = qo.run({"playlist", "check"});
    EXPECT_EQ(check.code, 6) << check.err;
    EXPECT_TRUE(contains(check.out, "x 1: \"Ann - Rain\": "));
    EXPECT_TRUE(contains(check.out, "x 2: \"Ann - Sun\": its file is no longer in"));
    const QoCommand::Result dry = qo.run({"playlist", "repair", "--dry-run"});
    EXPECT_TRUE(contains(dry.err, "would have found 2 songs"));
    EXPECT_EQ(qo.run({"playlist", "check"}).code, 6);
    const QoCommand::Result repair = qo.run({"playlist", "repair"});
    EXPECT_EQ(repair.code, 0) << repair.err;
    EXPECT_TRUE(contains(repair.out, "x 1: \"Ann - Rain\": found by path: " + second));
    EXPECT_TRUE(contains(repair.out, "x 2: \"Ann - Sun\": found by lasting id: " + third));
    EXPECT_EQ(show("x"), "1 found Ann Rain\n2 found Ann Sun\n");
    EXPECT_EQ(qo.run({"playlist", "check"}).code, 0);
}

/// As a player on another system writes it.
constexpr const char* windowsList = "\xEF\xBB\xBF#EXTM3U\r\n"
                                    "#EXTINF:1,Kino - Zvezda\r\n"
                                    "D:\\Musik\\Kino\\Album\\01.mp3\r\n"
                                    "#EXTINF:1,Ann - Rain\r\n"
                                    "\\\\nas\\old\\rain.mp3\r\n"
                                    "#EXTINF:-1,Night Radio\r\n"
                                    "http://radio.example/stream\r\n"
                                    "music/Ann/Gold/03.mp3\r\n";

TEST_F(PlaylistCommand, ListOfAnotherPlayerComesInWhole)
{
    const std::string file = qo.dir.write("Best of.m3u8", windowsList);
    const QoCommand::Result plain = qo.run({"playlist", "import", file});
    EXPECT_EQ(plain.code, 6);
    EXPECT_TRUE(contains(plain.err, "imported 4 songs as \"Best of\""));
    EXPECT_TRUE(contains(plain.err, "2: Ann - Rain  \\\\nas\\old\\rain.mp3"));
    EXPECT_EQ(show("Best of"),
              "1 found Kino Zvezda\n2 text Ann Rain\n3 text  Night Radio\n4 found Ann Sun\n");
    qo.expect({"playlist", "import", file}, 2, "already");
    qo.expect({"playlist", "import", file, "--replace"}, 7, "will be replaced");
    qo.expect({"playlist", "import", file, "--replace", "--match", "--yes"}, 6, "by their tags");
    EXPECT_EQ(show("Best of"),
              "1 found Kino Zvezda\n2 found Ann Rain\n3 text  Night Radio\n4 found Ann Sun\n");
    EXPECT_EQ(qo.run({"playlist", "check"}).code, 0) << "a web address is no lost file";

    // Every format that goes out comes in again the same.
    for (const char* const name : {"a.m3u", "a.m3u8", "a.pls", "a.xspf"})
        for (const std::string& style :
             {std::string("--yes"), std::string("--absolute"), std::string("--addresses")})
        {
            const std::string out = qo.dir.path(name);
            qo.expect({"playlist", "export", "Best of", out, style, "--yes"}, 6, "written 4 songs");
            qo.expect({"playlist", "import", out, "--name", "again"}, 6, "");
            EXPECT_EQ(show("again"), show("Best of")) << name << style;
            qo.expect({"playlist", "rm", "again", "--yes"}, 0, "");
        }
    EXPECT_TRUE(contains(qo.dir.read("a.m3u"), "file:///"));
}

TEST_F(PlaylistCommand, CopiesStandBesideTheirList)
{
    EXPECT_EQ(qo.run({"playlist", "new", "AC/DC", "--sort", "title"}).code, 2);
    qo.expect({"playlist", "new", "AC/DC", qo.music(), "--sort", "title"}, 0, "with 3 songs");
    const std::string stick = qo.dir.path("stick");
    qo.expect(
        {"playlist", "export", "AC/DC", "--copy-to", stick, "--dry-run"}, 0, "02 Ann - Sun.mp3");
    EXPECT_FALSE(std::filesystem::exists(stick));
    qo.expect({"playlist", "export", "AC/DC", "--copy-to", stick}, 0, "copied 3 songs");
    EXPECT_TRUE(contains(qo.dir.read("stick/AC_DC.m3u8"), "\n01 Ann - Rain.mp3\n"));
    EXPECT_TRUE(qo.dir.read("stick/03 Kino - Zvezda.mp3") ==
                qo.dir.read("music/Kino/Album/01.mp3"));
    qo.expect(
        {"playlist", "export", "AC/DC", "--copy-to", stick, "--yes"}, 0, "3 were there already");
    std::filesystem::remove_all(stick);
    qo.expect({"playlist", "export", "AC/DC", qo.dir.path("no/x.pls"), "--copy-to", stick}, 1, "");
    EXPECT_FALSE(std::filesystem::exists(stick)) << "no copies without a place for the list";
    qo.expect({"playlist", "export", "AC/DC", "--copy-to", first + "/x", "--dry-run"},
              1,
              first + " cannot be used");

    std::filesystem::rename(third, qo.dir.path("elsewhere.mp3"));
    std::filesystem::create_symlink("../../../elsewhere.mp3", third);
    qo.expect({"playlist", "export", "AC/DC", "--copy-to", stick}, 0, "copied 3 songs");
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(stick + "/02 Ann - Sun.mp3")));
    std::filesystem::remove(second);
    std::filesystem::create_directory(second);
    std::filesystem::remove_all(stick);
    qo.expect({"playlist", "export", "AC/DC", "--copy-to", stick, "--dry-run"},
              6,
              second + " could not be copied: it is no file");
    qo.expect({"playlist", "export", "AC/DC", "--copy-to", stick}, 6, "could not be copied");
}

/// A music server reads the list and knows the songs in it.
TEST_F(PlaylistCommand, MusicServerPlaysTheExportedList)
{
    if (std::system("command -v mpd >/dev/null && command -v bash >/dev/null") != 0) // NOLINT
        GTEST_SKIP() << "mpd is not installed";
    EXPECT_EQ(qo.run({"playlist", "new", "x", qo.music()}).code, 0);
    qo.dir.makeFolder("lists");
    EXPECT_EQ(qo.run({"playlist", "export", "x", qo.music("x.m3u8")}).code, 0);
    const std::string port = std::to_string(20000 + ::getpid() % 20000);
    qo.dir.write("mpd.conf",
                 "music_directory \"" + qo.music() + "\"\nplaylist_directory \"" +
                     qo.dir.path("lists") + "\"\ndb_file \"" + qo.dir.path("mpd.db") +
                     "\"\nlog_file \"" + qo.dir.path("mpd.log") +
                     "\"\nbind_to_address \"127.0.0.1\"\nport \"" + port +
                     "\"\nzeroconf_enabled \"no\"\naudio_output {\ntype \"null\"\nname \"n\"\n}\n");
    const std::string script = "cd '" + qo.dir.path() +
                               "'; mpd --no-daemon mpd.conf >/dev/null 2>&1 & pid=$!\n"
                               "for i in $(seq 50); do exec 3<>/dev/tcp/127.0.0.1/" +
                               port +
                               " && break; sleep 0.1; done 2>/dev/null\n"
                               "printf 'update\\n' >&3; sleep 1\n"
                               "printf 'load x.m3u8\\nplaylistinfo\\nclose\\n' >&3; timeout 3 cat "
                               "<&3; kill $pid; wait $pid";
    qo.dir.write("script", script);
    const std::string call = "bash '" + qo.dir.path("script") + "' >'" + qo.dir.path("said") + "'";
    (void)std::system(call.c_str()); // NOLINT(concurrency-mt-unsafe)
    const std::string said = qo.dir.read("said");
    for (const char* title : {"Title: Rain", "Title: Sun", "Title: Zvezda", "Pos: 2"})
        EXPECT_TRUE(contains(said, title));
}

TEST_F(PlaylistCommand, SessionsAreListedWithTheirFiles)
{
    EXPECT_EQ(qo.run({"session"}).out, "");
    qo.runSql("INSERT INTO SESSION_T VALUES (1, 'Night', 8, 133000000000000000, 0);"
              "UPDATE FILE_T SET FT_SESSION = 1 WHERE FT_PATH LIKE '%Rain%'");
    const auto sessions = qo.run({"session", "ls", "--json"}).json();
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions[0]["name"], "Night");
    EXPECT_EQ(sessions[0]["files"], 1);
    EXPECT_EQ(qo.run({"session", "show", "1"}).out, second + "\n");
    qo.expect({"session", "show", "2"}, 4, "there is no session 2");
}
} // namespace
