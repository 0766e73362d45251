#include "core/collection/Trash.h"

#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/OtherDisk.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

using namespace qo::host;
namespace fs = std::filesystem;

TEST(Trash, NotesWhereAThingWasAndWhenItWent)
{
    const TempDir dir;
    const Trash trash(dir.path("share/Trash"));
    const std::string path = dir.write("m/50% \xC3\xA4\n#.mp3", "song");
    const Trash::Item item = trash.put(path);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(item.file, dir.path("share/Trash/files/50% \xC3\xA4\n#.mp3"));
    EXPECT_EQ(item.note, dir.path("share/Trash/info/50% \xC3\xA4\n#.mp3.trashinfo"));
    const std::string info = dir.read("share/Trash/info/50% \xC3\xA4\n#.mp3.trashinfo");
    const std::string start =
        "[Trash Info]\nPath=" + dir.path("m") + "/50%25%20%C3%A4%0A%23.mp3\nDeletionDate=";
    ASSERT_EQ(info.substr(0, start.size()), start);
    EXPECT_TRUE(std::regex_match(info.substr(start.size()),
                                 std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\n)")))
        << info;
    struct stat st;
    ASSERT_EQ(::stat(dir.path("share/Trash/files").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700U);
    EXPECT_TRUE(trash.canHold(item.file));
    EXPECT_EQ(Trash::noteOf(item.file), item.note);
}

TEST(Trash, EqualNamesAndLongNamesStandBesideEachOther)
{
    const TempDir dir;
    const Trash trash(dir.path("Trash"));
    const std::string longName = std::string(250, 'x') + ".mp3";
    for (const std::string& name : {std::string("a.mp3"), longName, std::string(".hidden")})
    {
        std::vector<Trash::Item> items;
        for (int i = 0; i < 3; ++i)
            items.push_back(trash.put(dir.write("m/" + name, std::to_string(i))));
        for (int i = 0; i < 3; ++i)
        {
            const std::string file = items[i].file.substr(dir.path().size() + 1);
            EXPECT_EQ(dir.read(file), std::to_string(i));
            EXPECT_LE(fs::path(items[i].note).filename().native().size(), 255U);
            EXPECT_TRUE(fs::exists(items[i].note));
        }
    }
    // A file without a note, as a crash leaves it, is not overwritten.
    dir.write("Trash/files/orphan", "old");
    EXPECT_EQ(trash.put(dir.write("orphan", "new")).file, dir.path("Trash/files/orphan.2"));
    EXPECT_EQ(dir.read("Trash/files/orphan"), "old");
    EXPECT_FALSE(fs::exists(dir.path("Trash/info/orphan.trashinfo")));
}

TEST(Trash, ATrashThatCannotBeTrustedOrMadeDeletesNothing)
{
    const TempDir dir;
    const std::string path = dir.write("m/a.mp3", "song");
    dir.write("file", "");
    fs::create_symlink(dir.path("nowhere"), dir.path("link"));
    const struct
    {
        std::string trash;
        const char* cause;
    } cases[] = {{dir.path("file/Trash"), "Not a directory"},
                 {dir.path("file"), "Not a directory"},
                 {dir.path("link"), "is a symbolic link"}};
    for (const auto& c : cases)
    {
        const std::string message = messageOf([&] { Trash(c.trash).put(path); });
        EXPECT_TRUE(contains(message, c.cause));
        EXPECT_TRUE(contains(message, path));
        EXPECT_EQ(dir.read("m/a.mp3"), "song");
    }
}

TEST(Trash, LinkToAFolderOfOnesOwnIsFollowed)
{
    const TempDir dir;
    const std::string path = dir.write("m/a.mp3", "song");
    dir.makeFolder("real");
    fs::create_symlink("real", dir.path("Trash"));
    const Trash::Item item = Trash(dir.path("Trash")).put(path);
    EXPECT_EQ(dir.read("real/files/a.mp3"), "song");
    EXPECT_TRUE(Trash(dir.path("Trash")).canHold(item.file));
}

TEST(Trash, OtherFileSystemsHaveOneAtTheirTop)
{
    const OtherDisk other;
    const std::string& folder = other.path;
    if (folder.empty() || fs::exists("/dev/shm/.Trash"))
        GTEST_SKIP() << "there is no second file system to be had";
    const TempDir dir;
    const std::string name = folder.substr(folder.rfind('/') + 1);
    const std::string top = "/dev/shm/.Trash-" + std::to_string(::geteuid());
    const bool hadTrash = fs::exists(top);
    const Trash::Item item = Trash(dir.path("Trash")).put(folder);
    EXPECT_TRUE(item.file.starts_with(top + "/files/" + name));
    std::ostringstream info;
    info << std::ifstream(item.note).rdbuf();
    EXPECT_TRUE(contains(info.str(), "\nPath=" + name + "\n"));
    fs::rename(item.file, folder);
    if (!hadTrash)
        fs::remove_all(top);
}
