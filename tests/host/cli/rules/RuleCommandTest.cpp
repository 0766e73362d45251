#include "host/cli/QoCommand.h"
#include "support/Contains.h"
#include "support/Words.h"

#include <utility>

namespace fs = std::filesystem;

namespace
{
using Words = std::vector<std::string>;

std::string ruleFile(const QoCommand& qo, const std::string& id)
{
    return qo.dir.path("data/Qorganizer/" + id + ".xml");
}

/// A rule file around these elements.
std::string document(const std::string& rules)
{
    return "<ReorganizeRule name=\"From a file\" prio=\"7\">" + rules + "</ReorganizeRule>";
}

const std::string wholeRule = R"(<Rule type="SubdirRule" keepOriginal="0" ruleDefinition="New\">)"
                              R"(<Rule type="RenameRule" renameRuleType="Music" keepOriginal="1" )"
                              R"(keepOriginalIfAttribEmpty="0" ruleDefinition=""/></Rule>)";

std::vector<std::string> ids(const QoCommand& qo)
{
    std::vector<std::string> list;
    for (const auto& rule : qo.run({"rule", "ls", "--json"}).json())
        list.push_back(rule["id"]);
    return list;
}
} // namespace

TEST(RuleCommand, RuleFromPatternsIsDrawnAsATree)
{
    const QoCommand qo;
    Words words{"rule", "new", "By artist", "--music", "{track.number} {track.name}"};
    for (const std::string& word :
         wordsOf("--prio 12 --folder {artist.name}/{Album.Name}/ --less-folder / --artist-limit 3 "
                 "--keep-if-empty --default album.name=[none] --dry-run"))
        words.push_back(word);
    const auto tried = qo.run(words);
    EXPECT_EQ(tried.code, 0) << tried.err;
    EXPECT_FALSE(fs::exists(ruleFile(qo, "By artist")));
    words.pop_back();
    const auto made = qo.run(words);
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_EQ(made.out, tried.out);
    const std::string head = "name      By artist\n"
                             "id        By artist\n"
                             "priority  12\n"
                             "use       sorter, importer\n"
                             "file      " +
                             ruleFile(qo, "By artist") +
                             "\n"
                             "default   {album.name} = [none]\n\n";
    EXPECT_EQ(qo.run({"rule", "show", "BY ARTIST"}).out, head + R"(artist-tracks rule: 3 tracks
├─ MoreEqualTracks
│  └─ folder {artist.name}\{album.name}\
│     ├─ Music    {track.number} {track.name}  (keeps its name if an attribute is empty)
│     ├─ Lyrics   keeps its name
│     └─ Picture  keeps its name
├─ LessTracks
│  └─ folder \  (none of its own)
│     ├─ Music    {track.number} {track.name}  (keeps its name if an attribute is empty)
│     ├─ Lyrics   keeps its name
│     └─ Picture  keeps its name
└─ NoArtist
   └─ folder \  (none of its own)
      ├─ Music    {track.number} {track.name}  (keeps its name if an attribute is empty)
      ├─ Lyrics   keeps its name
      └─ Picture  keeps its name
)");
}

