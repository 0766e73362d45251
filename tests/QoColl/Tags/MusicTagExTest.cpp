#include "QoColl/Tags/MusicTagEx.h"

#include "KVTagLib/Tags.h"
#include "QoColl/Db/QoFileDbItem.h"
#include "QoColl/Db/QoInplaceFileDbItem.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <random>

namespace
{
using Source = CTagAttribValue::ESrcValueType;
constexpr Source original = CTagAttribValue::SV_Original;
constexpr Source edited = CTagAttribValue::SV_Edited;
constexpr Source current = CTagAttribValue::SV_Current;
constexpr auto other = static_cast<Source>(2);

boost::shared_ptr<QoFileDbItem> makeItem()
{
    auto item = boost::make_shared<QoFileDbItem>();
    item->path = u"C:\\m\\Song.mp3";
    item->artist = u"Ann";
    item->album = u"Album";
    item->title = u"Song";
    item->genre = u"Jazz";
    item->trackNumber = u"3/12";
    item->year = u"99";
    item->lyrics = u"la";
    item->lyricsLoaded = true;
    item->picturePath = u"C:\\p.jpg";
    item->duration = 61000;
    item->bitrate = 192;
    return item;
}

int livingLyrics()
{
    LogCapture log(qo::level::flow);
    CMusicTagEx::checkNrLyrics();
    int count = -1;
    std::sscanf(log.lines().at(0).text.c_str(), "CMusicTagEx::checkNrLyrics : %d", &count);
    return count;
}
} // namespace

TEST(MusicTagEx, TakesOverARecordAndGivesItBack)
{
    CMusicTagEx tag;
    const auto record = makeItem();
    tag.setTag(record);
    EXPECT_FALSE(tag.isDirty(false));
    EXPECT_TRUE(tag.getArtist().sharesBufferWith(record->artist)) << "texts are not copied";
    EXPECT_LE(sizeof(CMusicTagEx), 3 * sizeof(void*));
    CString name;
    EXPECT_TRUE(tag.getConstAttrib(CTagAttrib::AT_FileName)->getValue(original, name));
    EXPECT_EQ(name, u"Song.mp3");

    auto item = boost::make_shared<QoFileDbItem>();
    tag.getTag(item);
    EXPECT_EQ(item->path, u"");
    EXPECT_EQ(item->genre, u"Jazz");
    EXPECT_EQ(item->trackNumber, u"3/12");
    EXPECT_EQ(item->lyrics, u"la");
    EXPECT_TRUE(item->lyricsLoaded);
    EXPECT_EQ(item->picturePath, u"C:\\p.jpg");
    EXPECT_EQ(item->duration, 61000);
    EXPECT_EQ(item->bitrate, 192);

    auto inplace = boost::make_shared<QoInplaceFileDbItem>();
    tag.getTag(inplace);
    EXPECT_EQ(inplace->title, u"Song");
    EXPECT_EQ(inplace->duration, 61000);
    IQorganizer::TagInfo info;
    tag.getTagInfo(info);
    EXPECT_EQ(info.trackNumber + u"|" + info.year + u"|" + info.genre, u"3/12|99|Jazz");
}

TEST(MusicTagEx, PendingEditIsSeenOnlyThroughTheCurrentValue)
{
    CMusicTagEx tag;
    tag.setTag(makeItem());
    tag.setArtist(u"Bob", edited, false);
    EXPECT_FALSE(tag.isDirty(true));
    tag.setArtist(u"Bob", edited, true);
    EXPECT_TRUE(tag.isDirty(true));
    EXPECT_EQ(tag.getArtist(), u"Ann");
    CString text;
    EXPECT_TRUE(tag.getArtist(current, text));
    EXPECT_EQ(text, u"Bob");
    EXPECT_FALSE(tag.getArtist(other, text));
    EXPECT_EQ(text, u"");

    tag.reset();
    EXPECT_FALSE(tag.isDirty(false));
    EXPECT_TRUE(tag.getArtist(edited, text));
    EXPECT_EQ(text, u"Bob");

    tag.setArtist(u"Bob", edited, true);
    tag.clear();
    EXPECT_TRUE(tag.isDirty(false));
}

