#include "KVTagLib/TagFiles.h"
#include "support/Contains.h"

#include <tuple>

using namespace tagfiles;
using KVTagLib::CTags;

namespace
{
void replaceIn(std::string& text, const std::string& old, const std::string& fresh)
{
    const std::size_t at = text.find(old);
    ASSERT_NE(at, std::string::npos) << old;
    text.replace(at, old.size(), fresh);
}

/// With a comment that leaves no room for a track number.
std::string id3v1Tag(const std::string& shownTitle)
{
    std::string tag(128, '\0');
    tag.replace(0, 3, "TAG");
    tag.replace(3, shownTitle.size(), shownTitle);
    tag.replace(63, 5, "Album");
    tag.replace(97, 30, "a comment of thirty characters");
    return tag;
}
} // namespace

TEST(TagLoss, CommentsThatNobodyCanReadStayByteForByte)
{
    using namespace std::string_literals;
    const TempDir folder;
    const std::string own = "ALBUM=Keep me";
    for (const char* file : {"sound.flac", "sound.ogg", "sound.oga", "sound.opus", "sound.spx"})
    {
        for (const std::string& odd : {"ALBUM=Keep \xe9\xe9"s,
                                       "ALBUM Keep me"s,
                                       "ALB\xc3\x84=Keep me"s,
                                       "Album=Kee\0 me"s,
                                       "COVERART=K%pm"s,
                                       "ALBUMNAMELY=="s})
        {
            SCOPED_TRACE(std::string(file) + " " + odd);
            const std::string path = copySound(folder, file);
            ASSERT_EQ(write(path, tagsOf({"Ann", "Keep me", "Old", "Rock", "3", "", ""})), "");
            std::string content = contentOf(path);
            replaceIn(content, own, odd);
            folder.write(file, content);
            EXPECT_EQ(write(path, withPicture(title(u"New"), "red.jpg")), "");
            EXPECT_EQ(read(path).title, "New");
            EXPECT_TRUE(contains(contentOf(path), odd));
        }
    }
}

TEST(TagLoss, FlacKeepsADamagedPictureAndItsSoundInPlace)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.flac");
    ASSERT_EQ(write(path, withPicture(title(u"Old"), "red.jpg")), "");
    std::string content = contentOf(path);
    content[content.find("image/jpeg") - 4] = '\x7f';
    folder.write("sound.flac", content);
    ASSERT_EQ(write(path, title(u"A longer title")), "");
    EXPECT_EQ(contentOf(path).size(), content.size());
    EXPECT_TRUE(contains(contentOf(path), contentOf(sound("red.jpg"))));
    ASSERT_EQ(write(path, withPicture({}, "blue.png")), "");
    EXPECT_TRUE(contains(contentOf(path), contentOf(sound("red.jpg"))));
    EXPECT_TRUE(contains(contentOf(path), contentOf(sound("blue.png"))));
}

TEST(TagLoss, Id3TagsBesideAFlacCommentFollowAndLoseNothing)
{
    const TempDir folder;
    const std::string frames = id3v2Frame("TIT2", std::string("\0Old", 4)) +
                               id3v2Frame("TSIZ",
                                          std::string("\0"
                                                      "2141",
                                                      5)) +
                               id3v2Frame("RVAD", "volume");
    const std::string path = folder.write(
        "x.flac", id3v2Tag(3, 0, frames) + contentOf(sound("sound.flac")) + id3v1Tag("Old"));
    ASSERT_EQ(write(path, tagsOf({"Ann", "", "New", "", "", "", ""})), "");
    EXPECT_EQ(read(path), (Values{"Ann", "", "New", "", "", "", ""}));
    const std::string after = contentOf(path);
    EXPECT_EQ(after.substr(0, 4), "ID3\3");
    EXPECT_EQ(after.find("Old"), std::string::npos);
    EXPECT_TRUE(contains(after, id3v2Frame("RVAD", "volume")));
    EXPECT_TRUE(contains(after, "TSIZ"));
    EXPECT_EQ(after.substr(after.size() - 125, 4), std::string("New\0", 4));
    EXPECT_EQ(after.substr(after.size() - 31, 30), "a comment of thirty characters");
}

