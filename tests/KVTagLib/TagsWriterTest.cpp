#include "KVTagLib/TagFiles.h"
#include "support/Contains.h"
#include "support/Words.h"

#include <sys/stat.h>
#include <sys/xattr.h>

using namespace tagfiles;
using KVTagLib::CTags;

namespace
{
struct FormatCase
{
    const char* file;
    const char* refereeFormat;
    std::vector<std::string> refereeLines;
};

const Values everything{"Björk Ünder 東京",
                        "Ålbum & more",
                        "Títle 🎵",
                        "Trip-Hop",
                        "3/12",
                        "1997",
                        "First line\nsecond line"};

/// What the referee calls the fields of "everything", in their order, each with its value; "-" for
/// one that other lines tell of.
std::vector<std::string> linesOf(const std::string& names, std::vector<std::string> others)
{
    const std::string values[] = {everything.artist,
                                  everything.album,
                                  everything.title,
                                  everything.genre,
                                  everything.track,
                                  everything.year,
                                  "First line\\nsecond line"};
    const std::string* value = values;
    for (const std::string& name : wordsOf(names))
    {
        if (name != "-")
            others.push_back(name + "=" + *value);
        ++value;
    }
    return others;
}

const auto id3v24Lines =
    linesOf("TPE1 TALB TIT2 TCON TRCK TDRC USLT::XXX", {"version=2.4", "picture=3 image/jpeg 377"});
const auto xiphLines =
    linesOf("artist album title genre - date lyrics", {"tracknumber=3", "tracktotal=12"});
const auto apeLines =
    linesOf("Artist Album Title Genre Track Year Lyrics", {"Cover Art (Front)=387"});
const auto mp4Lines = linesOf("©ART ©alb ©nam ©gen trkn ©day ©lyr", {"picture=13 377"});
const auto asfLines =
    linesOf("Author WM/AlbumTitle Title WM/Genre WM/TrackNumber WM/Year WM/Lyrics", {});

const FormatCase formatCases[] = {
    {"sound.mp3", "MP3", id3v24Lines},
    {"vbr.mp3", "MP3", id3v24Lines},
    {"sound.mp2", "MP3", id3v24Lines},
    {"sound.flac", "FLAC", xiphLines},
    {"sound.ogg", "OggVorbis", xiphLines},
    {"sound.oga", "OggFLAC", xiphLines},
    {"sound.opus", "OggOpus", xiphLines},
    {"sound.spx", "OggSpeex", xiphLines},
    {"sound.m4a", "MP4", mp4Lines},
    {"alac.m4a", "MP4", mp4Lines},
    {"sound.wma", "ASF", asfLines},
    {"sound.wav", "WAVE", id3v24Lines},
    {"sound.aiff", "AIFF", id3v24Lines},
    {"sound.ape", "MonkeysAudio", apeLines},
    {"sound.wv", "WavPack", apeLines},
    {"sound.mpc", "Musepack", apeLines},
    {"sound.tta", "TrueAudio", id3v24Lines},
};

} // namespace

