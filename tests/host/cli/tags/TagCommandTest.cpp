#include "host/cli/QoCommand.h"

namespace fs = std::filesystem;

namespace
{
nlohmann::json fields(const QoCommand& qo, const std::string& file)
{
    return qo.run({"tag", "show", "--json", file}).json().at(0)["fields"];
}
} // namespace

TEST(TagCommand, EditWaitsBesideTheFileUntilItIsWritten)
{
    const QoCommand qo;
    const std::string file = qo.addSound("a/1.flac", "sound.flac");
    ASSERT_EQ(qo.scan().code, 0);
    const std::string before = qo.dir.read("music/a/1.flac");
    ASSERT_EQ(
        qo.run({"tag", "set", file, "artist=Ärzte", "title=A = B", "track=3/12", "lyrics=one\ntwo"})
            .code,
        0);
    EXPECT_EQ(qo.dir.read("music/a/1.flac"), before);
    EXPECT_EQ(fields(qo, file)["artist"], (nlohmann::json{{"file", ""}, {"edited", "Ärzte"}}));

    ASSERT_EQ(qo.run({"tag", "revert", file, "lyrics"}).code, 0);
    ASSERT_EQ(qo.run({"tag", "write", "--dry-run", file}).code, 0);
    EXPECT_EQ(qo.dir.read("music/a/1.flac"), before);
    ASSERT_EQ(qo.run({"tag", "write", file}).code, 0);
    EXPECT_EQ(fields(qo, file)["artist"], (nlohmann::json{{"file", "Ärzte"}}));
    EXPECT_EQ(fields(qo, file)["title"]["file"], "A = B");
    EXPECT_EQ(fields(qo, file)["track"]["file"], "3/12");
    EXPECT_EQ(fields(qo, file)["lyrics"]["file"], "");
    EXPECT_EQ(qo.run({"tag", "write", file}).code, 4);

    // The collection sees it with the next scan.
    fs::last_write_time(file, fs::file_time_type::clock::now() + std::chrono::seconds(5));
    qo.run({"scan"});
    EXPECT_EQ(qo.run({"ls", "--json"}).json().at(0)["artist"], "Ärzte");
}

TEST(TagCommand, FilesOwnValueIsNoEdit)
{
    const QoCommand qo;
    const std::string file = qo.addSound("1.mp3");
    ASSERT_EQ(qo.run({"tag", "set", file, "artist=x", "album=y"}).code, 0);
    ASSERT_EQ(qo.run({"tag", "set", file, "artist="}).code, 0);
    EXPECT_FALSE(fields(qo, file)["artist"].contains("edited"));
    EXPECT_EQ(fields(qo, file)["album"]["edited"], "y");
}

TEST(TagCommand, AWriteThatChangesNothingSaysSoAndIsCountedApart)
{
    const QoCommand qo;
    const std::string same = qo.addTrack("a.mp3", {"genre=Rock"});
    const std::string other = qo.addSound("b.mp3");
    const std::string before = qo.dir.read("music/a.mp3");
    // The number of this genre in old tags.
    ASSERT_EQ(qo.run({"tag", "set", same, "genre=(17)"}).code, 0);
    qo.expect({"tag", "write", same}, 0, "already so, nothing to write: " + same);
    EXPECT_EQ(qo.dir.read("music/a.mp3"), before);
    ASSERT_EQ(qo.run({"tag", "set", same, "genre=17"}).code, 0);
    ASSERT_EQ(qo.run({"tag", "set", other, "genre=Rock"}).code, 0);
    qo.expect({"tag", "write", "--all", "--yes"}, 0, "1 file written, 1 already so");
}

TEST(TagCommand, ShowsEveryValueOfAFieldAndLongTextsWhole)
{
    const QoCommand qo;
    const std::string frame("TPE1\0\0\0\x08\0\0\3Ann\0Bob", 18);
    const std::string tag = std::string("ID3\4\0\0\0\0\0", 9) + char(18) + frame;
    const std::string file = qo.addSound("a.mp3");
    qo.dir.write("music/a.mp3", tag + qo.dir.read("music/a.mp3"));
    const std::string longTitle = std::string(4096, 'a') + " end";
    ASSERT_EQ(qo.run({"tag", "set", file, "title=" + longTitle}).code, 0);
    ASSERT_EQ(qo.run({"tag", "write", file}).code, 0);
    EXPECT_EQ(fields(qo, file)["title"], (nlohmann::json{{"file", longTitle}}));
    EXPECT_EQ(fields(qo, file)["artist"],
              (nlohmann::json{{"file", "Ann"}, {"values", {"Ann", "Bob"}}}));
    ASSERT_EQ(qo.run({"tag", "set", file, "title=" + longTitle}).code, 0);
    EXPECT_EQ(qo.run({"tag", "ls"}).out, "");
    qo.expect({"tag", "show", file}, 0, "artist   Ann\n         Bob\n");
    qo.expect({"tag", "show", file}, 0, longTitle);
    qo.expect({"tag", "show", "--all", file}, 0, "  TPE1                  18  Ann Bob\n");
    const auto parts = qo.run({"tag", "show", "--all", "--json", file}).json();
    EXPECT_EQ(parts.front()["name"], "ID3v2.4 tag");
    EXPECT_EQ(parts.back()["name"], "sound");
}

