#include "QoColl/Collection/QoFileUtils.h"

#include "QoColl/Collection/QoCollection.h"
#include "common/Kernel.h"
#include "common/Paths.h"
#include "common/QoProgress.h"
#include "common/Settings.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/LogCapture.h"
#include "support/MemoryConfig.h"
#include "support/OrdinaryUser.h"
#include "support/Print.h"
#include "support/ScopedVariable.h"
#include "support/TempDir.h"
#include "support/Words.h"
#include "types/StringArray.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace
{
constexpr const char* waits = "wait 100 ms and try again";

/// Removes the file, if there is one, as soon as the log says that someone waits.
class RemovesOnWait : public LogCapture
{
public:
    explicit RemovesOnWait(std::string file) : m_file(std::move(file)) {}

private:
    void writeText(int level, const CString& text) override
    {
        LogCapture::writeText(level, text);
        if (!m_file.empty() && has(waits))
            fs::remove(m_file);
    }

    const std::string m_file;
};

/// A root folder "music" of the own and "foreign" of the foreign collection, a home folder and the
/// kernel's own below "base".
class EmptyDirs : public testing::Test
{
protected:
    EmptyDirs()
    {
        for (const char* folder : {"music", "foreign", "home/Documents", "base"})
            dir.makeFolder(folder);
        qo::specialFolders().setBase(dir.collPath("base"));
        addRoot(CQoCollection::m_ownCollection, "music");
        addRoot(CQoCollection::m_foreignCollection, "foreign");
    }
    ~EmptyDirs() override
    {
        CQoCollection::m_ownCollection.clearCollection(&progress);
        CQoCollection::m_foreignCollection.clearCollection(&progress);
        qo::specialFolders().setBase(CString());
    }

    void addRoot(CQoCollection& collection, const char* folder)
    {
        CStringArray roots;
        roots.Add(dir.collPath(folder));
        collection.addRootDirs(roots, CQoPathsInfoMap());
    }
    bool remove(const std::string& folder, bool force = false)
    {
        return CQoFileUtils::checkRemoveEmptyDir(dir.collPath(folder), force);
    }
    bool has(const std::string& path) { return fs::exists(dir.path(path)); }

    TempDir dir;
    ScopedVariable home{"HOME", dir.path("home")};
    CDummyProgress progress;
};
} // namespace

TEST_F(EmptyDirs, GoWithTheParentsThatHoldNothingElse)
{
    const struct
    {
        const char* folder;
        const char* neighbour; ///< a file
        const char* topmost;
    } rows[] = {{"music/a/b/c", "", "music/a"},
                {"music/a/b/c", "music/a/b/x.txt", "music/a/b/c"},
                {"music/a/b/c", "music/a/x/y.txt", "music/a/b"},
                {"music/a/b/c", "music/a/.hidden", "music/a/b"},
                {"foreign/a", "", "foreign/a"},
                {"home/Documents/a", "", "home/Documents/a"},
                {"base/Music/Velmora Podcasts/a/b", "", "base/Music/Velmora Podcasts/a"}};
    for (const auto& row : rows)
    {
        dir.makeFolder(row.folder);
        if (*row.neighbour)
            dir.write(row.neighbour, "x");
        CString found = dir.collPath(row.folder) + u"\\";
        EXPECT_TRUE(CQoFileUtils::getEmptyDirCheckParent(found)) << row.folder;
        EXPECT_EQ(found, dir.collPath(row.topmost));
        const LogCapture logged;
        CString folder;
        EXPECT_TRUE(CQoFileUtils::checkRemoveEmptyDirOfFile(
            dir.collPath(row.folder) + u"\\gone.mp3", folder, false));
        EXPECT_EQ(folder, dir.collPath(row.folder));
        EXPECT_FALSE(has(row.topmost)) << row.topmost;
        EXPECT_TRUE(fs::exists(fs::path(dir.path(row.topmost)).parent_path())) << row.topmost;
        EXPECT_EQ(logged.count("removed empty dir " + qo::toUtf8(dir.collPath(row.topmost)), 60), 1)
            << logged.all();
        fs::remove_all(dir.path("music/a"));
    }
}

TEST_F(EmptyDirs, RootsOfTheSettingsStayWhileNoCollectionIsLoaded)
{
    dir.write("configured/x.txt", "x");
    dir.makeFolder("configured/a/b");
    MemoryConfig config;
    initQoKernel(&config, nullptr);
    CStringArray roots;
    roots.Add(dir.collPath("configured"));
    CQoPaths::setMusicCollectionDirs(roots, CQoPathsInfoMap());
    CQoCollection::m_ownCollection.clearCollection(&progress);
    EXPECT_FALSE(remove("configured", true));
    EXPECT_TRUE(has("configured/x.txt"));
    fs::remove(dir.path("configured/x.txt"));
    EXPECT_TRUE(remove("configured/a/b"));
    EXPECT_FALSE(has("configured/a"));
    EXPECT_TRUE(has("configured"));
    CQoSettings::declareCommon(nullptr, nullptr);
}

