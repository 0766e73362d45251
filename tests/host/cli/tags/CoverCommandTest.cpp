#include "host/cli/QoCommand.h"

namespace fs = std::filesystem;

namespace
{
/// "<name> <type> <width>" of each picture.
std::vector<std::string> covers(const QoCommand& qo, const std::string& where)
{
    std::vector<std::string> list;
    for (const auto& row : qo.run({"cover", "show", "--json", where}).json())
        list.push_back(fs::path(row["path"].get<std::string>()).filename().string() + " " +
                       row["type"].get<std::string>() + " " + row["width"].dump());
    return list;
}
} // namespace

TEST(CoverCommand, PicturesOfFoldersAndAlbumsAreSetExtractedOnceAndRemoved)
{
    const QoCommand qo;
    const std::string data = qo.dir.path() + "/";
    for (const char* name : {"red.jpg", "green.jpg", "blue.png"})
        fs::copy_file(QO_TEST_DATA "/sounds/" + std::string(name), data + name);
    const std::string one = qo.addTrack("a/1.flac", {"album=One", "artist=x"}, "sound.flac");
    const std::string two = qo.addTrack("a/2.m4a", {"album=One", "artist=x"}, "sound.m4a");
    const std::string other = qo.addTrack("a/b/1.wma", {"album=Two", "artist=x"}, "sound.wma");
    ASSERT_EQ(qo.scan().code, 0);
    const std::vector<std::string> set{
        "cover", "set", "--album", "One", "--image", data + "red.jpg"};
    const auto with = [&set](const char* option)
    {
        auto words = set;
        words.emplace_back(option);
        return words;
    };
    const std::string before = qo.dir.read("music/a/1.flac");
    EXPECT_EQ(qo.run(with("--dry-run")).out, one + "\n" + two + "\n");
    qo.expect(set, 7, "2 files");
    EXPECT_EQ(qo.dir.read("music/a/1.flac"), before);
    EXPECT_EQ(qo.run(with("--yes")).code, 0);
    EXPECT_EQ(covers(qo, qo.music("a")),
              (std::vector<std::string>{"1.flac front cover 32", "2.m4a front cover 32"}));

    ASSERT_EQ(qo.run({"cover", "set", other, "--image", data + "green.jpg"}).code, 0);
    qo.expect({"cover", "set", other, "--image", data + "green.jpg"}, 0, "already so");
    qo.dir.makeFolder("covers");
    qo.expect({"cover", "extract", qo.music("a"), "--to", qo.dir.path("covers")}, 0, "extracted: ");
    EXPECT_EQ(qo.dir.read("covers/1 - front cover.jpg"), qo.dir.read("red.jpg"));
    EXPECT_EQ(qo.dir.read("covers/1 - front cover 2.jpg"), qo.dir.read("green.jpg"));
    EXPECT_FALSE(fs::exists(qo.dir.path("covers/2 - front cover.jpg")));
    const std::string taken = qo.dir.write("covers/1 - front cover.jpg", "mine");
    qo.expect({"cover", "extract", qo.music("a"), "--to", qo.dir.path("covers")},
              6,
              taken + " is there already, and nothing is overwritten");
    EXPECT_EQ(qo.dir.read("covers/1 - front cover.jpg"), "mine");

    ASSERT_EQ(qo.run({"tag", "set", one, "picture=" + data + "blue.png"}).code, 0);
    qo.expect({"cover", "remove", one}, 0, "another picture waits to be written into " + one);
    EXPECT_EQ(qo.run({"cover", "remove", "--all", "--yes", two, other}).code, 0);
    qo.expect({"cover", "show", qo.music("a")}, 0, "without a picture: 3 files");
}

TEST(CoverCommand, SaysWhatIsWrong)
{
    const QoCommand qo;
    const std::string picture = QO_TEST_DATA "/sounds/red.jpg";
    const std::string file = qo.addSound("1.mp3");
    // An APE tag that claims five items and has none.
    const std::string odd = qo.dir.write(
        "music/odd.mp3",
        qo.dir.read("music/1.mp3") +
            std::string("APETAGEX\xd0\x07\0\0\x20\0\0\0\5\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 32));
    const std::vector<QoCommand::Refusal> cases = {
        {{"show"}, 2, "name files or folders"},
        {{"show", qo.music("none.mp3")}, 4, "none.mp3 is not there"},
        {{"show", qo.dir.write("music/a.txt", "x")}, 1, "is no kind of file that has a tag"},
        {{"set", file}, 2, "--image is missing"},
        {{"set", file, "--image", file}, 1, "cannot be used: it must be"},
        {{"set", odd, "--image", picture}, 1, "the tag of " + odd + " was not written"},
        {{"extract", file, "--to", qo.dir.path()}, 4, "there is no picture to extract"},
        {{"extract", file, "--to", qo.dir.path("no/")}, 4, "there is no folder"}};
    qo.expectRefusals("cover", cases);
}
