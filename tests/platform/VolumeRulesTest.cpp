#include "platform/VolumeRules.h"

#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <filesystem>

TEST(VolumeRules, AreThoseOfTheNearestFolderThatExists)
{
    const TempDir dir;
    dir.write("file", "");
    const qo::VolumeRules here = qo::volumeRulesOf(dir.collPath());
    struct statvfs fs;
    ASSERT_EQ(::statvfs(dir.path().c_str(), &fs), 0);
    EXPECT_EQ(here.longestName, static_cast<int>(std::min(fs.f_namemax, 255UL)));
    for (const char* below : {"new", "new/folder/deep", "file", "file/x"})
        EXPECT_EQ(qo::volumeRulesOf(dir.collPath(below)), here) << below;
    EXPECT_EQ(qo::volumeRulesOf(u"C:\\nothing\\of\\this"), qo::volumeRulesOf(u"C:\\"));
    EXPECT_EQ(qo::volumeRulesOf(u"Q:\\away"), qo::VolumeRules());
    EXPECT_EQ(qo::volumeRulesOf(u""), qo::VolumeRules());
}

TEST(VolumeRules, CaseCountsExactlyWhereTheDiskKeepsNamesApart)
{
    const TempDir dir;
    dir.write("name", "");
    dir.write("NAME", "");
    const auto names = std::distance(std::filesystem::directory_iterator(dir.path()), {});
    EXPECT_EQ(qo::volumeRulesOf(dir.collPath()).ignoresCase, names == 1);
}