TEST(TagsWriter, EachFormatHoldsEveryFieldAndKeepsItsSoundAndIsNotTouchedForNothing)
{
    const TempDir folder;
    for (const FormatCase& row : formatCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        const std::string sound = haveDecoder() ? soundChecksum(path) : "";
        ASSERT_EQ(write(path, withPicture(tagsOf(everything), "red.jpg")), "");
        EXPECT_EQ(read(path), everything);
        CTags again(folder.collPath());
        ASSERT_TRUE(readInto(path, again));
        KVTagLib::CPictureTag picture;
        ASSERT_TRUE(again.GetPicture(0, picture));
        EXPECT_EQ(contentOf(qo::toSystemPath(picture.GetFilePath())),
                  contentOf(tagfiles::sound("red.jpg")));

        struct stat before = {};
        struct stat after = {};
        ASSERT_EQ(::stat(path.c_str(), &before), 0);
        ASSERT_EQ(write(path, tagsOf(everything)), "");
        ASSERT_EQ(::stat(path.c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);

        ASSERT_EQ(write(path, tagsOf({})), "");
        EXPECT_EQ(read(path), Values());
        EXPECT_EQ(haveDecoder() ? soundChecksum(path) : "", sound);
    }
}

TEST(TagsWriter, AnotherTagLibraryReadsWhatWasWritten)
{
    if (!haveReferee())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const TempDir folder;
    for (const FormatCase& row : formatCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        ASSERT_EQ(write(path, withPicture(tagsOf(everything), "red.jpg")), "");
        const std::string found = refereeOn(path);
        EXPECT_TRUE(hasLine(found, std::string("format=") + row.refereeFormat)) << found;
        for (const std::string& line : row.refereeLines)
            EXPECT_TRUE(hasLine(found, line)) << "no line " << line << " in\n" << found;
    }
}

TEST(TagsWriter, ValuesThatAFormatCannotHoldAreRefusedAndTheFileStays)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.m4a");
    ASSERT_EQ(write(path, tagsOf(everything)), "");
    const std::string before = contentOf(path);
    EXPECT_EQ(write(path, only(&CTags::SetTrackNumber, u"A1")),
              "the tag of this file cannot hold the new values");
    EXPECT_EQ(contentOf(path), before);
}

TEST(TagsWriter, OldTagKindsStayAloneWhileTheyCanHoldTheValues)
{
    const TempDir folder;
    std::string tag(128, '\0');
    tag.replace(0, 3, "TAG");
    tag.replace(3, 5, "Title");
    tag.replace(97, 30, "a comment of thirty characters");
    tag[127] = 17;
    const std::string sound3 = contentOf(sound("sound.mp3"));
    const std::string path = folder.write("x.mp3", sound3 + tag);
    ASSERT_EQ(write(path, tagsOf({"Ann", "Album", "Title", "Rock", "", "1999", ""})), "");
    const std::string after = contentOf(path);
    ASSERT_EQ(after.size(), sound3.size() + 128);
    EXPECT_EQ(after.substr(sound3.size() + 97, 30), "a comment of thirty characters");
    EXPECT_EQ(read(path), (Values{"Ann", "Album", "Title", "Rock", "", "1999", ""}));

    // What is too long for it is cut there and stands whole in a new tag.
    const Values longer{"Ann", "Album", std::string(40, 't'), "Rock", "", "1999", ""};
    ASSERT_EQ(write(path, tagsOf(longer)), "");
    EXPECT_EQ(read(path), longer);
    EXPECT_EQ(contentOf(path).substr(contentOf(path).size() - 125, 31), std::string(30, 't') + "A");

    // The comment covers the place of the track number, and a year is four digits.
    for (const auto& [set, text] :
         {std::pair{&CTags::SetTrackNumber, u"7"}, {&CTags::SetYear, u"abc"}})
    {
        folder.write("x.mp3", after);
        ASSERT_EQ(write(path, only(set, text)), "");
        EXPECT_TRUE(contentOf(path).starts_with("ID3"));
        EXPECT_TRUE(read(path).track == "7" || read(path).year == "abc");
        EXPECT_TRUE(contains(contentOf(path), "a comment of thirty characters"));
    }
}

