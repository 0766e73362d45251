#include "platform/FileSystem.h"

#include "platform/Platform.h"
#include "support/OrdinaryUser.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace
{
qo::IFileSystem& files()
{
    return qo::fileSystem();
}

mode_t modeOf(const std::string& path)
{
    struct stat st
    {
    };
    return ::stat(path.c_str(), &st) == 0 ? st.st_mode & 0777 : 0;
}
} // namespace

TEST(FileSystem, ListsSortedWithoutRegardToCaseAndTellsLinks)
{
    const TempDir dir;
    for (const char* name : {"b", "A", "a", "_", "C"})
        dir.write(name, "x");
    dir.makeFolder("folder");
    ASSERT_EQ(::symlink("folder", dir.path("link").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", dir.path("lost").c_str()), 0);
    ASSERT_EQ(::mkfifo(dir.path("pipe").c_str(), 0600), 0);

    std::vector<qo::DirEntry> entries;
    ASSERT_EQ(files().list(dir.collPath(), entries), 0);
    std::string names;
    for (const qo::DirEntry& entry : entries)
    {
        names += qo::toUtf8(entry.name);
        names += entry.info.kind == qo::FileKind::regular
                     ? ""
                     : (entry.info.kind == qo::FileKind::directory ? "/" : "?");
        names += entry.info.isLink ? "@ " : " ";
    }
    EXPECT_EQ(names, "_ A a b C folder/ link/@ lost?@ pipe? ");
}

TEST(FileSystem, AFolderWhoseEntriesCannotBeLookedAtIsAFailedListing)
{
    const TempDir dir;
    dir.write("folder/song.mp3", "x");
    const OrdinaryUser user(dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "cannot become another user";
    ASSERT_EQ(::chmod(dir.path("folder").c_str(), 0444), 0);
    std::vector<qo::DirEntry> entries;
    EXPECT_EQ(files().list(dir.collPath("folder"), entries), EACCES);
    EXPECT_TRUE(entries.empty());
    ::chmod(dir.path("folder").c_str(), 0700);
}

TEST(FileSystem, FallsBackToTheOnlySpellingForReadingAlone)
{
    const TempDir dir;
    dir.write("Music/Song.mp3", "x");
    const CString other = dir.collPath("MUSIC/song.MP3");
    qo::FileInfo info;
    EXPECT_EQ(files().info(other, qo::Spelling::anyCase, info), 0);
    EXPECT_EQ(files().info(other, qo::Spelling::exact, info), ENOENT);
    EXPECT_EQ(files().removeFile(other), ENOENT);
    int error = 0;
    EXPECT_TRUE(files().open(other, qo::OpenMode::read, error));

    dir.write("Music/SONG.mp3", "y");
    EXPECT_EQ(files().info(other, qo::Spelling::anyCase, info), ENOENT) << "two spellings match";
}

TEST(FileSystem, OpensRegularFilesOnlyAndNeverWaits)
{
    const TempDir dir;
    dir.makeFolder("folder");
    ASSERT_EQ(::mkfifo(dir.path("pipe").c_str(), 0600), 0);
    int error = 0;
    EXPECT_FALSE(files().open(dir.collPath("pipe"), qo::OpenMode::read, error));
    EXPECT_EQ(error, EINVAL);
    EXPECT_FALSE(files().open(dir.collPath("folder"), qo::OpenMode::read, error));
    EXPECT_EQ(error, EISDIR);
    EXPECT_FALSE(files().open(dir.collPath("pipe"), qo::OpenMode::append, error));
    EXPECT_FALSE(files().open(dir.collPath("none"), qo::OpenMode::read, error));
    EXPECT_EQ(error, ENOENT);
}

TEST(FileSystem, ReplacingLeavesTheOldFileOrTheNewOneAndNothingElse)
{
    const TempDir dir;
    dir.write("settings", "old");
    const CString path = dir.collPath("settings");
    ASSERT_EQ(files().replaceFile(path, "new!", 4), 0);
    EXPECT_EQ(dir.read("settings"), "new!");
    EXPECT_EQ(modeOf(dir.path("settings")), 0600U);

    EXPECT_EQ(files().replaceFile(dir.collPath("missing/settings"), "x", 1), ENOENT);
    dir.makeFolder("taken/by");
    EXPECT_NE(files().replaceFile(dir.collPath("taken"), "x", 1), 0);
    std::vector<qo::DirEntry> entries;
    ASSERT_EQ(files().list(dir.collPath(), entries), 0);
    EXPECT_EQ(entries.size(), 2U) << "a temporary file stayed behind";
}

TEST(FileSystem, MovesWithoutReplacingOnlyToAFreeName)
{
    const TempDir dir;
    dir.write("from", "content");
    dir.write("taken", "kept");
    const CString from = dir.collPath("from");
    EXPECT_EQ(files().moveFileNoReplace(from, dir.collPath("taken")), EEXIST);
    EXPECT_EQ(dir.read("taken") + dir.read("from"), "keptcontent");
    EXPECT_EQ(files().moveFileNoReplace(from, dir.collPath("to")), 0);
    EXPECT_EQ(dir.read("to"), "content");
    EXPECT_EQ(files().moveFileNoReplace(from, dir.collPath("to2")), ENOENT);
}

TEST(FileSystem, CopiesContentAndWriteTime)
{
    const TempDir dir;
    dir.write("from", "content");
    const timespec times[] = {{1000000000, 0}, {1234567890, 123456700}};
    ASSERT_EQ(::utimensat(AT_FDCWD, dir.path("from").c_str(), times, 0), 0);
    dir.write("to", "something longer than it");
    ASSERT_EQ(files().copyFile(dir.collPath("from"), dir.collPath("to")), 0);
    EXPECT_EQ(dir.read("to"), "content");
    qo::FileInfo info;
    ASSERT_EQ(files().info(dir.collPath("to"), qo::Spelling::exact, info), 0);
    EXPECT_EQ(qo::toTicks(info.modified), 116444736000000000 + 12345678901234567);
}

TEST(FileSystem, ForeignNamesBecomeOneSafeComponent)
{
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"plain.mp3", u"plain.mp3"},
        {u"../../etc/passwd", u".._.._etc_passwd"},
        {u"a\\b\nc", u"a_b_c"},
        {u"..", u"_"},
        {u".", u"_"},
        {u"  ", u"_"},
        {u"", u"_"},
        {u"\uF02E\uF02E", u"__"}};
    for (const auto& [foreign, safe] : cases)
        EXPECT_EQ(qo::safeLocalName(foreign), CString(safe)) << qo::toUtf8(CString(foreign));

    const CString longName = CString(u'\u00E9', 300) + u".flac";
    const std::string safe = qo::toUtf8(qo::safeLocalName(longName));
    EXPECT_LE(safe.size(), 255U);
    EXPECT_EQ(safe.substr(safe.size() - 5), ".flac");
}
