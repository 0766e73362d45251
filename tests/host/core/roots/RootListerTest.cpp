#include "core/roots/RootLister.h"

#include "support/SlowDisk.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
std::set<std::string> walked(const TempDir& dir, const CStringArray& roots, const CString& names)
{
    RootLister lister(roots, names);
    std::set<std::string> found;
    for (const CString& root : roots)
        lister.forEachFile(root,
                           [&](const CString& path, const qo::FileInfo&)
                           {
                               found.insert(qo::toSystemPath(path).substr(dir.path().size() + 1));
                               EXPECT_FALSE(lister.isPassedOver(path)) << qo::toUtf8(path);
                               return true;
                           });
    return found;
}
} // namespace

TEST(IgnoreRules, PatternsOfAFileHoldBelowItsFolderAndTheLastOneDecides)
{
    struct Case
    {
        const char* file; ///< content of .qoignore
        const char16_t* folder;
        const char16_t* name;
        bool isFolder;
        bool isLeftOut;
    };
    const Case cases[] = {
        {"", u"C:\\m", u".hidden", false, true},
        {"", u"C:\\m\\a", u"song.part", false, true},
        {"", u"C:\\m\\a", u"song.party", false, false},
        {"", u"C:\\m", u"$RECYCLE.BIN", true, true},
        {"!.hidden", u"C:\\m\\a", u".hidden", false, false},
        {"!.hidden", u"C:\\other", u".hidden", false, true},
        {"bootlegs/\n", u"C:\\m\\a\\b", u"bootlegs", true, true},
        {"bootlegs/\n", u"C:\\m\\a\\b", u"bootlegs", false, false},
        {"/top.mp3\n", u"C:\\m", u"top.mp3", false, true},
        {"/top.mp3\n", u"C:\\m\\a", u"top.mp3", false, false},
        {"a/*.wav\r\n", u"C:\\m\\a", u"x.wav", false, true},
        {"a/*.wav\r\n", u"C:\\m\\a\\b", u"x.wav", false, false},
        {"a/**/x.wav", u"C:\\m\\a\\b\\c", u"x.wav", false, true},
        {"a/**/x.wav", u"C:\\m\\a", u"x.wav", false, true},
        {"# x.wav\n\\#y", u"C:\\m", u"x.wav", false, false},
        {"# x.wav\n\\#y", u"C:\\m", u"#y", false, true},
        {"*.wav\n!keep.wav\n", u"C:\\m", u"keep.wav", false, false},
        {"!keep.wav\n*.wav\n", u"C:\\m", u"keep.wav", false, true},
        {"a/**", u"C:\\m\\a\\b", u"x.wav", false, true},
        {"a/**\n!a/x.wav", u"C:\\m\\a", u"x.wav", false, false},
        {"a/**", u"C:\\m", u"a", true, false},
        {"**/**/**/**/**/**/**/**/**/**/**/**/**/**/**/**/b", // not in this lifetime
         u"C:"
         u"\\m\\1\\2\\3\\4\\5\\6\\7\\8\\9\\10\\11\\12\\13\\14\\15\\16\\17\\18\\19\\20\\21\\22\\23",
         u"a",
         false,
         false},
        {"take[0-9].mp3", u"C:\\m\\a", u"take7.mp3", false, true},
        {"trailing.mp3  ", u"C:\\m", u"trailing.mp3", false, true},
    };
    for (const Case& row : cases)
    {
        IgnoreRules rules(IgnoreRules::defaultNames);
        rules.setFile(u"C:\\m", row.file);
        EXPECT_EQ(rules.isLeftOut(row.folder, row.name, row.isFolder), row.isLeftOut)
            << row.file << ": " << qo::toUtf8(CString(row.folder)) << " "
            << qo::toUtf8(CString(row.name));
    }
}

TEST(RootLister, WalksPassOverJunkButNotAHiddenRootOrAFileThatWaitsForItsPlace)
{
    const TempDir dir;
    for (const char* file : {".root/a.mp3",
                             ".root/.git/x.mp3",
                             ".root/._a.mp3",
                             ".root/@eaDir/t.jpg",
                             ".root/a/.qo-1-2.mp3",
                             ".root/a/.qo-aB3dE6",
                             ".root/a/.qo-backup-1.mp3~",
                             ".root/a/.qo-1-2-copy-3",
                             ".root/a/b.tmp",
                             ".root/live/skip/c.mp3",
                             ".root/live/d.mp3",
                             ".root/live/.qoignore"})
        dir.write(file, "x");
    dir.write(".root/live/.qoignore", "skip/\n");
    CStringArray roots;
    roots.Add(dir.collPath(".root"));
    const std::set<std::string> expected = {
        ".root/a.mp3", ".root/a/.qo-1-2.mp3", ".root/live/d.mp3"};
    EXPECT_EQ(walked(dir, roots, IgnoreRules::defaultNames), expected);
    EXPECT_TRUE(walked(dir, roots, u"").contains(".root/.git/x.mp3"));
    RootLister lister(roots, IgnoreRules::defaultNames);
    EXPECT_TRUE(lister.isPassedOver(dir.collPath(".root/live/skip/c.mp3")));
    EXPECT_TRUE(lister.isPassedOver(dir.collPath(".root/.git/x.mp3")));
}

TEST(RootLister, AFileHasItsOwnPathWhateverLinksLeadToIt)
{
    const TempDir dir;
    dir.write("music/z/deep/1.mp3", "x");
    dir.write("music/z/2.mp3", "x");
    dir.write("more/3.mp3", "x");
    dir.write("outside/4.mp3", "x");
    dir.write("outside/5.mp3", "x");
    fs::create_directory_symlink("z/deep", dir.path("music/a"));
    fs::create_directory_symlink(".", dir.path("music/loop"));
    fs::create_directory_symlink("../more", dir.path("music/b"));
    fs::create_symlink("z/2.mp3", dir.path("music/2 again.mp3"));
    fs::create_directory_symlink("../outside", dir.path("music/out"));
    fs::create_directory_symlink("../outside", dir.path("music/out again"));
    fs::create_directory_symlink("..", dir.path("music/up"));
    CStringArray roots;
    roots.Add(dir.collPath("music"));
    roots.Add(dir.collPath("more"));
    const std::set<std::string> found = walked(dir, roots, u"");
    EXPECT_TRUE(found.contains("music/z/deep/1.mp3"));
    EXPECT_TRUE(found.contains("music/z/2.mp3"));
    EXPECT_TRUE(found.contains("more/3.mp3"));
    EXPECT_EQ(found.size(), 5U) << "each file once";
}

TEST(RootLister, WalkOfASlowDiskListsSeveralFoldersAtATimeAndSeesTheSame)
{
    const TempDir dir;
    for (int i = 0; i < 60; ++i)
        dir.write("music/" + std::to_string(i % 6) + "/" + std::to_string(i) + "/a.mp3", "x");
    fs::create_directory_symlink(dir.path("music/3/3"), dir.path("music/0/link"));
    CStringArray roots;
    roots.Add(dir.collPath("music"));
    const auto walk = [&]
    {
        std::vector<CString> files;
        RootLister lister(roots, u"");
        lister.forEachFile(roots[0],
                           [&](const CString& path, const qo::FileInfo& info)
                           {
                               files.push_back(path);
                               return info.size == 1;
                           });
        return files;
    };
    const std::vector<CString> expected = walk();
    EXPECT_EQ(expected.size(), 60U);
    const SlowDisk disk("list");
    EXPECT_EQ(walk(), expected);
    EXPECT_GE(disk.mostAtATime(), 4);
}
