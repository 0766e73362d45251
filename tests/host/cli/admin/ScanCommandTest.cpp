#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace
{
/// "new", "changed" and "gone" of a scan with --json.
std::string counts(const QoCommand& qo, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), {"scan", "--json"});
    const auto result = qo.run(arguments);
    if (result.code != 0)
        return "exit " + std::to_string(result.code) + ": " + result.err;
    const auto json = result.json().at(0);
    return json["new"].dump() + " new, " + json["changed"].dump() + " changed, " +
           json["gone"].dump() + " gone";
}
} // namespace

TEST(ScanCommand, CountsWhatIsNewChangedAndGone)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.addSound("a/2.flac", "sound.flac");
    qo.addSound("a/cover.jpg", "red.jpg");
    // None of these blocks or repeats anything.
    ASSERT_EQ(::mkfifo(qo.music("a/pipe.mp3").c_str(), 0600), 0);
    fs::create_directory_symlink(qo.music(), qo.music("a/loop"));
    fs::create_symlink(qo.music("nowhere"), qo.music("a/dangling.mp3"));
    EXPECT_EQ(counts(qo, {qo.music()}), "3 new, 0 changed, 0 gone");
    EXPECT_EQ(counts(qo, {}), "0 new, 0 changed, 0 gone");

    qo.addSound("b/3.ogg", "sound.ogg");
    fs::create_symlink(qo.music("a/1.mp3"), qo.music("a/linked.mp3"));
    fs::remove(qo.music("a/cover.jpg"));
    fs::last_write_time(qo.music("a/1.mp3"),
                        fs::file_time_type::clock::now() + std::chrono::seconds(5));
    EXPECT_EQ(counts(qo, {}), "1 new, 1 changed, 1 gone");
    EXPECT_EQ(qo.names(), (std::vector<std::string>{"a/1.mp3", "a/2.flac", "b/3.ogg"}));
    const auto people = qo.run({"scan", "-q"});
    EXPECT_EQ(people.out.substr(0, people.out.rfind(',')),
              "Scanned 3 files: 0 new, 0 changed, 0 gone");
    EXPECT_EQ(people.err, "");
}

TEST(ScanCommand, FolderWithinARootAddsNoRootAndOneThatDiffersInCaseAloneIsRefused)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.scan();
    EXPECT_EQ(counts(qo, {qo.music("a")}), "0 new, 0 changed, 0 gone");
    qo.dir.makeFolder("MUSIC");
    qo.expectRefusals("scan", {{{qo.dir.path("MUSIC")}, 1, "in upper and lower case alone"}});
    EXPECT_EQ(qo.run({"roots", "ls", "--json"}).json().size(), 1U);
    EXPECT_EQ(qo.paths().size(), 1U);
}

TEST(ScanCommand, FilesOfAKindThatIsAddedBecomeMusicAndPicturesAndKeepTheirIds)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.addTrack("a/2.opus", {"artist=Ann", "title=Low"}, "sound.opus");
    qo.addSound("a/Ann - Low.jpeg", "red.jpg");
    const char* const setting = "FileKinds";
    ASSERT_EQ(qo.run({"config", "set", setting, ""}).code, 0);
    qo.scan();
    const auto flags = [&qo]
    {
        std::vector<int> list;
        for (const auto& record : qo.run({"ls", "--json"}).json())
            list.push_back(record["flags"]);
        return list;
    };
    constexpr int audio = 1 + 8;
    constexpr int other = 16;
    const auto ids = qo.ids();
    EXPECT_EQ(flags(), (std::vector<int>{audio, other, other}));
    EXPECT_EQ(qo.run({"tracks", "--json"}).json().size(), 1U);

    EXPECT_EQ(qo.run({"config", "set", setting, "sound: opus"}).code, 2);
    ASSERT_EQ(qo.run({"config", "set", setting, "audio: .OPUS; picture: jpeg"}).code, 0);
    EXPECT_EQ(counts(qo, {"--dry-run"}), "0 new, 2 changed, 0 gone");
    EXPECT_EQ(counts(qo, {}), "0 new, 2 changed, 0 gone");
    EXPECT_EQ(counts(qo, {}), "0 new, 0 changed, 0 gone");
    EXPECT_EQ(qo.ids(), ids);
    EXPECT_EQ(flags(), (std::vector<int>{audio, audio, other}));
    EXPECT_EQ(qo.run({"tracks", "--json"}).json().size(), 2U);

    ASSERT_EQ(qo.run({"config", "set", setting, ""}).code, 0);
    EXPECT_EQ(counts(qo, {}), "0 new, 2 changed, 0 gone");
    EXPECT_EQ(flags(), (std::vector<int>{audio, other, other}));
}

TEST(ScanCommand, DryRunChangesNothing)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    qo.scan();
    qo.addSound("2.mp3");
    const std::string settings = qo.dir.read("data/settings");
    EXPECT_EQ(counts(qo, {"--dry-run", qo.music()}), "1 new, 0 changed, 0 gone");
    EXPECT_EQ(qo.paths().size(), 1U);
    qo.dir.makeFolder("more");
    qo.run({"scan", "--dry-run", qo.dir.path("more")});
    EXPECT_EQ(qo.dir.read("data/settings"), settings);
    EXPECT_TRUE(fs::is_empty(qo.dir.path("data/cache/temp/Qorganizer/Covers")));
}

TEST(ScanCommand, RootFolderThatIsAwayIsNotTakenForEmpty)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    fs::rename(qo.music(), qo.dir.path("away"));

    const auto missing = qo.run({"scan"});
    EXPECT_EQ(missing.code, 3);
    EXPECT_TRUE(contains(missing.err, qo.music() + " is away: No such file or directory"));
    fs::create_directory(qo.music());
    qo.expect({"scan"}, 3, "it is empty, but the collection has 1 file in it");
    EXPECT_EQ(qo.paths().size(), 1U);

    EXPECT_EQ(counts(qo, {"--allow-missing-root"}), "0 new, 0 changed, 1 gone");
    EXPECT_FALSE(fs::is_empty(qo.dir.path("data/Qorganizer/snapshots")));
}

TEST(RootsCommand, AddsListsAndRemovesWithTypes)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    EXPECT_EQ(qo.run({"roots", "add", "--type", "none", qo.music()}).code, 0);
    EXPECT_EQ(qo.run({"roots", "add", qo.music()}).code, 0);
    EXPECT_EQ(qo.run({"roots", "ls"}).out, "none   " + qo.music() + "\n");
    ASSERT_EQ(qo.run({"scan"}).code, 0);
    EXPECT_EQ(qo.run({"ls", "--json"}).json().at(0)["flags"], 1 + 16);
    EXPECT_EQ(qo.run({"roots", "rm", qo.music()}).code, 7);
    EXPECT_EQ(qo.run({"roots", "rm", qo.music("x")}).code, 4);
    EXPECT_EQ(qo.run({"roots", "rm", "--yes", qo.music()}).code, 0);
    EXPECT_EQ(qo.run({"roots", "ls"}).out, "");
}
