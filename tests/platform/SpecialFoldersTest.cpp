#include "platform/SpecialFolders.h"

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/Print.h"
#include "support/ScopedVariable.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>

TEST(SpecialFolders, FollowTheConventionsAndIgnoreRelativeValues)
{
    const TempDir home;
    const ScopedVariable homeVariable("HOME", home.path());
    const ScopedVariable data("XDG_DATA_HOME", home.path("data"));
    const ScopedVariable state("XDG_STATE_HOME", "relative");
    const ScopedVariable config("XDG_CONFIG_HOME", home.path("config"));
    const ScopedVariable music("XDG_MUSIC_DIR", "");
    home.write("config/user-dirs.dirs",
               "# comment\nXDG_MUSIC_DIR=\"$HOME/Musik\"\nXDG_VIDEOS_DIR=broken\n"
               " XDG_DOCUMENTS_DIR=\"/srv/papers\"\nXDG_\n=_DIR\n");

    const qo::ISpecialFolders& folders = qo::specialFolders();
    EXPECT_EQ(folders.data(), home.collPath("data/Velmora"));
    EXPECT_EQ(folders.state(), home.collPath(".local/state/Velmora"));
    EXPECT_EQ(folders.music(), home.collPath("Musik"));
    EXPECT_EQ(folders.videos(), home.collPath("Videos"));
    const std::vector<CString> all = folders.userFolders();
    for (const CString& folder : {home.collPath("Musik"),
                                  home.collPath("Videos"),
                                  home.collPath("Documents"),
                                  CString(u"C:\\srv\\papers")})
        EXPECT_NE(std::find(all.begin(), all.end(), folder), all.end()) << qo::toUtf8(folder);
}