TEST(RuleCommand, RuleOfAFileIsDrawnAndNestedInJson)
{
    const QoCommand qo;
    std::string outputs;
    for (const char* type : {"MoreEqualTracks", "LessTracks", "NoAlbum"})
        outputs += "<RuleOutput type=\"" + std::string(type) + "\">" + wholeRule + "</RuleOutput>";
    const std::string file =
        qo.dir.write("nested.xml",
                     document(R"(<UnknownAttrib name="{track.genre}" defValue="&#10;"/>)"
                              R"(<Rule type="JingleSeperateRule"><RuleOutput type="NotJingle">)"
                              R"(<Rule type="AlbumTracksSeperateRule" trackLimit="1">)" +
                              outputs + R"(</Rule></RuleOutput><RuleOutput type="Jingle">)" +
                              wholeRule + "</RuleOutput></Rule>"));
    const std::string text = qo.run({"rule", "show", file}).out;
    EXPECT_TRUE(contains(text,
                         "default   {track.genre} =  \n"
                         "\n"
                         "jingle rule\n"
                         "├─ NotJingle\n"
                         "│  └─ album-tracks rule: 1 track\n"
                         "│     ├─ MoreEqualTracks\n"
                         "│     │  └─ folder New\\\n"
                         "│     │     └─ Music    keeps its name\n"));
    const auto object = qo.run({"rule", "show", "--json", file}).json().at(0);
    EXPECT_EQ(object["name"], "From a file");
    EXPECT_EQ(object["priority"], 7);
    EXPECT_EQ(object["use"], (Words{"sorter", "importer"}));
    EXPECT_EQ(object["defaults"]["{track.genre}"], "\n");
    const auto& album = object["rules"][0]["outputs"][0]["rule"];
    EXPECT_EQ(album["type"], "AlbumTracksSeperateRule");
    EXPECT_EQ(album["trackLimit"], 1);
    EXPECT_EQ(album["outputs"][2]["type"], "NoAlbum");
    EXPECT_EQ(album["outputs"][2]["rule"]["pattern"], "New\\");
    EXPECT_EQ(album["outputs"][2]["rule"]["names"][0]["kind"], "Music");
}

TEST(RuleCommand, RulesAreCopiedTakenInReplacedAndThrownAway)
{
    const QoCommand qo;
    const std::string file = qo.dir.write("taken.xml", document(wholeRule));
    ASSERT_EQ(qo.run({"rule", "copy", "artist-track", "Mine", "--prio", "5"}).code, 0);
    ASSERT_EQ(qo.run({"rule", "new", "--from", file}).code, 0);
    ASSERT_EQ(qo.run({"rule", "new", "Mine: too", "--from", file, "--prio", "6"}).code, 0);
    EXPECT_EQ(
        ids(qo),
        (Words{
            "From a file", "Mine_ too", "Mine", ":ArtistTrackRule:", ":VelmoraArtistTrackRule:"}));
    EXPECT_TRUE(contains(qo.run({"rule", "show", "Mine"}).out, "{artist.name} - {track.name}"));

    // Another letter case is the same rule, which keeps its file.
    EXPECT_EQ(qo.run({"rule", "new", "mine: TOO", "--folder", "x"}).code, 7);
    EXPECT_EQ(qo.run({"rule", "new", "mine: TOO", "--folder", "x", "--yes"}).code, 0);
    EXPECT_EQ(ids(qo).size(), 5U);
    const auto replaced = qo.run({"rule", "show", "--json", "Mine_ too"}).json().at(0);
    EXPECT_EQ(replaced["name"], "mine: TOO");
    EXPECT_EQ(replaced["rules"][0]["pattern"], "x\\");

    EXPECT_EQ(qo.run({"rule", "rm", "--dry-run", "Mine"}).code, 0);
    EXPECT_TRUE(fs::exists(ruleFile(qo, "Mine")));
    EXPECT_EQ(qo.run({"rule", "rm", "Mine"}).code, 0);
    EXPECT_FALSE(fs::exists(ruleFile(qo, "Mine")));
    EXPECT_TRUE(fs::exists(qo.dir.path("home/.local/share/Trash/files/Mine.xml")));
    EXPECT_EQ(qo.run({"rule", "show", "Mine"}).code, 4);
}

