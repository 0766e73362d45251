#include "KVTagLib/TagFiles.h"
#include "KVTagLib/pictures/PictureSize.h"

using namespace tagfiles;
using KVTagLib::CTags;
using KVTagLib::PictureRemoval;
namespace type = KVTagLib::pictureType;

namespace
{
/// A file with a title, a front cover and a back cover, made by another tag library, and how that
/// library's view of it shows the front cover.
struct CoverCase
{
    const char* file;
    const char* make; ///< Python; the file's path is in p, the pictures in red and blue
    const char* frontLine;
    int otherType = 4;
};

constexpr const char* id3Covers = R"(
from mutagen.id3 import ID3, TIT2, APIC
t = ID3(); t.add(TIT2(3, 'Title')); t.add(APIC(3, 'image/jpeg', 3, 'front', red))
t.add(APIC(3, 'image/png', 4, 'back', blue)); t.save(p, v2_version=VERSION)
)";
constexpr const char* chunkCovers = R"(
import mutagen
from mutagen.id3 import TIT2, APIC
f = mutagen.File(p); f.add_tags(); f.tags.add(TIT2(3, 'Title')); f.tags.add(APIC(3, 'image/jpeg', 3, 'front', red))
f.tags.add(APIC(3, 'image/png', 4, 'back', blue)); f.save()
)";
constexpr const char* flacCovers = R"(
from mutagen.flac import FLAC
f = FLAC(p); f['title'] = 'Title'; f.add_picture(block(3, 'image/jpeg', red)); f.add_picture(block(4, 'image/png', blue))
f.save()
)";
constexpr const char* xiphCovers = R"(
import mutagen, base64
f = mutagen.File(p)
if f.tags is None: f.add_tags()
f['title'] = 'Title'
blocks = (block(3, 'image/jpeg', red), block(4, 'image/png', blue))
f['metadata_block_picture'] = [base64.b64encode(b.write()).decode() for b in blocks]; f.save()
)";
constexpr const char* mp4Covers = R"(
from mutagen.mp4 import MP4, MP4Cover
f = MP4(p); f['\xa9nam'] = 'Title'; f['covr'] = [MP4Cover(red, 13), MP4Cover(blue, 14)]; f.save()
)";
constexpr const char* apeCovers = R"(
from mutagen.apev2 import APEv2, APEValue, BINARY
a = APEv2(); a['Title'] = 'Title'; a['Cover Art (Front)'] = APEValue(b'cover.jpg\0' + red, BINARY)
a['Cover Art (Back)'] = APEValue(b'back.png\0' + blue, BINARY); a.save(p)
)";
constexpr const char* asfCovers = R"(
import struct
from mutagen.asf import ASF, ASFByteArrayAttribute
def cover(kind, mime, d):
    return ASFByteArrayAttribute(struct.pack('<BI', kind, len(d)) + (mime + '\0\0').encode('utf-16-le') + d)
f = ASF(p); f['Title'] = 'Title'; f['WM/Picture'] = [cover(3, 'image/jpeg', red), cover(4, 'image/png', blue)]; f.save()
)";

constexpr CoverCase coverCases[] = {
    {"sound.mp3", id3Covers, "picture=3 "},
    {"sound.tta", id3Covers, "picture=3 "},
    {"sound.wav", chunkCovers, "picture=3 "},
    {"sound.aiff", chunkCovers, "picture=3 "},
    {"sound.flac", flacCovers, "picture=3 "},
    {"sound.flac", xiphCovers, "picture=3 "},
    {"sound.ogg", xiphCovers, "picture=3 "},
    {"sound.oga", xiphCovers, "picture=3 "},
    {"sound.opus", xiphCovers, "picture=3 "},
    {"sound.spx", xiphCovers, "picture=3 "},
    {"sound.m4a", mp4Covers, "picture=13 ", type::none},
    {"sound.ape", apeCovers, "Cover Art (Front)="},
    {"sound.wv", apeCovers, "Cover Art (Front)="},
    {"sound.mpc", apeCovers, "Cover Art (Front)="},
    {"sound.wma", asfCovers, "picture=3 "},
};

/// Types and sizes of the pictures, as "3:32x32/377 4:32x32/128".
std::string picturesIn(const std::string& path)
{
    const TempDir covers;
    CTags tags(covers.collPath(), KVTagLib::TagExtent::everything);
    EXPECT_TRUE(readInto(path, tags));
    std::string all;
    CArray<KVTagLib::CPictureTag> pictures;
    tags.GetPictures(pictures);
    for (const KVTagLib::CPictureTag& picture : pictures)
    {
        const KVTagLib::PictureFacts& facts = picture.GetFacts();
        all += (all.empty() ? "" : " ") + std::to_string(facts.type) + ":" +
               std::to_string(facts.width) + "x" + std::to_string(facts.height) + "/" +
               std::to_string(facts.bytes);
    }
    return all;
}

CTags removal(PictureRemoval which)
{
    CTags tags;
    tags.RemovePictures(which);
    return tags;
}