TEST(TagsWriter, OldestId3VersionStays)
{
    const TempDir folder;
    const auto frame = [](const std::string& id, const std::string& body)
    { return id + std::string(2, '\0') + static_cast<char>(body.size() + 1) + '\0' + body; };
    const std::string frames = frame("TT2", "Old") + frame("TP1", "Ann") + frame("TEN", "Someone") +
                               frame("TYE", "1999") + frame("XYZ", "unknown");
    const std::string path =
        folder.write("x.mp3",
                     std::string("ID3\2\0\0\0\0\0", 9) + static_cast<char>(frames.size()) + frames +
                         contentOf(sound("sound.mp3")));
    const Values fresh{"Ann", "", "New title 東京", "Jazz", "1/2", "1999", "words"};
    ASSERT_EQ(write(path, withPicture(tagsOf(fresh), "red.jpg")), "");
    EXPECT_EQ(read(path), fresh);
    const std::string after = contentOf(path);
    EXPECT_EQ(after.substr(0, 4), "ID3\2");
    for (const char* kept : {"Someone", "unknown"})
        EXPECT_TRUE(contains(after, kept)) << kept;
    // The day has a frame of its own.
    ASSERT_EQ(write(path, only(&CTags::SetYear, u"2001-05-03")), "");
    EXPECT_EQ(read(path).year, "2001");
    EXPECT_TRUE(contains(contentOf(path), "0305"));
}

TEST(TagsWriter, SymbolicLinkStaysALink)
{
    const TempDir folder;
    folder.makeFolder("other");
    const std::string target = folder.write("other/real.mp3", contentOf(sound("sound.mp3")));
    std::filesystem::create_symlink("other/real.mp3", folder.path("link.mp3"));
    ASSERT_EQ(write(folder.path("link.mp3"), tagsOf(everything)), "");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.mp3")));
    EXPECT_EQ(read(target), everything);
}

TEST(TagsWriter, HardLinksStayTogetherAndNothingLiesAboutAfterwards)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.mp3");
    std::filesystem::create_hard_link(path, folder.path("twin.mp3"));
    ASSERT_EQ(write(path, tagsOf(everything)), "");
    EXPECT_EQ(std::filesystem::hard_link_count(path), 2U);
    EXPECT_EQ(read(folder.path("twin.mp3")), everything);
    ASSERT_EQ(write(path, tagsOf({})), "");
    EXPECT_EQ(read(folder.path("twin.mp3")), Values());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

TEST(TagsWriter, ModeAndExtendedAttributesStay)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.flac");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    const bool attributes = ::setxattr(path.c_str(), "user.rating", "five", 4, 0) == 0;
    ASSERT_EQ(write(path, tagsOf(everything)), "");
    struct stat st = {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640U);
    char value[8] = {};
    if (attributes)
    {
        EXPECT_EQ(::getxattr(path.c_str(), "user.rating", value, sizeof value), 4);
        EXPECT_STREQ(value, "five");
    }
}

TEST(TagsWriter, FileOfAnotherSpellingIsNotWritten)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.mp3");
    const std::string before = contentOf(path);
    EXPECT_NE(write(folder.path("SOUND.mp3"), tagsOf(everything)), "");
    EXPECT_EQ(contentOf(path), before);
}

TEST(TagsWriter, PictureThatIsGoneLeavesTheEmbeddedOne)
{
    const TempDir folder;
    const std::string path = copySound(folder, "sound.flac");
    ASSERT_EQ(write(path, withPicture({}, "red.jpg")), "");
    const std::string before = contentOf(path);
    CTags gone;
    EXPECT_FALSE(gone.AddPicture(folder.collPath("gone.jpg")));
    EXPECT_FALSE(gone.AddPicture(u""));
    EXPECT_FALSE(gone.AddPicture(qo::fromSystemPath(path)));
    EXPECT_EQ(write(path, gone), "");
    EXPECT_EQ(contentOf(path), before);
}

TEST(TagsWriter, DamagedFilesAreLeftAsTheyAre)
{
    const TempDir folder;
    for (const FormatCase& row : formatCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        ASSERT_EQ(write(path, tagsOf(everything)), "");
        const std::string whole = contentOf(path);
        for (std::size_t part = 1; part < 8; ++part)
        {
            const std::string cut = whole.substr(0, whole.size() * part / 8);
            folder.write(row.file, cut);
            const CTags tags = only(&CTags::SetTitle, u"Another title");
            const bool written = write(path, tags).empty();
            EXPECT_TRUE(written ? read(path).title == "Another title" : contentOf(path) == cut);
        }
        std::filesystem::remove(path);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
