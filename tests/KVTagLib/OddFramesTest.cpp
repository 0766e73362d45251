#include "KVTagLib/TagFiles.h"
#include "support/Contains.h"

using namespace tagfiles;
using namespace std::string_literals;

namespace
{
struct OddTag
{
    const char* what;
    std::string tag;
    std::string odd; ///< what has to stay when another field is written
};

std::string latin(const std::string& id, const std::string& text)
{
    return id3v2Frame(id, '\0' + text);
}

/// The sound with that tag, at its start or in a chunk at its end.
std::string tagged(const std::string& name, const std::string& tag)
{
    const std::string content = contentOf(sound(name));
    const bool aiff = name.ends_with("aiff");
    if (!aiff && !name.ends_with("wav"))
        return tag + content;
    const auto number = [&](std::size_t value)
    {
        std::string bytes;
        for (int shift = 0; shift < 32; shift += 8)
            bytes.insert(aiff ? 0 : bytes.size(), 1, static_cast<char>(value >> shift));
        return bytes;
    };
    const std::string chunk = "ID3 " + number(tag.size()) + tag + std::string(tag.size() % 2, 0);
    return content.substr(0, 4) + number(content.size() + chunk.size() - 8) + content.substr(8) +
           chunk;
}

const std::string artistFrame = latin("TPE1", "Ann");
const std::string albumFrame = latin("TALB", "Deep");
} // namespace

TEST(OddFrames, NoneKeepsTheFramesAfterItFromBeingReadAndWritten)
{
    const std::string shortExtension("\0\0\0\x06\0\0\0\0\0\0", 10); // its size is without itself
    const std::string extension("\0\0\0\x06\x01\0", 6);             // with itself
    const OddTag tags[] = {
        {"an id with a blank",
         id3v2Tag(3, 0, latin("TT2 ", "Odd") + artistFrame + albumFrame),
         "TT2 "},
        {"the same in 2.4",
         id3v2Tag(4, 0, latin("TT2 ", "Odd") + artistFrame + albumFrame),
         "TT2 "},
        {"no content", id3v2Tag(3, 0, id3v2Frame("TCOM", "") + artistFrame + albumFrame), "TCOM"},
        {"the same in 2.4",
         id3v2Tag(4, 0, id3v2Frame("TCOM", "") + artistFrame + albumFrame),
         "TCOM"},
        {"an extended header", id3v2Tag(3, '\x40', shortExtension + artistFrame + albumFrame), ""},
        {"one in 2.4, and no padding",
         id3v2Tag(4, '\x40', extension + artistFrame + albumFrame),
         ""},
        {"a group", id3v2Tag(4, 0, id3v2Frame("TPE1", "g\0Ann"s, '\x40') + albumFrame), "g\0Ann"s},
        {"a group in 2.3",
         id3v2Tag(3, 0, id3v2Frame("TPE1", "g\0Ann"s, '\x20') + albumFrame),
         "g\0Ann"s},
        {"no byte order mark", id3v2Tag(3, 0, id3v2Frame("TPE1", "\1A\0n\0n\0"s) + albumFrame), ""},
        {"the other order", id3v2Tag(3, 0, id3v2Frame("TPE1", "\1\0A\0n\0n"s) + albumFrame), ""},
        {"stray bytes",
         id3v2Tag(3, 0, artistFrame + albumFrame + "stray" + std::string(4, 0) + "bytes"),
         "stray" + std::string(4, 0) + "bytes"},
        {"half a frame in 2.4",
         id3v2Tag(4, 0, artistFrame + albumFrame + id3v2Frame("TCOM", "Ann").substr(0, 12)),
         id3v2Frame("TCOM", "Ann").substr(0, 12)},
        {"no such encoding",
         id3v2Tag(4, 0, id3v2Frame("TCON", "\x09Odd") + artistFrame + albumFrame),
         "\x09Odd"},
    };
    const TempDir folder;
    for (const OddTag& odd : tags)
    {
        for (const char* file : {"sound.mp3", "sound.flac", "sound.tta", "sound.wav", "sound.aiff"})
        {
            SCOPED_TRACE(std::string(odd.what) + " in " + file);
            const std::string path = folder.write(file, tagged(file, odd.tag));
            const Values before{.artist = "Ann", .album = "Deep"};
            EXPECT_EQ(read(path), before);
            EXPECT_EQ(write(path, title(u"New")), "");
            EXPECT_EQ(read(path), (Values{.artist = "Ann", .album = "Deep", .title = "New"}));
            EXPECT_TRUE(contains(contentOf(path), odd.odd));
        }
    }
}

TEST(OddFrames, YearOfAnOlderVersionIsReadAndGoesWithAWrite)
{
    const TempDir folder;
    const std::string path = folder.write("x.mp3",
                                          id3v2Tag(4, 0, latin("TYER", "1999") + artistFrame) +
                                              contentOf(sound("sound.mp3")));
    EXPECT_EQ(read(path).year, "1999");
    EXPECT_EQ(write(path, only(&KVTagLib::CTags::SetYear, u"2001")), "");
    EXPECT_EQ(read(path).year, "2001");
    EXPECT_FALSE(contains(contentOf(path), "TYER"));
}
