#include "common/FileUtils.h"

#include "common/StdioFileEx.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/OrdinaryUser.h"
#include "support/Print.h"
#include "support/ScopedVariable.h"
#include "support/TempDir.h"
#include "types/StringArray.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

TEST(FileUtils, NamesAndPathsArePutTogether)
{
    CString name(u"a&b:c~d\"e");
    qo::sanitizeName(name);
    EXPECT_EQ(name, CString(u"aandb_c_d_e"));
    EXPECT_EQ(qo::addBackslash(CString()), CString());
    EXPECT_EQ(qo::combinePath(u"C:\\a\\", u"b", u"txt"), CString(u"C:\\a\\b.txt"));
    EXPECT_EQ(qo::combinePath(CString(), u"b"), CString(u"b"));
    EXPECT_EQ(qo::removeBackslash(u"C:\\"), CString(u"C:"));
}

TEST(FileUtils, EmptinessOfFoldersLooksDeeperOnlyWhenAsked)
{
    const TempDir dir;
    dir.makeFolder("a/b");
    EXPECT_FALSE(CFileUtils::IsDirEmpty(dir.collPath("a"), false));
    EXPECT_TRUE(CFileUtils::IsDirEmpty(dir.collPath("a"), true));
    EXPECT_TRUE(CFileUtils::IsDirEmpty(dir.collPath("missing"), false));
    dir.write("a/b/file", "x");
    EXPECT_FALSE(CFileUtils::IsDirEmpty(dir.collPath("a"), true));
}

