#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <algorithm>
#include <set>

namespace
{
/// A call of every command but those that have no JSON and "watch", which ends only when stopped.
constexpr const char* calls[] = {"scan",
                                 "load",
                                 "doctor --fix",
                                 "roots",
                                 "roots ls",
                                 "roots add DIR/more",
                                 "roots rm DIR/more",
                                 "status",
                                 "stats",
                                 "ls",
                                 "tree",
                                 "info SONG",
                                 "artists",
                                 "genres",
                                 "albums",
                                 "tracks",
                                 "lyrics SONG",
                                 "placed",
                                 "untagged",
                                 "dup",
                                 "view",
                                 "mark SONG",
                                 "marked",
                                 "unmark SONG",
                                 "rate SONG 4",
                                 "rate SONG 3 --write",
                                 "played SONG",
                                 "tag show SONG",
                                 "tag set SONG year=2001",
                                 "tag ls",
                                 "tag write --dry-run SONG",
                                 "tag write SONG",
                                 "tag set SONG year=2002",
                                 "tag revert SONG",
                                 "tag encoding SONG",
                                 "cover set SONG --image DIR/front.jpg --dry-run",
                                 "cover set SONG --image DIR/front.jpg",
                                 "cover show SONG",
                                 "cover extract SONG --to DIR/more",
                                 "cover remove SONG",
                                 "playlist new list SONG",
                                 "playlist add list SONG",
                                 "playlist move list 1 2",
                                 "playlist remove list --at 2",
                                 "playlist show list",
                                 "playlist export list DIR/list.m3u",
                                 "playlist export list --copy-to DIR/more",
                                 "playlist import DIR/list.m3u --name more",
                                 "playlist check",
                                 "playlist repair",
                                 "playlist rename more second",
                                 "playlist rm second",
                                 "playlist",
                                 "playlist ls",
                                 "session",
                                 "session ls",
                                 "session show 1",
                                 "rule",
                                 "rule new mine",
                                 "rule copy mine second",
                                 "rule ls",
                                 "rule show mine",
                                 "rule check mine",
                                 "rule test artist-track SONG",
                                 "rule rm mine",
                                 "reorg plan --rule artist-track",
                                 "reorg apply --last --dry-run",
                                 "reorg apply --last",
                                 "reorg log",
                                 "reorg undo --dry-run",
                                 "reorg undo",
                                 "reorg forget none",
                                 "mv SONG DIR/music/moved.mp3",
                                 "undo",
                                 "runs",
                                 "add DIR/other.mp3 --to DIR/music",
                                 "rm SONG",
                                 "config",
                                 "config ls",
                                 "config get Language",
                                 "config set Language de",
                                 "config unset Language",
                                 "log",
                                 "plugin login NAS --folder DIR/more",
                                 "plugin put DIR/other.mp3 --to NAS/far",
                                 "plugin set NAS --music far",
                                 "plugin",
                                 "plugin ls",
                                 "plugin browse NAS",
                                 "plugin scan NAS",
                                 "ls --on NAS",
                                 "plugin get NAS far/other.mp3 --to DIR/more",
                                 "plugin rm NAS far",
                                 "plugin logout NAS",
                                 "device",
                                 "device ls",
                                 "device adopt none",
                                 "device forget none",
                                 "device info none",
                                 "device eject none",
                                 "device browse none",
                                 "device pull none a.mp3 --to DIR",
                                 "device push DIR/other.mp3 --to none",
                                 "search",
                                 "search ls",
                                 "search clear",
                                 "extract write DIR/mine.txt",
                                 "extract show DIR/mine.txt",
                                 "share invite Ann",
                                 "share ls",
                                 "share revoke Ann",
                                 "share accept DIR/link.txt --as Ben",
                                 "share check DIR/link.txt",
                                 "share forget Ben",
                                 "db check",
                                 "db snapshots",
                                 "db migrate",
                                 "db backup",
                                 "db backup DIR/copy.db",
                                 "db repair",
                                 "db restore",
                                 "version",
                                 "help"};

/// Its words; of them SONG is the path of a song, and DIR begins paths of this folder.
std::vector<std::string>
wordsOf(const char* call, const std::string& song, const std::string& folder)
{
    std::vector<std::string> words;
    std::istringstream text(call);
    for (std::string word; text >> word;)
        words.push_back(word == "SONG"            ? song
                        : word.starts_with("DIR") ? folder + word.substr(3)
                                                  : word);
    return words;
}
} // namespace

TEST(Json, EveryCommandGivesOneObjectALineOrRefuses)
{
    const QoCommand qo;
    const std::string song =
        qo.addTrack("line\nfeed.mp3", {"artist=Ki\nno", "title=Song", "lyrics=a\nb"});
    qo.addSound("plain.mp3");
    qo.addSound("../other.mp3");
    qo.dir.write("front.jpg",
                 std::string("\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0\xff\xd9", 22));
    qo.dir.makeFolder("more");
    const QoCommand other;
    other.addSound("a.mp3");
    ASSERT_EQ(other.scan().code, 0);
    qo.dir.write("link.txt", other.run({"share", "invite", "Ann"}).out);
    ASSERT_EQ(qo.scan().code, 0);
    qo.runSql("INSERT INTO SESSION_T VALUES (1, 'a session', 8, 0, 0)");

    // What follows the disk until it is stopped, what needs a server, and texts of another kind,
    // which are refused.
    std::set<std::string> named = {"qo", "qo watch", "qo tag", "qo cover", "qo reorg", "qo db"};
    named.insert({"qo db dump", "qo extract", "qo share", "qo search get"});
    // What needs two people.
    named.insert({"qo share serve", "qo share scan", "qo share browse", "qo share get"});
    for (const char* const line : calls)
    {
        const std::vector<std::string> words = wordsOf(line, song, qo.dir.path());
        std::vector<std::string> call = words;
        call.insert(call.begin(), {"--json", "--yes"});
        const QoCommand::Result result = qo.run(call);
        const bool isThere = std::ranges::find(words, "none") == words.end();
        EXPECT_EQ(result.code == 0, isThere) << testing::PrintToString(words) << result.err;
        std::istringstream lines(result.out);
        for (std::string text; std::getline(lines, text);)
            EXPECT_TRUE(nlohmann::json::accept(text) && text[0] == '{')
                << testing::PrintToString(words) << text;
        named.insert("qo " + words[0]);
        if (words.size() > 1)
            named.insert("qo " + words[0] + " " + words[1]);
    }
    qo.expect({"db", "dump", "--json"}, 2, "has no output as JSON");
    qo.expect({"completion", "bash", "--json"}, 2, "has no output as JSON");
    for (const auto& record : qo.run({"help", "--json"}).json())
    {
        const std::string command = record["command"];
        EXPECT_TRUE(named.contains(command) || command.starts_with("qo completion")) << command;
    }
}