TEST(RuleCommand, CheckSaysWhatIsWrongWithAFile)
{
    const QoCommand qo;
    const std::pair<std::string, std::string> cases[] = {
        {document(wholeRule), "is a valid rule"},
        {"<ReorganizeRule name=\"x\">", "no complete XML"},
        {document("\xFF"), "no text in UTF-8"},
        {"<Rule/>", "no element ReorganizeRule"},
        {document(""), "do not make a whole rule"},
        {document(R"(<Rule type="JingleSeperateRule"/>)"), "do not make a whole rule"},
        {document(wholeRule + std::string(1U << 20, ' ')), "larger than 1024 KiB"},
    };
    for (const auto& [content, text] : cases)
    {
        const std::string file = qo.dir.write("rule.xml", content);
        const auto result = qo.run({"rule", "check", file});
        EXPECT_EQ(result.code, text == "is a valid rule" ? 0 : 1);
        EXPECT_TRUE(contains(result.out + result.err, text)) << text << "\n"
                                                             << result.out << result.err;
    }
    EXPECT_EQ(qo.run({"rule", "check", "/nowhere.xml"}).code, 4);
    EXPECT_EQ(qo.run({"rule", "check", "artist-track"}).code, 0);

    // Among the rules a bad one is passed over, but not silently.
    qo.dir.write("data/Qorganizer/bad.xml", "nothing");
    const auto listed = qo.run({"rule", "ls", "--json"});
    EXPECT_EQ(listed.json().size(), 2U);
    EXPECT_TRUE(contains(listed.err, "bad.xml is no valid rule"));
    const auto checked = qo.run({"rule", "check", "--json", "bad"});
    EXPECT_EQ(checked.code, 1);
    EXPECT_EQ(checked.json().at(0)["valid"], false);
}

TEST(RuleCommand, RefusalsHaveTheirExitCodeAndSentence)
{
    const QoCommand qo;
    const std::string file = qo.dir.write("taken.xml", document(wholeRule));
    for (const char* id : {"a", "b"})
        fs::copy_file(file,
                      qo.dir.write(std::string("data/Qorganizer/") + id + ".xml", ""),
                      fs::copy_options::overwrite_existing);
    const std::vector<QoCommand::Refusal> cases = {
        {{"rm", "artist-track"}, 7, "is built in and cannot be changed"},
        {{"new", "Artist-Track", "--yes"}, 7, "is built in and cannot be changed"},
        {{"copy", "a", "b"}, 7, "Not done without --yes"},
        {{"copy", "a", "From a FILE"}, 2, "name one by its id, of a, b"},
        {{"show", "from a file"}, 2, "name one by its id, of a, b"},
        {{"show", "nothing"}, 4, "there is no rule \"nothing\""},
        {{"new"}, 2, "a rule needs a name"},
        {{"new", " "}, 2, "a rule needs a name"},
        {{"new", "x\ny"}, 2, "has control characters"},
        {{"new", std::string(300, 'x')}, 2, "too long"},
        {{"new", "x", "--music", "{artist}"}, 2, "{artist} is no attribute"},
        {{"new", "x", "--music", " ?"}, 2, "no file can have a name by the pattern"},
        {{"new", "x", "--default", "mood=x"}, 2, "{mood} is no attribute"},
        {{"new", "x", "--default", "mood"}, 2, "is not of the form attribute=text"},
        {{"new", "x", "--less-folder", "y"}, 2, "--less-folder needs"},
        {{"new", "x", "--from", file, "--folder", "y"}, 2, "do not go together"},
        {{"new", "x", "--from", "/nowhere.xml"}, 4, "/nowhere.xml cannot be read"},
        {{"test", "a", "/nowhere"}, 4, "/nowhere is not there"}};
    qo.expectRefusals("rule", cases);
    EXPECT_EQ(ids(qo).size(), 4U);
}

TEST(RuleCommand, TestShowsThePlaceAndTheWayToIt)
{
    const QoCommand qo;
    const std::string track = qo.addTrack("old/1.mp3", {"artist=AC/DC", "title=What?"});
    qo.dir.write("music/old/notes.pdf", "x");
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(
        qo.run({"rule", "new", "r", "--folder", "{artist.name}", "--music", "{track.name}"}).code,
        0);
    const auto text = qo.run({"rule", "test", "r", track}).out;
    EXPECT_EQ(text,
              track + " -> " + qo.music("AC_DC/What_.mp3") +
                  "\n    by {artist.name}\\ > Music {track.name}\n");
    const std::string file = qo.dir.write("taken.xml", document(wholeRule));
    const auto record = qo.run({"rule", "test", "--json", file, qo.music()}).json().at(0);
    EXPECT_EQ(record["path"], track);
    EXPECT_EQ(record["to"], qo.music("New/1.mp3"));
    EXPECT_EQ(record["by"], "New\\ > Music name kept");
}
