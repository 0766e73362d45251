#include "host/cli/QoCommand.h"

#include <sys/stat.h>
#include <sys/types.h>

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
    EXPECT_EQ(counts(qo, {qo.music()}), "3 new, 0 changed, 0 gone");
    EXPECT_EQ(counts(qo, {}), "0 new, 0 changed, 0 gone");

    qo.addSound("b/3.ogg", "sound.ogg");
    fs::remove(qo.music("a/cover.jpg"));
    fs::last_write_time(qo.music("a/1.mp3"),
                        fs::file_time_type::clock::now() + std::chrono::seconds(5));
    // An older time and another size alone are no change.
    fs::last_write_time(qo.music("a/2.flac"),
                        fs::file_time_type::clock::now() - std::chrono::hours(9));
    EXPECT_EQ(counts(qo, {}), "1 new, 1 changed, 1 gone");
    EXPECT_EQ(
        qo.paths(),
        (std::vector<std::string>{qo.music("a/1.mp3"), qo.music("a/2.flac"), qo.music("b/3.ogg")}));
}

TEST(ScanCommand, EndsWithOneLineForPeople)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    const auto result = qo.scan();
    EXPECT_EQ(result.out.substr(0, result.out.rfind(',')),
              "Scanned 1 file: 1 new, 0 changed, 0 gone");
    EXPECT_EQ(qo.run({"scan", "-q"}).err, "");
}

TEST(ScanCommand, FolderWithinARootAddsNoRoot)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.scan();
    EXPECT_EQ(counts(qo, {qo.music("a")}), "0 new, 0 changed, 0 gone");
    EXPECT_EQ(qo.run({"roots", "ls", "--json"}).json().size(), 1U);
}

TEST(ScanCommand, FolderThatDiffersFromARootInCaseAloneIsRefused)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    qo.scan();
    qo.dir.makeFolder("MUSIC");
    const auto result = qo.run({"scan", qo.dir.path("MUSIC")});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("in upper and lower case alone"), std::string::npos) << result.err;
    EXPECT_EQ(qo.paths().size(), 1U);
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

TEST(ScanCommand, PipesSocketsAndLinkLoopsNeitherBlockNorRepeat)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(::mkfifo(qo.music("a/pipe.mp3").c_str(), 0600), 0);
    fs::create_directory_symlink(qo.music(), qo.music("a/loop"));
    fs::create_symlink(qo.music("nowhere"), qo.music("a/dangling.mp3"));
    fs::create_symlink(qo.music("a/1.mp3"), qo.music("a/linked.mp3"));
    EXPECT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.paths(),
              (std::vector<std::string>{qo.music("a/1.mp3"), qo.music("a/linked.mp3")}));
}

TEST(ScanCommand, RootFolderThatIsAwayIsNotTakenForEmpty)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    fs::rename(qo.music(), qo.dir.path("away"));

    const auto missing = qo.run({"scan"});
    EXPECT_EQ(missing.code, 3);
    EXPECT_NE(missing.err.find(qo.music() + " is away: No such file or directory"),
              std::string::npos)
        << missing.err;
    fs::create_directory(qo.music());
    const auto empty = qo.run({"scan"});
    EXPECT_EQ(empty.code, 3);
    EXPECT_NE(empty.err.find("it is empty, but the collection has 1 file in it"), std::string::npos)
        << empty.err;
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
