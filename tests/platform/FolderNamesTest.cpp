#include "platform/FolderNames.h"

#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

TEST(FolderNames, NoMoreThanAskedForAndSpelledExactly)
{
    const TempDir dir;
    dir.write("Folder/a", "");
    dir.write("Folder/.b", "");
    dir.makeFolder("Folder/c\\d");
    std::vector<CString> names{u"old"};
    ASSERT_EQ(qo::firstNames(dir.collPath("Folder"), 9, names), 0);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<CString>{u".b", u"a", u"c\uF05Cd"}));
    EXPECT_EQ(qo::firstNames(dir.collPath("Folder"), 2, names), 0);
    EXPECT_EQ(names.size(), 2U);
    EXPECT_EQ(qo::firstNames(dir.collPath("folder"), 9, names), ENOENT);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(qo::firstNames(dir.collPath("Folder/a"), 9, names), ENOTDIR);
}
