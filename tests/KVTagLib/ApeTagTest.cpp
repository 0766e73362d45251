#include "KVTagLib/TagFiles.h"
#include "support/Contains.h"

#include <vector>

using namespace tagfiles;
using namespace std::string_literals;
using KVTagLib::CTags;

namespace
{
std::string number(std::size_t value)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string item(const std::string& key, const std::string& value, unsigned flags = 0)
{
    return number(value.size()) + number(flags) + key + '\0' + value;
}

/// A tag of version 2 with a header, or of version 1 without one.
std::string apeTagOf(const std::vector<std::string>& items, bool hasHeader = true)
{
    std::string content;
    for (const std::string& one : items)
        content += one;
    const auto frame = [&](unsigned flags)
    {
        return "APETAGEX" + number(hasHeader ? 2000 : 1000) + number(content.size() + 32) +
               number(items.size()) + number(flags) + std::string(8, '\0');
    };
    return hasHeader ? frame(0xA0000000) + content + frame(0x80000000) : content + frame(0);
}

/// The formats that have such tags; none of these files has one of its own.
const char* const files[] = {"sound.ape", "sound.wv", "sound.mpc", "sound.mp3"};
} // namespace

TEST(ApeTag, AWriteOfOneFieldKeepsEveryOtherItemByteForByteAndInItsPlace)
{
    const std::string red = "a.jpg\0"s + contentOf(sound("red.jpg"));
    const std::string blue = "b.png\0"s + contentOf(sound("blue.png"));
    const std::vector<std::string> ahead = {
        item("ARTIST", "\xC0\xED\xED\xE0\0Bob"s), // the first is not UTF-8
        item("Cover Art (Front)", red, 2),
        item("Cover Art (Front)", blue, 2),
        item("OggS", "a key that the standard forbids"),
        item("x", "too short a key"),
    };
    const std::vector<std::string> after = {
        item("ALBUM", "K\xF6ln", 1), // read-only
        item("Related", "https://example.org", 4),
        item("Comment", "\xC4\xE3\xBA\xC3\xCA\xC0\xBD\xE7"),
        item("Empty", ""),
    };
    const TempDir folder;
    for (const bool hasHeader : {true, false})
    {
        for (const char* file : files)
        {
            SCOPED_TRACE(std::string(file) + (hasHeader ? " 2" : " 1"));
            const auto with = [&](const std::string& title)
            {
                std::vector<std::string> items = ahead;
                items.push_back(item("TITLE", title, 1));
                items.insert(items.end(), after.begin(), after.end());
                return contentOf(sound(file)) + apeTagOf(items, hasHeader);
            };
            const std::string path = folder.write(file, with("Low"));
            EXPECT_EQ(read(path).album, "K\u00F6ln");
            EXPECT_EQ(write(path, title(u"Low Tide")), "");
            // An MP3 file gets no ID3v2 tag, as this one can hold the title.
            EXPECT_TRUE(contentOf(path) == with("Low Tide"));
            EXPECT_EQ(write(path, withPicture({}, "green.jpg")), "");
            std::vector<std::string> items = ahead;
            items[1] = item("Cover Art (Front)", "cover.jpg\0"s + contentOf(sound("green.jpg")), 2);
            items.insert(items.end(), after.begin(), after.end());
            for (const std::string& one : items)
                EXPECT_TRUE(contains(contentOf(path), one)) << one.substr(8, 9);
        }
    }
}

TEST(ApeTag, KeysAreOneWhateverTheirCaseAndNoValueOfTheirsIsLost)
{
    const TempDir folder;
    const std::string path = folder.write(
        "x.ape",
        contentOf(sound("sound.ape")) +
            apeTagOf({item("artist", "Ann"), item("Title", "Low"), item("ARTIST", "Bob\0Cid"s)}));
    CTags tags;
    tags.AddArtist(u"Eve", false);
    ASSERT_EQ(write(path, tags), "");
    EXPECT_TRUE(contentOf(path).ends_with(
        apeTagOf({item("artist", "Eve\0Bob\0Cid"s), item("Title", "Low")})));
    // A tag without items goes as a whole.
    ASSERT_EQ(write(path, tagsOf({})), "");
    EXPECT_TRUE(contentOf(path) == contentOf(sound("sound.ape")));
}

TEST(ApeTag, OneThatCannotBeTakenApartIsReadAsFarAsItGoesAndNotWritten)
{
    const std::string artist = item("Artist", "Ann");
    const std::string whole = apeTagOf({artist, item("Title", "Low"), item("Album", "Deep")});
    const auto changed = [&](std::size_t at, char byte)
    {
        std::string tag = whole;
        tag[at] = byte;
        return tag;
    };
    const TempDir folder;
    for (const char* file : files)
    {
        for (const std::string& tag : {changed(32 + artist.size(), '\x60'), // an item's size
                                       changed(whole.size() - 16, 2),       // the number of items
                                       changed(whole.size() - 16, 4),
                                       changed(12, 1),                      // the header's size
                                       changed(whole.size() - 17, '\x7F')}) // more than there is
        {
            SCOPED_TRACE(std::string(file) + " " + std::to_string(tag.size()));
            const std::string content = contentOf(sound(file)) + tag;
            const std::string path = folder.write(file, content);
            EXPECT_TRUE(read(path).artist == "Ann" || tag[whole.size() - 17] == '\x7F');
            EXPECT_NE(write(path, title(u"New")), "");
            EXPECT_TRUE(contentOf(path) == content);
        }
    }
}

TEST(ApeTag, OneOf131BytesIsNotTakenForAnId3v1Tag)
{
    const std::string tag = apeTagOf({item("Title", "Low"), item("Note", std::string(37, 'n'))});
    ASSERT_EQ(tag.size(), 131U);
    const TempDir folder;
    for (const char* file : files)
    {
        SCOPED_TRACE(file);
        const std::string path = folder.write(file, contentOf(sound(file)) + tag);
        EXPECT_EQ(write(path, title(u"Wow")), "");
        EXPECT_TRUE(contentOf(path) ==
                    contentOf(sound(file)) +
                        apeTagOf({item("Title", "Wow"), item("Note", std::string(37, 'n'))}));
    }
}
