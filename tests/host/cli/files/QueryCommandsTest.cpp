#include "host/cli/QoCommand.h"
#include "support/Contains.h"

namespace
{
/// A folder of Jazz and one of Rock, with a cover each.
class Shelf : public QoCommand
{
public:
    Shelf()
    {
        addTrack("jazz/1.mp3",
                 {"artist=Ärzte", "title=One", "album=Blue", "genre=Jazz", "year=1959"});
        addTrack("jazz/2.mp3",
                 {"artist=Bea", "title=Two", "album=Blue", "genre=Jazz", "year=1961"});
        addTrack("rock/3.mp3", {"artist=Bea", "title=Three", "genre=Rock", "year=1970"});
        dir.write("music/jazz/cover.jpg", "picture");
        EXPECT_EQ(scan().code, 0);
    }
    /// What ls finds, by the names of the files: "1 2".
    std::string found(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"ls", "--format", "{title}"});
        std::string text = run(words).out;
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text;
    }
};
} // namespace

TEST(Queries, WorkInEveryCommandThatTakesFiles)
{
    const Shelf qo;
    EXPECT_EQ(qo.found({"kind:music", "bea"}), "Two Three ");
    EXPECT_EQ(qo.found({"kind:music", "--sort", "year-", "--limit", "2"}), "Three Two ");
    const std::vector<std::vector<std::string>> calls = {
        {"tracks", "bea"},
        {"albums", "bea genre:jazz"},
        {"artists", "genre:jazz", "--sort", "name-"},
        {"genres", "year:..1960"},
        {"info", "title:one"},
        {"dup", "genre:jazz"},
        {"untagged", "bea"},
        {"placed", "kind:picture"},
        {"tag", "show", "title:two"},
        {"cover", "show", "genre:jazz"},
        {"lyrics", "title:one"},
        {"rule", "test", "artist-track", "bea"},
        {"reorg", "plan", "--rule", "artist-track", "bea"}};
    for (std::vector<std::string> words : calls)
    {
        const QoCommand::Result result = qo.run(words);
        EXPECT_TRUE(result.code == 0 || words[0] == "untagged" || words[0] == "lyrics")
            << testing::PrintToString(words) << result.err;
        words.emplace_back("nothing-has-this");
        EXPECT_EQ(qo.run(words).code, 4) << testing::PrintToString(words);
        words.back() = "singer:x";
        EXPECT_EQ(qo.run(words).code, 2) << testing::PrintToString(words);
    }
    // The cover beside chosen music goes with it.
    EXPECT_TRUE(contains(
        qo.run({"reorg", "plan", "--rule", "artist-track", "genre:jazz", "--json", "--dry-run"})
            .out,
        "cover.jpg"));
}

TEST(Queries, WhatTheyFindIsNeverMovedOrRemovedUnasked)
{
    const Shelf qo;
    qo.expectRefusals("",
                      {{{"rm", "title:one"}, 7, "1 file of the collection will go to the trash"},
                       {{"rm", ""}, 2, "an empty text names nothing"},
                       {{"rm", qo.music("jazz/1.mp3"), "nope.mp3"}, 6, "nope.mp3"},
                       {{"rm", "--marked"}, 4, "no file of the collection has a check mark"},
                       {{"mv", "genre:jazz", qo.music("nowhere")}, 4, "nowhere"},
                       {{"mv", "genre:jazz", qo.music("rock")}, 7, "1 file will be moved"}});
    EXPECT_EQ(qo.names(), (std::vector<std::string>{"jazz/2.mp3", "jazz/cover.jpg", "rock/3.mp3"}));
    EXPECT_EQ(qo.run({"mv", "genre:jazz", qo.music("rock"), "--yes"}).code, 0);
    EXPECT_EQ(qo.run({"rm", "artist:bea ^title:two", "--yes"}).code, 0);
    EXPECT_EQ(qo.names(), (std::vector<std::string>{"jazz/cover.jpg", "rock/2.mp3"}));
}