TEST_F(EmptyDirs, ThatAreKeptStayWhateverIsAsked)
{
    dir.makeFolder("base/Music/Velmora Podcasts");
    dir.makeFolder("music/empty");
    dir.makeFolder("music/target");
    dir.write("music/full/x.txt", "x");
    fs::create_directory_symlink(dir.path("music/target"), dir.path("music/link"));
    fs::create_directory_symlink(dir.path(), dir.path("music/alias"));
    fs::remove(dir.path("home/Documents"));
    for (const bool force : {false, true})
    {
        auto all =
            wordsOf("music foreign home base music/link music/alias/home music/alias/foreign "
                    "music/empty/../empty music/empty/.");
        all.emplace_back("base/Music/Velmora Podcasts");
        for (const std::string& kept : all)
        {
            EXPECT_FALSE(remove(kept, force)) << kept;
            EXPECT_TRUE(has(kept)) << kept;
        }
        for (const char16_t* path : {u"",
                                     u"C:\\",
                                     u"music",
                                     u"\\\\usb:x\\a",
                                     u"\\\\server\\share",
                                     u"\\\\server\\share\\a",
                                     u"Y:\\a"})
            EXPECT_FALSE(CQoFileUtils::checkRemoveEmptyDir(path, force));
    }
    EXPECT_FALSE(remove("music/full"));
    EXPECT_TRUE(has("music/full/x.txt"));
}

TEST_F(EmptyDirs, ForceRemovesContentButOnlyBelowARootAndAroundNothingThatIsKept)
{
    dir.write("music/a/b/x.mp3", "x");
    dir.write("elsewhere/x.mp3", "x");
    dir.makeFolder("music/c/base");
    EXPECT_TRUE(remove("music/a", true));
    EXPECT_FALSE(has("music/a"));
    EXPECT_TRUE(has("music"));
    const LogCapture logged;
    EXPECT_FALSE(remove("elsewhere", true));
    qo::specialFolders().setBase(dir.collPath("music/c/base"));
    EXPECT_FALSE(remove("music/c", true));
    EXPECT_EQ(logged.count("must not be removed", 10), 2) << logged.all();
    EXPECT_TRUE(has("elsewhere/x.mp3"));
    EXPECT_TRUE(has("music/c/base"));
}

TEST_F(EmptyDirs, ThatAreGoneAlreadyTakeTheirEmptyParentsAlong)
{
    dir.makeFolder("music/a/b");
    EXPECT_TRUE(remove("music/a/b/c/d"));
    EXPECT_FALSE(has("music/a"));
    EXPECT_TRUE(has("music"));
}

TEST_F(EmptyDirs, WithContentThatCannotBeSeenGoOnlyIfItGoesInTime)
{
    for (const bool clears : {false, true})
    {
        const std::string late = dir.write("music/locked/late.mp3", "x");
        fs::permissions(dir.path("music/locked"), fs::perms(0300));
        RemovesOnWait logged(clears ? late : std::string());
        {
            const OrdinaryUser user(dir.path());
            if (!user.isPossible)
                GTEST_SKIP() << "the build folder is closed to ordinary users";
            EXPECT_EQ(remove("music/locked"), clears);
        }
        EXPECT_EQ(logged.count(waits, 10), 1) << logged.all();
        EXPECT_EQ(logged.has("removed empty dir", 60), clears) << logged.all();
        EXPECT_EQ(has("music/locked/late.mp3"), !clears);
        EXPECT_EQ(has("music/locked"), !clears);
    }
}

TEST_F(EmptyDirs, ThatAreMountPointsStay)
{
    const std::string point = dir.makeFolder("music/usb");
    if (::mount("none", point.c_str(), "tmpfs", 0, nullptr) != 0)
        GTEST_SKIP() << "this test needs the right to mount";
    dir.makeFolder("music/usb/a");
    EXPECT_TRUE(remove("music/usb/a"));
    EXPECT_FALSE(has("music/usb/a"));
    const LogCapture logged;
    EXPECT_FALSE(remove("music/usb"));
    EXPECT_FALSE(remove("music/usb", true));
    EXPECT_FALSE(logged.has(waits)) << "not even tried";
    EXPECT_TRUE(has("music/usb"));
    ::umount(point.c_str());
}
