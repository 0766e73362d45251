#include "QoColl/Collection/FileFinder.h"

#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "support/Words.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using QoKernel::CFileFilter;
using QoKernel::CFileFinder;

namespace
{
std::string walk(const TempDir& dir, const CFileFilter& filter, bool recursive = true)
{
    std::string names;
    CFileFinder finder;
    const CString root = dir.collPath();
    for (bool any = finder.findFirst({root, recursive}, filter); any; any = finder.findNext())
        names += qo::toUtf8(finder.getFilePath().Mid(root.GetLength() + 1)) + " ";
    return names;
}

CFileFilter plainFiles()
{
    CFileFilter filter;
    filter.m_flags = CFileFilter::testType;
    filter.m_typeMask = CFileFilter::plainFiles;
    return filter;
}
} // namespace

TEST(FileFinder, WalksBreadthFirstInSortedOrder)
{
    const TempDir dir;
    for (const char* name : {"b/z", "b/a/deep", "A/x", "top", "b/Y"})
        dir.write(name, "x");
    EXPECT_EQ(walk(dir, plainFiles()), "top A\\x b\\Y b\\z b\\a\\deep ");
    EXPECT_EQ(walk(dir, plainFiles(), false), "top ");
    EXPECT_EQ(walk(dir, CFileFilter(), false), "A b top ");
}

TEST(FileFinder, LinksLeadOnceIntoAFolderAndLoopsEnd)
{
    const TempDir dir;
    dir.write("a/song", "x");
    ASSERT_EQ(::symlink("..", dir.path("a/up").c_str()), 0);
    ASSERT_EQ(::symlink("a", dir.path("_sorts_first").c_str()), 0);
    ASSERT_EQ(::symlink("song", dir.path("a/twin").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", dir.path("lost").c_str()), 0);
    ASSERT_EQ(::symlink("/proc", dir.path("system").c_str()), 0);
    ASSERT_EQ(::mkfifo(dir.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(walk(dir, plainFiles()), "a\\song a\\twin ");
}

TEST(FileFinder, TrashAndTheKernelsOwnDataAreNotWalked)
{
    const TempDir dir;
    for (const std::string& name :
         wordsOf(".Trash-1000/files/a .Trash/1000/files/b x/Trash/files/c x/Trash/info/c.trashinfo "
                 "own/qodb Trash/song .Trash-can/song .hidden/song"))
        dir.write(name, "x");
    qo::specialFolders().setBase(dir.collPath("own"));
    EXPECT_EQ(walk(dir, plainFiles()), ".hidden\\song .Trash-can\\song Trash\\song ");
    qo::specialFolders().setBase(CString());
}

TEST(FileFinder, FilterConditionsAreInclusiveAndAllMustHold)
{
    const TempDir dir;
    dir.write("small.MP3", "12");
    dir.write("large.mp3", "12345");
    dir.write("large.txt", "12345");
    CFileFilter filter;
    filter.m_flags =
        CFileFilter::testExtension | CFileFilter::testMinSize | CFileFilter::testMaxSize;
    filter.m_extension = u"mp3";
    filter.m_minSize = 2;
    filter.m_maxSize = 4;
    EXPECT_EQ(walk(dir, filter), "small.MP3 ");
    filter.m_maxSize = 5;
    EXPECT_EQ(walk(dir, filter), "large.mp3 small.MP3 ");
    filter.m_flags |= CFileFilter::testMaxModified;
    filter.m_maxModified = qo::fromUnixTime(1, 0);
    EXPECT_EQ(walk(dir, filter), "");
}