TEST(Queries, EditManyFilesWithOneQuestionAndGoOnAfterAFailure)
{
    const Shelf qo;
    qo.addSounds("many", 11);
    qo.dir.write("music/many/broken.flac", "no sound");
    ASSERT_EQ(qo.scan().code, 0);
    const std::vector<std::string> set = {"tag", "set", "genre=Folk", qo.music("many"), "name:mp3"};
    qo.expect(set, 7, "11 files will be edited");
    EXPECT_EQ(qo.run({"tag", "ls"}).out, "");
    std::vector<std::string> words = set;
    words.emplace_back("--dry-run");
    qo.expect(words, 0, "genre: (none) -> Folk");
    words.back() = "--yes";
    qo.expect(words, 0, "edited 11 files of 11");
    qo.expect(
        {"tag", "set", "genre=Folk", "title:two", ",", "name:broken"}, 6, "edited 1 file of 2");
    qo.expect({"tag", "revert", "genre", qo.music("many/1.mp3")}, 0, "dropped the edits");
    EXPECT_EQ(qo.run({"tag", "write", "edited:"}).code, 7);
    // The collection has them at once.
    EXPECT_EQ(qo.run({"tag", "write", "edited:", "--yes"}).code, 0);
    EXPECT_EQ(qo.run({"ls", "--json", "genre:folk"}).json().size(), 11U);
    EXPECT_EQ(qo.run({"tag", "ls"}).out, "");
}

TEST(Marks, NarrowEveryQueryAndLast)
{
    const Shelf qo;
    EXPECT_EQ(qo.run({"mark", "genre:jazz"}).code, 0);
    EXPECT_EQ(qo.run({"mv", qo.music("jazz/1.mp3"), qo.music("rock/9.mp3")}).code, 0);
    EXPECT_EQ(qo.found({"--marked"}), "Two One ");
    EXPECT_EQ(qo.found({"--marked", "bea", ",", "title:three"}), "Two ");
    EXPECT_EQ(qo.found({"^marked:", "kind:music"}), "Three ");
    EXPECT_EQ(qo.run({"unmark", "title:one", "--json"}).json().at(0)["marked"], 1);
    EXPECT_EQ(qo.run({"marked", "--json"}).json().at(0)["music"], 1);
    const auto view = qo.run({"view", "--select", "bea", "--json"}).json().at(0);
    EXPECT_EQ(view["left"][0]["mark"], "some");
    EXPECT_EQ(view["middle"][0]["mark"], "all");
    EXPECT_EQ(view["middle"][0]["year"], "1961");
    qo.expect({"unmark", "--all", "title:two"}, 2, "QUERY and --all do not go together");
    qo.expect({"mark", "--all", "--genre", "Jazz"}, 2, "do not go together");
    qo.expect({"tag", "write", "--all", "--marked"}, 2, "do not go together");
    qo.expect({"tag", "revert", "--away", "title:two"}, 2, "and no query");
    EXPECT_EQ(qo.run({"unmark", "--all"}).code, 0);
    EXPECT_EQ(qo.run({"ls", "--marked"}).code, 4);
}

TEST(ViewCommand, ShowsWhatPassesTheFilterAndSaysWhatItDoesNotKnow)
{
    const Shelf qo;
    const auto names = [&qo](const std::vector<std::string>& words, const char* pane)
    {
        std::string text;
        const auto panes = qo.run(words).json().at(0);
        for (const auto& item : panes[pane])
            text += item["name"].get<std::string>() + " ";
        return text;
    };
    EXPECT_EQ(names({"view", "--json", "--left", "genres"}, "left"), "Jazz Rock ");
    EXPECT_EQ(names({"view", "--json", "--filter", "thr"}, "left"), "Bea ");
    EXPECT_EQ(names({"view", "--json", "--hide", "own,foreign"}, "left"), "");
    EXPECT_EQ(names({"view",
                     "--json",
                     "--hide",
                     "audio",
                     "--left",
                     "folders",
                     "--select",
                     qo.music("jazz")},
                    "right"),
              "cover.jpg ");
    qo.expectRefusals("view",
                      {{{"--select", "nobody"}, 4, "the left pane has no \"nobody\""},
                       {{"--left", "x"}, 2, "there are artists, genre-artists, genres, folders"},
                       {{"--show", "x"}, 2, "there are audio, video"}});
}
