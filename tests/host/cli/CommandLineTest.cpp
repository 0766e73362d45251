#include "host/cli/QoCommand.h"
#include "support/Contains.h"
#include "support/DocExample.h"
#include "types/Utf.h"

#include <fstream>
#include <regex>

TEST(CommandLine, FailuresHaveTheirExitCodeAndOneSentence)
{
    const QoCommand qo;
    const std::vector<QoCommand::Refusal> cases = {
        {{}, 2, "Usage: qo"},
        {{"sing"}, 2, "there is no command \"sing\""},
        {{"scna"}, 2, "did you mean \"scan\"?"},
        {{"help", "albus"}, 2, "did you mean \"albums\"?"},
        {{"ls", "--sing"}, 2, "--sing"},
        {{"scan"}, 2, "there is no folder to scan yet"},
        {{"scan", "/nowhere"}, 4, "/nowhere cannot be used: No such file or directory"},
        {{"scan", "/dev/null"}, 1, "/dev/null is not a folder"},
        {{"scan", ""}, 2, "an empty path names nothing"},
        {{"info", "/nowhere"}, 4, "/nowhere is not there"},
        {{"info", "/no\nwhere"}, 4, "qo: /no\\x0awhere is not there\n"},
        {{"tree", "/nowhere"}, 4, "is no folder of the collection"},
        {{"config", "get", "Nothing"}, 4, "there is no setting \"Nothing\""},
        {{"config", "get", "Tracelevel"}, 4, "did you mean \"TraceLevel\"?"},
        {{"config", "set", "TraceLevel", "Loud"}, 2, "there are None, Error"},
        {{"config", "set", "SendUsageStatistics", "maybe"}, 2, "it is on (1, yes) or off (0, no)"},
        {{"config", "set", "MaxFilesBurn", "many"}, 2, "it is a whole number"},
        {{"config", "set", "UnrelMaxPercent", "101"}, 2, "0 to 100"},
        {{"config", "set", "Language", "English"}, 2, "two letters"},
        {{"config", "set", "Language", "xx"}, 2, "two letters"},
        {{"config", "set", "MusicCollectionDirsCount", "7"}, 2, "is kept by \"qo roots\""},
        {{"roots", "add", "--type", "jazz", "/"}, 2, "jazz"},
        {{"roots", "add", "/"}, 7, "/ holds folders of the system"},
        {{"scan", "/proc"}, 7, "/proc holds folders of the system"},
        {{"mv", "/x"}, 2, "name what is to be moved, and after it where to"},
        {{"mv", "/x", "/y"}, 4, "/x cannot be moved: No such file or directory"},
        {{"rm", "/x"}, 4, "/x cannot be put into the trash: No such file or directory"},
        {{"add", "--move", "/x"}, 2, "--move requires --to"},
        {{"watch"}, 2, "there is no folder to watch yet"},
        {{"watch", "--every", "0"}, 2, "--every"},
        {{"lyrics", "/nowhere"}, 4, "/nowhere is not there"},
        {{"artists", "--artist", "x"}, 4, "there is no artist \"x\""},
        {{"help", "sing"}, 2, "there is no command \"sing\""}};
    qo.expectRefusals("", cases);
}

TEST(CommandLine, CommandsExplainThemselves)
{
    const QoCommand qo;
    EXPECT_TRUE(contains(qo.run({"help", "tag", "set"}).out, "Usage: qo tag set"));
    EXPECT_EQ(qo.run({"tag", "set", "--help"}).out, qo.run({"help", "tag", "set"}).out);
}

TEST(CommandLine, ReadmeListsTheCommandsAsTheHelpDoes)
{
    const std::string help = QoCommand().run({"help"}).out;
    const std::size_t start = help.find("Collection:\n");
    ASSERT_NE(start, std::string::npos);
    const std::string list = help.substr(start, help.find("\nIdeas:") - start);
    const auto narrow = [](const std::string& text)
    { return std::regex_replace(text, std::regex(" {2,}"), "  "); };
    EXPECT_EQ(narrow(docExample("../README.md", "commands")), narrow(list));
}

