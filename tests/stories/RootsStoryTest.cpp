#include "host/cli/QoCommand.h"
#include "support/Contains.h"

namespace fs = std::filesystem;

namespace
{
/// Two root folders, "music" and "more", with one and two files, all scanned.
void scanTwoRoots(const QoCommand& qo)
{
    qo.addSound("1.mp3");
    qo.dir.makeFolder("more");
    for (const char* name : {"2.mp3", "3.mp3"})
        fs::copy_file(qo.music("1.mp3"), qo.dir.path("more/") + name);
    ASSERT_EQ(qo.run({"roots", "add", "--type", "all", qo.music()}).code, 0);
    ASSERT_EQ(qo.run({"scan", qo.dir.path("more")}).code, 0);
}

void replaceInSettings(const QoCommand& qo, const std::string& what, const std::string& with)
{
    std::string text = qo.dir.read("data/settings");
    const std::size_t at = text.find(what);
    ASSERT_NE(at, std::string::npos) << text;
    qo.dir.write("data/settings", text.replace(at, what.size(), with));
}

int snapshotCount(const QoCommand& qo)
{
    return qo.run({"status", "--json"}).json().at(0)["snapshots"];
}
} // namespace

TEST(RootsStory, LostOrDamagedSettingsCostNoFile)
{
    const struct
    {
        const char* what; ///< "" for the whole file
        const char* with;
        const char* command;
    } cases[] = {{"", "", "ls"},
                 {"", "", "load"},
                 {"", "", "scan"},
                 {"", " \n", "ls"},
                 {"MusicCollectionDirsCount=2", "MusicCollectionDirsCount 2", "load"},
                 {"MusicCollectionDir0=", "MusicCollectionDir0", "ls"},
                 {"[QO_Settings]", "[QO_Settings", "scan"}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(std::string(c.what) + " -> " + c.with + ": " + c.command);
        const QoCommand qo;
        scanTwoRoots(qo);
        if (*c.what)
            replaceInSettings(qo, c.what, c.with);
        else if (*c.with)
            qo.dir.write("data/settings", c.with);
        else
            fs::remove(qo.dir.path("data/settings"));
        qo.expect({c.command}, 0, "root folder " + qo.music());
        EXPECT_EQ(qo.paths().size(), 3U);
        // What only reads uses them, but leaves the file as it is.
        if (std::string(c.command) != "scan")
        {
            EXPECT_EQ(qo.run({"scan"}).code, 0);
        }
        const auto roots = qo.run({"roots", "ls", "--json"});
        EXPECT_EQ(roots.err, "");
        EXPECT_EQ(roots.json().size(), 2U);
        EXPECT_NE(roots.out.find(R"(/music","type":"all")"), std::string::npos) << roots.out;
    }
}

TEST(RootsStory, LostSettingsCostNoFileWhenTheDiskIsAwayOrAnotherFolderIsScanned)
{
    const QoCommand qo;
    scanTwoRoots(qo);
    fs::remove(qo.dir.path("data/settings"));
    fs::rename(qo.dir.path("more"), qo.dir.path("away"));
    EXPECT_EQ(qo.paths().size(), 3U);
    fs::rename(qo.dir.path("away"), qo.dir.path("more"));

    fs::remove(qo.dir.path("data/settings"));
    // What only looks sees them, but writes nothing.
    EXPECT_EQ(qo.run({"status", "--json"}).json().at(0)["roots"].size(), 2U);
    EXPECT_FALSE(fs::exists(qo.dir.path("data/settings")));
    qo.dir.makeFolder("other");
    fs::copy_file(qo.music("1.mp3"), qo.dir.path("other/4.mp3"));
    EXPECT_EQ(qo.run({"scan", qo.dir.path("other")}).code, 0);
    EXPECT_EQ(qo.paths().size(), 4U);
}

TEST(RootsStory, RootThatASoundSettingsFileNoLongerNamesIsAskedAbout)
{
    const QoCommand qo;
    scanTwoRoots(qo);
    const std::string more = qo.dir.path("more");
    replaceInSettings(qo, "MusicCollectionDirsCount=2", "MusicCollectionDirsCount=1");
    qo.expect({"ls"}, 0, "the root folders have changed since the last scan");
    {
        const auto result = qo.run({"scan"});
        EXPECT_EQ(result.code, 3);
        EXPECT_TRUE(
            contains(result.err, "the root folder " + more + " is no longer in the settings"));
        for (const char* way : {"add", "rm"})
            EXPECT_TRUE(contains(result.err, "qo roots " + std::string(way) + " " + more));
    }
    // Both ways out are open while its disk is away, too.
    fs::rename(more, qo.dir.path("away"));
    EXPECT_EQ(qo.run({"roots", "add", more}).code, 0);
    EXPECT_EQ(qo.paths().size(), 3U);

    replaceInSettings(qo, "MusicCollectionDirsCount=2", "MusicCollectionDirsCount=1");
    EXPECT_EQ(qo.run({"roots", "rm", more}).code, 7);
    EXPECT_EQ(qo.run({"scan"}).code, 3);
    EXPECT_EQ(qo.run({"roots", "rm", "--yes", more}).code, 0);
    EXPECT_EQ(qo.paths().size(), 3U) << "the next scan takes them out";
    EXPECT_EQ(qo.run({"scan"}).code, 0);
    EXPECT_EQ(qo.paths().size(), 1U);
    EXPECT_GE(snapshotCount(qo), 1);
}

TEST(RootsStory, RemovedRootLeavesItsFilesInASnapshot)
{
    const QoCommand qo;
    scanTwoRoots(qo);
    const std::string more = qo.dir.path("more");
    ASSERT_EQ(qo.run({"roots", "rm", "--yes", more}).code, 0);
    EXPECT_EQ(qo.run({"scan", "--dry-run"}).code, 0);
    const auto before = snapshotCount(qo);
    qo.expect({"scan"}, 0, "the collection as it was is kept in ");
    EXPECT_EQ(qo.paths().size(), 1U);
    EXPECT_GT(snapshotCount(qo), before);
    // The removal is over: the folder can come back, and is no less guarded than before.
    ASSERT_EQ(qo.run({"scan", more}).code, 0);
    replaceInSettings(qo, "MusicCollectionDirsCount=2", "MusicCollectionDirsCount=1");
    EXPECT_EQ(qo.run({"scan"}).code, 3);
}
