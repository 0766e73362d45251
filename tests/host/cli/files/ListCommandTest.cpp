#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <algorithm>

namespace
{
std::string decodeUri(const std::string& uri)
{
    std::string path;
    for (std::size_t i = 7; i < uri.size(); ++i)
    {
        const bool isCode = uri[i] == '%';
        path += isCode ? static_cast<char>(std::stoi(uri.substr(i + 1, 2), nullptr, 16)) : uri[i];
        i += isCode ? 2 : 0;
    }
    return path;
}
} // namespace

TEST(ListCommand, EveryNameSurvivesTheRoundTrip)
{
    const std::vector<std::string> names = {"back\\slash.mp3",
                                            "line\nfeed.mp3",
                                            "tab\tand\x1b escape.mp3",
                                            "no utf-8 \xff\xc3.mp3",
                                            "private \xEF\x80\x81.mp3",
                                            "\xF0\x9F\x8E\xB5 \xE6\x9D\xB1\xE4\xBA\xAC.mp3",
                                            "[a,b].mp3",
                                            "-dash.mp3",
                                            " blanks .mp3",
                                            std::string(251, 'x') + ".mp3"};
    const QoCommand qo;
    for (const std::string& name : names)
        qo.addSound(name);
    ASSERT_EQ(qo.scan().code, 0);
    std::vector<std::string> listed;
    for (const auto& record : qo.run({"ls", "--json"}).json())
        listed.push_back(record.contains("pathUri") ? decodeUri(record["pathUri"])
                                                    : record["path"].get<std::string>());
    EXPECT_EQ(listed.size(), names.size());
    const std::string raw = '\0' + qo.run({"ls", "-0"}).out;
    // Without a NUL at its end no name breaks its line.
    const std::string plain = qo.run({"ls"}).out;
    EXPECT_EQ(std::count(plain.begin(), plain.end(), '\n'), long(names.size()));
    EXPECT_TRUE(contains(plain, "line\\x0afeed.mp3\n"));
    for (const std::string& name : names)
    {
        const std::string path = qo.music(name);
        EXPECT_EQ(std::count(listed.begin(), listed.end(), path), 1)
            << testing::PrintToString(name);
        EXPECT_TRUE(contains(raw, '\0' + path + '\0')) << testing::PrintToString(name);
        EXPECT_EQ(qo.run({"info", path}).code, 0) << testing::PrintToString(name);
    }
}

TEST(ListCommand, PathNarrowsTheList)
{
    const QoCommand qo;
    qo.addSound("[x]/1.mp3");
    qo.addSound("[x] y/2.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"ls", "--json", qo.music("[x]")}).json().size(), 1U);
    EXPECT_EQ(qo.run({"ls", "--json", qo.music("[x]/../[x] y//2.mp3")}).json().size(), 1U);
    EXPECT_EQ(qo.run({"ls", qo.music("[x")}).code, 4);
    // A link to the folder leads to the same files.
    std::filesystem::create_directory_symlink(qo.music(), qo.dir.path("link"));
    EXPECT_EQ(qo.run({"ls", "--json", qo.dir.path("link/[x]")}).json().size(), 1U);
}

TEST(ListCommand, RecordHasEveryField)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const auto record = qo.run({"ls", "--json"}).json().at(0);
    std::string names;
    for (const auto& [name, value] : record.items())
        names += name + " ";
    EXPECT_EQ(
        names,
        "addedBy album albumArtist artist bitrate comment created disc duration flags genre id "
        "imported lastPlayed modified path picture plays rating reviewed size source title track "
        "velmoraId year ");
    EXPECT_EQ(record["size"], std::filesystem::file_size(qo.music("1.mp3")));
    EXPECT_GT(record["duration"], 0);
    EXPECT_EQ(record["imported"], true);
    EXPECT_EQ(record["modified"].get<std::string>().size(),
              std::string("2026-01-31T23:59:59.1234567Z").size());
    const std::string table = qo.run({"ls", "--long"}).out;
    EXPECT_EQ(std::count(table.begin(), table.end(), '\t'), 2 * 25);
}

TEST(TreeCommand, DrawsFoldersWithTheirFiles)
{
    const QoCommand qo;
    qo.addSound("a/deep/1.mp3");
    qo.addSound("b/2.mp3");
    qo.addSound("3.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"tree"}).out,
              qo.music() + "  (3 files)\n"
                           "├── a  (1 file)\n"
                           "│   └── deep  (1 file)\n"
                           "│       └── 1.mp3\n"
                           "├── b  (1 file)\n"
                           "│   └── 2.mp3\n"
                           "└── 3.mp3\n");
    EXPECT_EQ(qo.run({"tree", "-d", "--depth", "1", qo.music()}).out,
              qo.music() + "  (3 files)\n├── a  (1 file)\n└── b  (1 file)\n");
}