TEST(CommandLine, FirstStartKeepsStatisticsAtHomeAndEverythingPrivateAndTellsWhereItIs)
{
    namespace fs = std::filesystem;
    const QoCommand qo;
    EXPECT_EQ(qo.run({"status", "--json"}).json().at(0)["databaseExists"], false);
    qo.addTrack("1.mp3", {"artist=Kino", "title=Song", "genre=Rock"});
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"config", "get", "SendUsageStatistics"}).out, "0\n");
    for (const auto& entry : fs::recursive_directory_iterator(qo.dir.path("data")))
        EXPECT_EQ(entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all),
                  fs::perms::none)
            << entry.path();
    EXPECT_FALSE(fs::exists(qo.dir.path("home")));
    const auto status = qo.run({"status", "--json"}).json().at(0);
    EXPECT_EQ(status["database"], qo.database());
    EXPECT_EQ(status["files"], 1);
    EXPECT_EQ(status["roots"].at(0)["path"], qo.music());
    EXPECT_EQ(status["sendUsageStatistics"], false);

    // Also where the user wants it counted, it stays in a file.
    const std::string usage = qo.dir.path("data/Qorganizer/usage.json");
    EXPECT_FALSE(fs::exists(usage));
    ASSERT_EQ(qo.run({"config", "set", "SendUsageStatistics", "1"}).code, 0);
    for (const int moved : {1, 2})
    {
        ASSERT_EQ(qo.scan().code, 0);
        const std::string rule = moved == 1 ? "artist-track" : "velmora-artist-track";
        ASSERT_EQ(qo.run({"reorg", "plan", "--rule", rule}).code, 0);
        ASSERT_EQ(qo.run({"reorg", "apply", "--last"}).code, 0);
        auto counted = nlohmann::json::parse(qo.dir.read("data/Qorganizer/usage.json"));
        EXPECT_EQ(counted["NumberOfFilesInCollectionAtEnd"], 1);
        EXPECT_EQ(counted["Reorganize"], moved) << counted;
        EXPECT_EQ(counted["OperationOnSelectedTracks"], moved);
    }
}

TEST(ConfigCommand, FoldersAreOrdinaryPathsAndPasswordsStayHidden)
{
    const QoCommand qo;
    ASSERT_EQ(qo.run({"config", "set", "ExportFolder", qo.music("a=b ")}).code, 0);
    EXPECT_EQ(qo.run({"config", "get", "ExportFolder"}).out, qo.music("a=b ") + "\n");
    ASSERT_EQ(qo.run({"config", "set", "LoginPassword", "line\nfeed"}).code, 0);
    EXPECT_EQ(qo.run({"config", "get", "LoginPassword"}).out, "line\\x0afeed\n");
    const std::string all = qo.run({"config", "ls"}).out;
    EXPECT_EQ(all.find("feed"), std::string::npos);
    EXPECT_TRUE(contains(all, "MaxFilesSavePictures = 50  (default)"));
    EXPECT_EQ(qo.run({"config", "set", "--dry-run", "Language", "de"}).code, 0);
    EXPECT_EQ(qo.run({"config", "get", "Language"}).out, "en\n");
    EXPECT_EQ(qo.run({"config", "set", "UseImportRule", "no"}).code, 0);
    EXPECT_EQ(qo.run({"config", "get", "UseImportRule"}).out, "0\n");
    EXPECT_EQ(qo.run({"config", "unset", "UseImportRule"}).code, 0);
    EXPECT_EQ(qo.run({"config", "get", "UseImportRule"}).out, "1\n");
    EXPECT_FALSE(contains(qo.dir.read("data/settings"), "UseImportRule"));
}

TEST(LogCommand, ShowsTheLastRunDownToALevelAndNothingStopsWhereThereCanBeNone)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    EXPECT_TRUE(contains(qo.run({"log"}).err, "there is no log"));
    ASSERT_EQ(qo.run({"config", "set", "TraceLevel", "Verbose"}).code, 0);
    ASSERT_EQ(qo.scan().code, 0);
    const std::string load = " DBG: CQoCollection::load : load coll succeeded\n";
    EXPECT_TRUE(contains(qo.run({"log"}).out, load));
    const std::string timings = qo.run({"log", "--level", "info"}).out;
    EXPECT_TRUE(contains(timings, " INF: PROFILE CQoCollection::load() - BEGIN\n"));
    EXPECT_FALSE(contains(timings, " DBG: "));

    std::filesystem::remove_all(qo.dir.path("data/state"));
    qo.dir.write("data/state", "a file in the folder's place");
    EXPECT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.paths().size(), 1U);
}