TEST(FileUtils, RemovingAFolderLeavesWhatItsLinksPointTo)
{
    const TempDir dir;
    dir.write("kept/file", "x");
    dir.write("gone/deep/file", "x");
    ASSERT_EQ(::symlink(dir.path("kept").c_str(), dir.path("gone/link").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", dir.path("gone/lost").c_str()), 0);
    for (const char16_t* end : {u"", u"\\", u"\\\\"})
    {
        EXPECT_TRUE(CFileUtils::RemoveDirectoryRec(dir.collPath("gone/link") + end));
        EXPECT_EQ(dir.read("kept/file"), "x")
            << "the name of a link with " << std::u16string_view(end).size();
    }
    EXPECT_TRUE(CFileUtils::RemoveDirectoryRec(dir.collPath("gone") + u"\\"));
    EXPECT_FALSE(qo::fileSystem().exists(dir.collPath("gone")));
    EXPECT_EQ(dir.read("kept/file"), "x");
    EXPECT_TRUE(CFileUtils::RemoveDirectoryRec(dir.collPath("gone")))
        << "nothing there is no failure";
    EXPECT_TRUE(CFileUtils::RemoveDirectoryRec(dir.collPath("kept/file")))
        << "nor is a file, which stays";
    EXPECT_EQ(dir.read("kept/file"), "x");
}

TEST(FileUtils, TheRootTheHomeFolderAndMountPointsAreNotRemovedUnderAnyName)
{
    const TempDir dir;
    dir.write("home/inner/file", "x");
    ASSERT_EQ(::symlink("home", dir.path("link").c_str()), 0);
    const ScopedVariable variable("HOME", dir.path("link"));
    const CString home = dir.collPath("home");
    const CString names[] = {u"C:\\",
                             u"C:\\\\",
                             u"C:\\proc",
                             home,
                             home + u"\\",
                             home + u"\\\\",
                             home + u"\\inner\\..",
                             home + u"\\."};
    for (const CString& name : names)
        EXPECT_FALSE(CFileUtils::RemoveDirectoryRec(name)) << qo::toUtf8(name);
    EXPECT_TRUE(CFileUtils::RemoveDirectoryRec(dir.collPath("link"))) << "a link is no folder";
    EXPECT_EQ(dir.read("home/inner/file"), "x");
}

TEST(FileUtils, AFileThatCannotBeRemovedStopsItsFolderAlone)
{
    const TempDir dir;
    dir.write("top/kept/file", "x");
    dir.write("top/gone/file", "x");
    dir.write("top/last", "x");
    ASSERT_EQ(::chmod(dir.path("top/kept").c_str(), 0500), 0);
    const OrdinaryUser user(dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "cannot become another user";
    EXPECT_FALSE(CFileUtils::RemoveDirectoryRec(dir.collPath("top")));
    EXPECT_TRUE(std::filesystem::exists(dir.path("top/kept/file")));
    EXPECT_FALSE(std::filesystem::exists(dir.path("top/gone")));
    EXPECT_FALSE(std::filesystem::exists(dir.path("top/last")));
    ::chmod(dir.path("top/kept").c_str(), 0700);
}

TEST(FileUtils, OneFolderIsMadeButNotItsParents)
{
    const TempDir dir;
    dir.makeFolder("Music");
    EXPECT_TRUE(CFileUtils::AssureDirExists(dir.collPath("music")));
    EXPECT_TRUE(std::filesystem::exists(dir.path("music"))) << "not that of other case";
    EXPECT_FALSE(CFileUtils::AssureDirExists(dir.collPath("a/b")));
    EXPECT_TRUE(CFileUtils::AssureDirExists(dir.collPath("a")));
    EXPECT_TRUE(CFileUtils::AssureDirExists(dir.collPath("a")));
    dir.write("file", "x");
    EXPECT_FALSE(CFileUtils::AssureDirExists(dir.collPath("file")));
}

TEST(StdioFileEx, LinesComeWithoutMarkAndLineEnd)
{
    const std::pair<const char*, std::string> cases[] = {
        {"utf8 with mark", "\xEF\xBB\xBF\xC3\xA9t\xC3\xA9\r\nzwei\n\nlast"},
        {"utf8 without", "\xC3\xA9t\xC3\xA9\nzwei\r\n\nlast"},
        {"utf16",
         std::string("\xFF\xFE\xE9\0t\0\xE9\0\r\0\n\0z\0w\0e\0i\0\n\0\n\0l\0a\0s\0t\0", 32)}};
    for (const auto& [name, bytes] : cases)
    {
        const TempDir dir;
        dir.write("text", bytes);
        CStdioFileEx file;
        ASSERT_TRUE(file.Open(dir.collPath("text"), CStdioFileEx::modeRead));
        CStringArray lines;
        for (CString line; file.ReadString(line);)
            lines.Add(line);
        EXPECT_EQ(lines.join(u"|"), CString(u"\u00E9t\u00E9|zwei||last")) << name;
    }
}

TEST(StdioFileEx, WritesOneMarkWhateverTheNumberOfTexts)
{
    const TempDir dir;
    for (const unsigned unicode : {0U, unsigned(CStdioFileEx::modeUnicode)})
    {
        const unsigned flags = CStdioFileEx::modeWrite | CStdioFileEx::modeCreate | unicode;
        CStdioFileEx file;
        ASSERT_TRUE(file.Open(dir.collPath("out"), flags));
        EXPECT_TRUE(file.WriteString(u"a"));
        EXPECT_TRUE(file.WriteString(u"\u00E9"));
        EXPECT_TRUE(file.Close());
        ASSERT_TRUE(file.Open(dir.collPath("out"), flags | CStdioFileEx::modeNoTruncate));
        EXPECT_TRUE(file.WriteString(u"b"));
        EXPECT_TRUE(file.Close());
        const std::u16string_view utf16 = u"\uFEFFa\u00E9b";
        EXPECT_EQ(dir.read("out"),
                  unicode ? std::string(reinterpret_cast<const char*>(utf16.data()), 8)
                          : "\uFEFFa\u00E9b")
            << unicode;
    }
}

TEST(StdioFileEx, PositionAndLengthCountWhatIsBuffered)
{
    const TempDir dir;
    dir.write("text", "one\ntwo\n");
    CStdioFileEx file;
    EXPECT_EQ(file.GetPosition() + file.GetLength(), 0);
    ASSERT_TRUE(file.Open(dir.collPath("text"), CStdioFileEx::modeRead));
    CString line;
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(file.GetPosition(), 4);
    EXPECT_EQ(file.GetLength(), 8);
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, CString(u"two"));
    constexpr unsigned add =
        CStdioFileEx::modeWrite | CStdioFileEx::modeCreate | CStdioFileEx::modeNoTruncate;
    ASSERT_TRUE(file.Open(dir.collPath("text"), add));
    ASSERT_TRUE(file.WriteString(u"\u00E9"));
    EXPECT_EQ(file.GetPosition(), 10);
    EXPECT_EQ(file.GetLength(), 10);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(dir.read("text"), "one\ntwo\n\u00E9");
}

TEST(StdioFileEx, AnEndlessLineIsCut)
{
    const TempDir dir;
    dir.write("long", std::string(3 << 20, 'x') + "\nnext\n");
    CStdioFileEx file;
    ASSERT_TRUE(file.Open(dir.collPath("long"), CStdioFileEx::modeRead));
    CString line;
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line.GetLength(), 1 << 20);
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, CString(u"next"));
}
