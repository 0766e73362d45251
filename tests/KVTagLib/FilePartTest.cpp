#include "KVTagLib/layout/FilePart.h"

#include "KVTagLib/TagFiles.h"

using namespace tagfiles;
using KVTagLib::FilePart;

namespace
{
std::vector<FilePart> partsOf(const std::string& path)
{
    std::vector<FilePart> parts;
    CString error;
    EXPECT_TRUE(KVTagLib::readFileParts(qo::fromSystemPath(path), parts, error))
        << path << qo::toUtf8(error);
    return parts;
}

/// "<depth> <name> <size> <text>".
std::vector<std::string> linesOfParts(const std::string& path)
{
    std::vector<std::string> lines;
    for (const FilePart& part : partsOf(path))
        lines.push_back(std::to_string(part.depth) + " " + qo::toUtf8(part.name) + " " +
                        std::to_string(part.size) + " " + qo::toUtf8(part.text));
    return lines;
}

std::string atom(const std::string& name, const std::string& content)
{
    const auto size = static_cast<unsigned>(content.size() + 8);
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(size >> shift);
    return bytes + name + content;
}
} // namespace

TEST(FilePart, PartsOfEveryFormatAddUpToTheFileAndNameWhatWasWritten)
{
    const TempDir folder;
    for (const auto& [file, name] : {std::pair("sound.mp3", "TIT2"),
                                     {"sound.tta", "TIT2"},
                                     {"sound.wav", "TIT2"},
                                     {"sound.aiff", "TIT2"},
                                     {"sound.flac", "TITLE"},
                                     {"sound.ogg", "TITLE"},
                                     {"sound.oga", "TITLE"},
                                     {"sound.opus", "TITLE"},
                                     {"sound.spx", "TITLE"},
                                     {"sound.m4a", "\u00a9nam"},
                                     {"sound.ape", "Title"},
                                     {"sound.wv", "Title"},
                                     {"sound.mpc", "Title"},
                                     {"sound.wma", "title"}})
    {
        SCOPED_TRACE(file);
        const std::string path = copySound(folder, file);
        ASSERT_EQ(write(path, withPicture(title(u"Low Tide"), "red.jpg")), "");
        std::int64_t sum = 0;
        bool hasTitle = false;
        int withBytesOfPicture = 0;
        for (const FilePart& part : partsOf(path))
        {
            sum += part.depth == 0 ? part.size : 0;
            hasTitle = hasTitle || (qo::toUtf8(part.name) == name && part.text == u"Low Tide");
            withBytesOfPicture += part.depth > 0 && part.size > 377 && part.size < 620 ? 1 : 0;
        }
        EXPECT_EQ(sum, static_cast<std::int64_t>(contentOf(path).size()));
        EXPECT_TRUE(hasTitle);
        EXPECT_GE(withBytesOfPicture, std::string(file) == "sound.flac" ? 0 : 1);
    }
}

TEST(FilePart, ShowsFramesThatNobodyCanReadAndEachTagOfAFile)
{
    const TempDir folder;
    const std::string frames = id3v2Frame("TIT2", std::string("\0Old", 4)) +
                               id3v2Frame("XYZ ", "???") + id3v2Frame("TALB", "");
    const std::string ape("APETAGEX\xd0\x07\0\0\x2c\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 32);
    const std::string item("\1\0\0\0\0\0\0\0Kx\0v", 12);
    const std::string path = folder.write("x.mp3",
                                          id3v2Tag(3, 0, frames) + contentOf(sound("sound.mp3")) +
                                              item + ape + "TAG" + "Old" + std::string(122, '\0'));
    EXPECT_EQ(linesOfParts(path),
              (std::vector<std::string>{"0 ID3v2.3 tag 47 ",
                                        "1 TIT2 14 Old",
                                        "1 XYZ  13 ",
                                        "1 TALB 10 ",
                                        "1 header and padding 10 ",
                                        "0 sound 2141 ",
                                        "0 APE tag 44 ",
                                        "1 Kx 12 v",
                                        "1 header and footer 32 ",
                                        "0 ID3v1 tag 128 Old"}));
}

TEST(FilePart, DepthAndNumberOfPartsAreBounded)
{
    const TempDir folder;
    std::string deep;
    for (int i = 0; i < 5000; ++i)
        deep = atom("moov", deep);
    const std::string start = atom("ftyp", "M4A ");
    EXPECT_LT(partsOf(folder.write("deep.m4a", start + deep)).size(), 20U);
    std::string wide = start;
    for (int i = 0; i < 120'000; ++i)
        wide += atom("free", "");
    const std::vector<FilePart> parts = partsOf(folder.write("wide.m4a", wide));
    EXPECT_EQ(parts.size(), 100'001U);
    EXPECT_EQ(parts.back().name, CString(u"further parts are left out"));
}