TEST(DatabaseCommand, CheckFindsDamageAndDumpMakesTheDatabaseAgain)
{
    const QoCommand qo;
    EXPECT_EQ(qo.run({"db", "check"}).code, 4);
    EXPECT_FALSE(std::filesystem::exists(qo.database()));
    qo.addSound("it's.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"db", "check"}).code, 0);
    const std::string dump = qo.run({"db", "dump"}).out;
    EXPECT_TRUE(contains(dump, "\\music\\it''s.mp3'"));
    EXPECT_TRUE(contains(dump, "CREATE INDEX IDX_FT_SESSION"));

    std::fstream file(qo.database(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4096 + 100);
    file << std::string(8000, '\xAA');
    file.close();
    EXPECT_EQ(qo.run({"db", "check"}).code, 1);
}

TEST(DatabaseCommand, DamageIsRefusedAndRepairedOrASnapshotRestored)
{
    const QoCommand qo;
    qo.addSounds("a", 300);
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"db", "restore"}).code, 4);
    qo.addSound("b.mp3");
    ASSERT_EQ(qo.run({"scan"}).code, 0);
    const auto snapshots = qo.run({"db", "snapshots", "--json"}).json();
    ASSERT_EQ(snapshots.size(), 1U) << "of the first change of the day";
    EXPECT_EQ(snapshots[0]["files"], 300);
    const auto ids = qo.ids();
    ASSERT_EQ(ids.size(), 301U);

    std::fstream file(qo.database(), std::ios::in | std::ios::out | std::ios::binary);
    file << std::string(100, 'x');
    file.close();
    const std::string damaged = qo.dir.read("data/Qorganizer/qodb");
    for (const char* command : {"ls", "scan", "load"})
    {
        qo.expect({command}, 1, "\"qo db repair\" keeps what can be read");
    }
    EXPECT_EQ(qo.run({"db", "repair", "--dry-run"}).code, 6);
    EXPECT_EQ(qo.dir.read("data/Qorganizer/qodb"), damaged);
    // The header is gone, so nobody can tell whether that is all.
    qo.expect({"db", "repair"}, 6, "the damaged database is kept as ");
    EXPECT_EQ(qo.ids(), ids);
    qo.expect({"db", "repair"}, 0, "is sound");
    EXPECT_EQ(qo.run({"db", "restore", "--dry-run"}).code, 0);
    EXPECT_EQ(qo.ids().size(), 301U);
    qo.expect({"db", "restore", snapshots[0]["name"]}, 0, "the database as it was is kept as ");
    EXPECT_EQ(qo.ids().size(), 300U);
    qo.expect({"db", "restore", "nowhere"}, 4, "there is no snapshot nowhere");
}

TEST(LogCommand, ReadsTheLinesThatTheDocumentShows)
{
    const QoCommand qo;
    const std::vector<std::string> lines = docExampleLines("log-files.md", "log");
    ASSERT_EQ(lines.size(), 2U);
    CString text(u"\xFEFF");
    for (const std::string& line : lines)
        text += qo::fromUtf8(line) + u"\r\n" + u"continued\r\n";
    const std::string bytes(reinterpret_cast<const char*>(text.GetString()),
                            static_cast<std::size_t>(text.GetLength()) * 2);
    qo.dir.write("data/state/log/QOP/QoKernel_20260131_235959_1A2B.txt", bytes);
    qo.dir.write("data/state/log/QOP/notes.txt", "not a log file");
    const std::string all = qo.run({"log"}).out;
    EXPECT_TRUE(contains(all, lines[0] + "\ncontinued\n" + lines[1] + "\ncontinued\n"));
    const std::string errors = qo.run({"log", "--level", "error"}).out;
    EXPECT_TRUE(contains(errors, lines[1] + "\ncontinued\n"));
    EXPECT_EQ(errors.find("succeeded"), std::string::npos) << errors;
    EXPECT_EQ(errors.find("notes"), std::string::npos);
}