TEST(TagCommand, WritingAllNeedsConsentAndGoesOnAfterAFailure)
{
    const QoCommand qo;
    const std::string gone = qo.addSound("a.mp3");
    const std::string there = qo.addSound("b.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(qo.run({"tag", "set", gone, "artist=x"}).code, 0);
    ASSERT_EQ(qo.run({"tag", "set", there, "artist=x"}).code, 0);
    fs::remove(gone);
    EXPECT_EQ(qo.run({"tag", "write", "--all"}).code, 7);
    qo.expect(
        {"tag", "write", "--all", "--yes"}, 6, gone + " cannot be read: No such file or directory");
    EXPECT_EQ(fields(qo, there)["artist"]["file"], "x");
    EXPECT_EQ(qo.run({"tag", "revert", gone}).code, 0);
}

TEST(TagCommand, EditsOfFilesThatAreAwayAreNamedAndCanBeDropped)
{
    const QoCommand qo;
    const std::string file = qo.addSound("a.mp3");
    qo.addSound("stays.mp3");
    const std::string stranger = qo.dir.write("elsewhere.mp3", qo.dir.read("music/a.mp3"));
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(qo.run({"tag", "set", file, "artist=x"}).code, 0);
    ASSERT_EQ(qo.run({"tag", "set", stranger, "artist=y"}).code, 0);
    fs::remove(file);
    fs::remove(stranger);
    ASSERT_EQ(qo.run({"scan", "--yes"}).code, 0);
    const auto away = [](const std::string& path) {
        return nlohmann::json{{"path", path}, {"away", true}};
    };
    EXPECT_EQ(qo.run({"tag", "ls", "--json"}).json(),
              (std::vector<nlohmann::json>{away(stranger), away(file)}));
    qo.expect({"status"}, 0, "0 files with tags to write, and 2 that cannot be found");
    qo.expect({"tag", "write", "--all"}, 0, "2 files with edits cannot be found");
    EXPECT_EQ(qo.run({"tag", "revert", file}).code, 0);
    EXPECT_EQ(qo.run({"tag", "revert", "--away"}).code, 0);
    EXPECT_EQ(qo.run({"tag", "ls"}).out, "");
    EXPECT_EQ(qo.run({"tag", "revert", "--away"}).code, 4);
}

TEST(TagCommand, SaysWhatIsWrong)
{
    const QoCommand qo;
    const std::string file = qo.addSound("1.mp3");
    const std::string broken = qo.dir.write("music/broken.flac", "not a flac file");
    const std::vector<QoCommand::Refusal> cases = {
        {{"set", file, "artist"}, 2, "say what to set, as \"genre=Jazz\""},
        {{"set", file, "singer=x"}, 2, "is no field of a tag"},
        {{"set", file, "titel=x"}, 2, "did you mean \"title\"?"},
        {{"set", file, "track=abc"}, 2, "is no track number; write 3 or 3/12"},
        {{"set", file, "year=99999"}, 2, "is no year"},
        {{"set", file, "artist=\xff"}, 2, "is not UTF-8"},
        {{"set", file, "picture=/nowhere.jpg"}, 4, "No such file or directory"},
        {{"set", file, "picture=" + broken}, 1, "cannot be used: it must be"},
        {{"set", qo.music("2.mp3"), "artist=x"}, 4, "2.mp3 is not there"},
        {{"set", qo.music(), "artist=x"}, 4, "is not in the collection"},
        {{"show", qo.dir.write("music/a.txt", "x")}, 1, "is no kind of file that has a tag"},
        {{"show", broken}, 1, "cannot be read: "},
        {{"show", "--all", qo.music("2.mp3")}, 4, "2.mp3 is not there"},
        {{"revert", file}, 4, "nothing is edited there"},
        {{"revert"}, 2, "name a file"}};
    qo.expectRefusals("tag", cases);
}