TEST(MusicTagEx, RenamingIsNoChangeOfTheRealTag)
{
    CMusicTagEx tag;
    tag.setTag(makeItem());
    tag.getAttrib(CTagAttrib::AT_FileName)->setValue(edited, u"New.mp3", true);
    EXPECT_FALSE(tag.isDirty(true));
    EXPECT_TRUE(tag.isDirty(false));
    tag.setCrtFileNameAsOriginal();
    EXPECT_FALSE(tag.isDirty(false));
    CString name;
    tag.getAttrib(CTagAttrib::AT_FileName)->getCrtValue(name);
    EXPECT_EQ(name, u"New.mp3");
}

TEST(MusicTagEx, FillsOnlyWhatIsEmptyAndAlwaysAsAnEdit)
{
    CMusicTagEx tag;
    tag.setTag(makeItem());
    tag.setAlbum(u"", original, false);
    tag.setArtist(u"Other", other, false);
    tag.setAlbum(u"Found", other, false);
    tag.setGenre(u"", edited, true);
    tag.setGenre(u"Pop", other, false);
    EXPECT_TRUE(tag.fillEmptyAttribs(other));
    CString text;
    EXPECT_TRUE(tag.getAlbum(edited, text));
    EXPECT_EQ(text, u"Found");
    EXPECT_EQ(tag.getAttrib(CTagAttrib::AT_Album)->getCrtValueType(), edited);
    EXPECT_FALSE(tag.getArtist(edited, text));
    tag.getGenre(current, text);
    EXPECT_EQ(text, u"");
    EXPECT_FALSE(tag.fillEmptyAttribs(other));
}

TEST(MusicTagEx, CountsTheLivingTagsWithLyrics)
{
    const int before = livingLyrics();
    {
        CMusicTagEx tag;
        tag.setHasOriginalLyrics(true);
        tag.setHasOriginalLyrics(true);
        EXPECT_EQ(livingLyrics(), before + 1);
    }
    EXPECT_EQ(livingLyrics(), before);
}

TEST(MusicTagEx, TrackNumbersAreSplitAndMade)
{
    const struct
    {
        const char16_t* text;
        const char16_t* track;
        const char16_t* total;
        int trackNumber;
        int totalNumber;
    } rows[] = {{u" 3 / 12 ", u"3", u"12", 3, 12},
                {u"/12", u"", u"12", 0, 12},
                {u"3/", u"3", u"", 3, 0},
                {u"3", u"3", u"", 3, 0},
                {u"a/b/c", u"a", u"b/c", 0, 0},
                {u"", u"", u"", 0, 0}};
    for (const auto& row : rows)
    {
        CString track;
        CString total = u"old";
        EXPECT_EQ(CMusicTagEx::splitTrackNumber(row.text, track, total), *row.total != 0);
        EXPECT_EQ(track, row.track);
        EXPECT_EQ(total, row.total);
        int trackNumber = -1;
        int totalNumber = -1;
        EXPECT_EQ(CMusicTagEx::splitTrackNumber(row.text, trackNumber, totalNumber),
                  row.totalNumber != 0);
        EXPECT_EQ(trackNumber, row.trackNumber);
        EXPECT_EQ(totalNumber, row.totalNumber);
    }
    CString text;
    CMusicTagEx::makeTrackNumber(3, 12, text);
    EXPECT_EQ(text, u"3/12");
    CMusicTagEx::makeTrackNumber(CString(u"7"), CString(), text);
    EXPECT_EQ(text, u"7");
    CMusicTagEx::makeTrackNumber(CString(u"7"), CString(u"x"), text);
    EXPECT_EQ(text, u"7");
}

TEST(MusicTagEx, ForeignTagIsStoredUnderItsSourceAndLyricsCountOnlyAsTheFilesOwn)
{
    KVTagLib::CTags tags;
    tags.AddArtist(u"Bob", false);
    tags.SetLyrics(u"lo");
    CMusicTagEx tag;
    tag.setTag(makeItem());
    tag.setTag(other, tags, u"C:\\nowhere", true);
    EXPECT_FALSE(tag.getHasOriginalLyrics());
    CString text;
    tag.getArtist(current, text);
    EXPECT_EQ(text, u"Bob");
    EXPECT_FALSE(tag.getAlbum(other, text));
    tag.setTag(original, tags, u"C:\\nowhere", true);
    EXPECT_TRUE(tag.getHasOriginalLyrics());

    KVTagLib::CTags back;
    tag.getTag(other, back);
    EXPECT_TRUE(back.GetFirstValidArtist(text));
    EXPECT_FALSE(back.GetAlbum(text));
    EXPECT_EQ(back.GetPictureCount(), 0);
}

