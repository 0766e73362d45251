#include "KVTagLib/Rating.h"

#include "KVTagLib/TagFiles.h"

using namespace tagfiles;
using KVTagLib::CTags;
using KVTagLib::Field;

namespace
{
/// "Various|1/2|fine|8|7": album artist, disc, comment, half stars and plays of a file.
std::string furtherOf(const std::string& path)
{
    CTags tags;
    EXPECT_TRUE(readInto(path, tags)) << path;
    std::string line;
    for (const Field field :
         {Field::albumArtist, Field::disc, Field::comment, Field::rating, Field::playCount})
    {
        CString text;
        tags.GetText(field, text);
        line += (field == Field::albumArtist ? "" : "|") + qo::toUtf8(text);
    }
    return line;
}

CTags rating(int halfStars)
{
    CTags tags;
    tags.SetRating(halfStars);
    return tags;
}

struct FormatCase
{
    const char* file;
    std::vector<std::string> lines; ///< that the referee has after a rating of 4.5 stars
};

const FormatCase formatCases[] = {
    {"sound.mp3",
     {"POPM:second=POPM(email='second', rating=242, count=7)",
      "POPM:first=POPM(email='first', rating=0, count=3)"}},
    {"sound.wav", {"POPM:second=POPM(email='second', rating=242, count=7)"}},
    {"sound.aiff", {"POPM:second=POPM(email='second', rating=242, count=7)"}},
    {"sound.flac", {"rating=5", "fmps_rating=0.9"}},
    {"sound.ogg", {"rating=5", "fmps_rating=0.9"}},
    {"sound.opus", {"rating=5", "fmps_rating=0.9"}},
    {"sound.m4a",
     {"----:com.apple.iTunes:FMPS_Rating=0.9", "----:com.apple.iTunes:iTunNORM= 0000"}},
    {"sound.wma", {"FMPS/Rating=0.9", "WM/SharedUserRating=87"}},
    {"sound.ape", {"Rating=90", "FMPS_RATING=0.9"}},
    {"sound.wv", {"Rating=90", "FMPS_RATING=0.9"}}};
} // namespace

TEST(Rating, EachFormatIsReadAndRatedAndKeepsWhatOtherProgramsWrote)
{
    if (!haveReferee())
        GTEST_SKIP() << "python3-mutagen is not installed";
    const TempDir folder;
    for (const FormatCase& row : formatCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        ASSERT_EQ(furtherOf(path), "||||");
        ASSERT_EQ(outputOf("/usr/bin/python3 '" QO_SOURCE_DIR "/tests/KVTagLib/rated.py' '" + path +
                           "' 2>&1"),
                  "");
        EXPECT_EQ(furtherOf(path), "Various|1/2|fine|8|7");
        EXPECT_EQ(write(path, rating(9)), "");
        EXPECT_EQ(furtherOf(path), "Various|1/2|fine|9|7");
        const std::string found = refereeOn(path);
        for (const std::string& line : row.lines)
            EXPECT_TRUE(hasLine(found, line)) << "no line " << line << " in\n" << found;
        EXPECT_EQ(write(path, rating(0)), "");
        EXPECT_EQ(furtherOf(path), "Various|1/2|fine||7");
    }
}

TEST(Rating, AFileWithoutTagsTakesARating)
{
    const TempDir folder;
    for (const FormatCase& row : formatCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        ASSERT_EQ(write(path, rating(7)), "");
        EXPECT_EQ(furtherOf(path), "|||7|");
    }
}

TEST(Rating, EachScaleHoldsTheHalfStarsThatItCan)
{
    for (int halfStars = 0; halfStars <= KVTagLib::mostHalfStars; ++halfStars)
    {
        using namespace KVTagLib;
        EXPECT_EQ(ratingOfByte(byteOfRating(halfStars)), halfStars);
        EXPECT_EQ(ratingOfFraction(fractionOfRating(halfStars)), halfStars);
        // Half a star, "0.5", is as well half of all.
        EXPECT_EQ(ratingOfNumber(numberOfRating(halfStars, "2.5")), halfStars == 1 ? 5 : halfStars);
        EXPECT_EQ(ratingOfNumber(numberOfRating(halfStars, "60")), halfStars == 1 ? 10 : halfStars);
        EXPECT_EQ(ratingOfNumber(numberOfRating(halfStars, "3")), (halfStars + 1) / 2 * 2);
    }
    for (const char* const text : {"", "five", "-1", "101", "1e9", "nan", "4 stars"})
        EXPECT_EQ(KVTagLib::ratingOfNumber(text), 0) << text;
    for (int byte = 1; byte < 256; ++byte)
        EXPECT_GT(KVTagLib::ratingOfByte(static_cast<unsigned char>(byte)), 0) << byte;
}