TEST(TagLoss, Id3v1CommentStaysWholeBesideAnApeTag)
{
    const TempDir folder;
    for (const char* file : {"sound.ape", "sound.wv", "sound.mpc"})
    {
        SCOPED_TRACE(file);
        const std::string path = folder.write(file, contentOf(sound(file)) + id3v1Tag("Old"));
        ASSERT_EQ(write(path, title(u"\u6771")), "");
        const std::string after = contentOf(path);
        EXPECT_EQ(read(path).title, "\u6771");
        EXPECT_EQ(after.substr(after.size() - 31, 30), "a comment of thirty characters");
        EXPECT_EQ(after.substr(after.size() - 125, 30), std::string(30, '\0'));
    }
}

TEST(TagLoss, FramesEncodedByTheirHeadersWordStayReadable)
{
    const TempDir folder;
    const std::string artist("\1\xff\0\xfe"
                             "A\0",
                             6);
    const std::string owned("o\0\xff\0\xe0", 5);
    const std::string path =
        folder.write("x.mp3",
                     id3v2Tag(4, '\x80', id3v2Frame("TPE1", artist) + id3v2Frame("PRIV", owned)) +
                         contentOf(sound("sound.mp3")));
    ASSERT_EQ(read(path).artist, "A");
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_EQ(read(path).artist, "A");
    EXPECT_TRUE(contains(contentOf(path), id3v2Frame("PRIV", owned, 2)));
}

TEST(TagLoss, WholeDateReplacesItsYear)
{
    const TempDir folder;
    for (const char* file : {"sound.mp3", "sound.flac", "sound.m4a", "sound.wma", "sound.ape"})
    {
        SCOPED_TRACE(file);
        const std::string path = copySound(folder, file);
        const CTags year = only(&CTags::SetYear, u"2001");
        ASSERT_EQ(write(path, year), "");
        ASSERT_EQ(write(path, only(&CTags::SetYear, u"2001-05-03")), "");
        const std::string dated = contentOf(path);
        const std::string wide("2\0"
                               "0\0"
                               "0\0"
                               "1\0-\0"
                               "0\0"
                               "5\0",
                               14);
        EXPECT_TRUE(dated.find("2001-05-03") != std::string::npos ||
                    dated.find(wide) != std::string::npos);
        // The year alone is what a reader shows, so it says nothing against the date.
        ASSERT_EQ(write(path, year), "");
        EXPECT_EQ(contentOf(path), dated);
    }
}

TEST(TagLoss, TrackIsWrittenAsTheFormatCanSpellIt)
{
    const std::tuple<const char*, const char16_t*, const char*> cases[] = {
        {"sound.m4a", u"07", "7/5"},
        {"sound.m4a", u"3/", "3"},
        {"sound.m4a", u"3/0", "3"},
        {"sound.m4a", u"/12", ""},
        {"sound.flac", u"07", "07/5"},
        {"sound.flac", u"3/", "3"},
        {"sound.flac", u"3/0", "3"},
        {"sound.flac", u"/12", ""},
        {"sound.flac", u"", ""},
        {"sound.ogg", u"3 / 12", "3/12"},
        {"sound.mp3", u"/12", "/12"},
        {"sound.mp3", u"3 / 12", "3/12"},
        {"sound.ape", u"3/", "3"},
        {"sound.wma", u"/12", "/12"},
    };
    const TempDir folder;
    for (const auto& [file, wanted, shown] : cases)
    {
        SCOPED_TRACE(std::string(file) + " " + qo::toUtf8(CString(wanted)));
        const std::string path = copySound(folder, file);
        CTags tags;
        tags.SetTrackNumber(u"1/5");
        tags.SetLyrics(u"123456");
        ASSERT_EQ(write(path, tags), "");
        std::string content = contentOf(path);
        if (std::string(file) == "sound.flac")
            replaceIn(content, "LYRICS=123456", "TOTALTRACKS=5");
        folder.write(file, content);
        EXPECT_EQ(write(path, only(&CTags::SetTrackNumber, wanted)), "");
        EXPECT_EQ(read(path).track, shown);
    }
    const std::string path =
        folder.write("old.mp3", contentOf(sound("sound.mp3")) + id3v1Tag("Old"));
    EXPECT_EQ(write(path, only(&CTags::SetTrackNumber, u"07")), "");
    EXPECT_EQ(read(path).track, "07");
}