TEST(MusicTagEx, PictureIsCopiedUnderASafeNameAndTheFirstThatWorksWins)
{
    const TempDir dir;
    dir.makeFolder("out");
    dir.write("in/cover", "bytes");
    KVTagLib::CTags tags;
    tags.AddPicture(KVTagLib::CPictureTag(dir.collPath("in/gone"), u"image/png", false));
    tags.AddPicture(
        KVTagLib::CPictureTag(dir.collPath("in/cover"), u"image//../../jpe g+xml", false));
    LogCapture log;
    CString result;
    ASSERT_TRUE(CMusicTagEx::copyGetFirstValidPicturePath(tags, dir.collPath("out"), result));
    EXPECT_EQ(result, dir.collPath("out/cover.jpegxml"));
    EXPECT_EQ(dir.read("out/cover.jpegxml"), "bytes");
    EXPECT_EQ(log.count("CMusicTagEx::copyGetFirstValidPicturePath : error copying picture ",
                        qo::level::error),
              1);

    // A picture that lies there already is not copied onto itself.
    dir.write("out/b.png", "png");
    KVTagLib::CTags there;
    there.AddPicture(KVTagLib::CPictureTag(dir.collPath("out/b.png"), u"image/png", false));
    ASSERT_TRUE(CMusicTagEx::copyGetFirstValidPicturePath(there, dir.collPath("out"), result));
    EXPECT_EQ(result, dir.collPath("out/b.png"));
    EXPECT_EQ(dir.read("out/b.png"), "png");
    KVTagLib::CTags none;
    EXPECT_FALSE(CMusicTagEx::copyGetFirstValidPicturePath(none, dir.collPath("out"), result));
}

TEST(MusicTagEx, AnswersAlikeBeforeAndAfterItsAttributesBecomeObjects)
{
    std::mt19937 random(5); // NOLINT: the same run every time
    const auto record = makeItem();
    for (int round = 0; round < 500; ++round)
    {
        CMusicTagEx small;
        CMusicTagEx large;
        large.getAttrib(CTagAttrib::AT_Artist);
        for (int step = 0; step < 6; ++step)
        {
            const auto source = random() % 8 ? original : edited;
            const bool choose = random() % 2 == 0;
            const unsigned choice = random() % 8;
            for (CMusicTagEx* tag : {&small, &large})
            {
                if (choice == 0)
                    tag->setTag(makeItem());
                else if (choice == 1)
                    tag->clear();
                else if (choice == 2)
                    tag->reset();
                else if (choice == 3)
                    tag->setCrtFileNameAsOriginal();
                else if (choice == 4)
                    tag->fillEmptyAttribs(edited);
                else if (choice == 5)
                    tag->mirror(*record);
                else
                    tag->setTitle(u"T", source, choose);
            }
            ASSERT_EQ(small.isDirty(true), large.isDirty(true));
            ASSERT_EQ(small.getTime(), large.getTime());
            for (const auto looked : {original, edited, current})
            {
                CString a = u"a";
                CString b = u"b";
                ASSERT_EQ(small.getTitle(looked, a), large.getTitle(looked, b));
                ASSERT_EQ(a, b);
                ASSERT_EQ(small.getGenre(looked, a), large.getGenre(looked, b));
                ASSERT_EQ(a, b);
            }
        }
        for (int i = 0; i < CMusicTagEx::getNrAttribTypes(); ++i)
        {
            const auto type = CMusicTagEx::getAttribType(i);
            CString a;
            CString b;
            ASSERT_EQ(small.getAttrib(type)->getCrtValue(a), large.getAttrib(type)->getCrtValue(b));
            ASSERT_EQ(a, b);
        }
    }
}

TEST(MusicTagEx, LyricsThatAreLoadedIntoItsRecordDoNotBecomeTheFilesOwn)
{
    const auto item = makeItem();
    item->lyrics = u"";
    item->lyricsLoaded = false;
    CMusicTagEx tag;
    tag.mirror(*item);
    item->lyrics = u"as stored";
    item->lyricsLoaded = true;
    EXPECT_EQ(tag.getLyrics(), u"");
    tag.setArtist(u"Bob", edited, true);
    EXPECT_EQ(tag.getLyrics(), u"");
    EXPECT_FALSE(tag.getHasOriginalLyrics());
}