/// Writes, and expects that another tag library misses nothing but lines with the first prefix and
/// finds nothing new but such with the second one; "" for none.
void expectChange(const std::string& path,
                  const CTags& tags,
                  const std::string& gone,
                  const std::string& come)
{
    const auto before = sortedLines(refereeOn(path));
    EXPECT_EQ(write(path, tags), "");
    const auto after = sortedLines(refereeOn(path));
    const auto expectLines = [](const std::vector<std::string>& lines, const std::string& prefix)
    {
        EXPECT_EQ(lines.size(), prefix.empty() ? 0U : 1U) << testing::PrintToString(lines);
        EXPECT_TRUE(lines.empty() || lines.front().starts_with(prefix)) << lines.front();
    };
    expectLines(difference(before, after), gone);
    expectLines(difference(after, before), come);
}

std::string bytes(std::initializer_list<int> values)
{
    return {values.begin(), values.end()};
}
} // namespace

TEST(Pictures, FrontCoverIsReplacedRemovedAndAddedAndEverythingElseStays)
{
    if (!haveReferee())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const TempDir folder;
    for (const auto& [file, make, front, otherType] : coverCases)
    {
        const std::string path = copySound(folder, file);
        std::string script =
            "import sys\np = sys.argv[1]\n"
            "from mutagen.flac import Picture\n"
            "def block(kind, mime, d):\n"
            "    b = Picture(); b.type = kind; b.mime = mime; b.data = d; return b\n"
            "D = '" QO_TEST_DATA "/sounds'\nVERSION = 3\n"
            "red = open(D + '/red.jpg', 'rb').read()\n"
            "blue = open(D + '/blue.png', 'rb').read()\n";
        script += make;
        EXPECT_EQ(outputOf("/usr/bin/python3 '" + folder.write("make.py", script) + "' '" + path +
                           "' 2>&1"),
                  "");
        SCOPED_TRACE(file + ("\n" + refereeOn(path)));
        const std::string other = std::to_string(otherType) + ":32x32/128";
        EXPECT_EQ(picturesIn(path), "3:32x32/377 " + other);
        expectChange(path, withPicture({}, "green.jpg"), front, front);
        EXPECT_EQ(picturesIn(path), "3:48x48/617 " + other);
        expectChange(path, removal(PictureRemoval::frontCovers), front, "");
        if (otherType != type::none)
        {
            EXPECT_EQ(picturesIn(path), other);
            expectChange(path, withPicture({}, "red.jpg"), "", front);
            EXPECT_EQ(picturesIn(path), "3:32x32/377 " + other);
        }
        EXPECT_EQ(write(path, removal(PictureRemoval::all)), "");
        EXPECT_EQ(picturesIn(path), "");
        EXPECT_EQ(read(path).title, "Title");
        const std::string bare = contentOf(path);
        EXPECT_EQ(write(path, removal(PictureRemoval::all)), "");
        EXPECT_EQ(contentOf(path), bare);
    }
}

TEST(Pictures, SizeIsWhatTheHeadersStateAndNothingWhereTheyAreCut)
{
    const auto zeros = [](std::size_t count) { return std::string(count, '\0'); };
    const struct
    {
        std::string content;
        int width;
        int height;
    } cases[] = {
        {"GIF89a" + bytes({0x40, 1, 0xf0, 0}), 320, 240},
        {"BM" + zeros(12) + bytes({40, 0, 0, 0, 7, 0, 0, 0, 0xfd, 0xff, 0xff, 0xff}), 7, 3},
        {"BM" + zeros(12) + bytes({12, 0, 0, 0, 7, 0, 3, 0}), 7, 3},
        {"RIFF    WEBPVP8X" + zeros(8) + bytes({0xff, 3, 0, 0x7f, 2, 0}), 1024, 640},
        {"RIFF    WEBPVP8L" + zeros(4) + bytes({0x2f, 0x63, 0xc0, 0x0c, 0}), 100, 52},
        {"RIFF    WEBPVP8 " + zeros(10) + bytes({0x40, 1, 0xf0, 0x40}), 320, 240},
        {bytes({0xff, 0xd8, 0xff, 0xe0, 0, 4, 1, 1, 0xff, 0xff, 0xc2, 0, 17, 8, 0, 9, 0, 5}), 5, 9},
        {bytes({0xff, 0xd8, 0xff, 0xe0, 0, 0, 0xff, 0xe0}), 0, 0},
    };
    for (const auto& [content, width, height] : cases)
    {
        const auto sizeOf = [&content](std::size_t length)
        {
            const auto size = KVTagLib::pictureSizeOf(
                TagLib::ByteVector(content.data(), static_cast<unsigned>(length)));
            return std::pair(size.width, size.height);
        };
        EXPECT_EQ(sizeOf(content.size()), std::pair(width, height)) << content;
        for (std::size_t length = 0; length < content.size(); ++length)
            EXPECT_LE(sizeOf(length).first, width) << content << length;
    }
}
