#include "QoColl/Tags/MusicTagEx.h"

#include "KVTagLib/Tags.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Tags/TagSources.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace
{
using namespace tagsources;
using Source = CTagAttribValue::ESrcValueType;
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

/// What the tag says of itself, the attributes as objects last.
CString answers(CMusicTagEx& tag)
{
    CString text;
    text.Format(u"%d %u", tag.isDirty(true), tag.getTime());
    for (const Source source : {original, edited, current})
    {
        CString title;
        CString genre;
        text.AppendFormat(u"|%d%d", tag.getTitle(source, title), tag.getGenre(source, genre));
        text += title + genre;
    }
    for (int i = 0; i < CMusicTagEx::getNrAttribTypes(); ++i)
    {
        CString value(u"none");
        tag.getAttrib(CMusicTagEx::getAttribType(i))->getCrtValue(value);
        text += u"|" + value;
    }
    return text;
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
    EXPECT_EQ(item->genre + item->trackNumber + item->lyrics + item->picturePath,
              u"Jazz3/12laC:\\p.jpg");
    EXPECT_TRUE(item->lyricsLoaded);
    EXPECT_EQ(item->duration, 61000);
    EXPECT_EQ(item->bitrate, 192);
    auto inplace = boost::make_shared<QoInplaceFileDbItem>();
    tag.getTag(inplace);
    EXPECT_EQ(inplace->title, u"Song");
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
    LogCapture log(qo::level::flow);
    CMusicTagEx::checkNrLyrics();
    {
        CMusicTagEx tag;
        tag.setHasOriginalLyrics(true);
        tag.setHasOriginalLyrics(true);
        CMusicTagEx::checkNrLyrics();
    }
    CMusicTagEx::checkNrLyrics();
    EXPECT_EQ(log.count("CMusicTagEx::checkNrLyrics : 0"), 2) << log.all();
    EXPECT_EQ(log.count("CMusicTagEx::checkNrLyrics : 1"), 1) << log.all();
}

TEST(MusicTagEx, TrackNumbersAreSplitAndMade)
{
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, int, int> rows[] = {
        {u" 3 / 12 ", u"3", u"12", 3, 12},
        {u"/12", u"", u"12", 0, 12},
        {u"3/", u"3", u"", 3, 0},
        {u"3", u"3", u"", 3, 0},
        {u"a/b/c", u"a", u"b/c", 0, 0},
        {u"", u"", u"", 0, 0}};
    for (const auto& [text, trackText, totalText, trackNumber, totalNumber] : rows)
    {
        SCOPED_TRACE(testing::PrintToString(CString(text)));
        CString track;
        CString total = u"old";
        EXPECT_EQ(CMusicTagEx::splitTrackNumber(text, track, total), *totalText != 0);
        EXPECT_EQ(track + u"|" + total, CString(trackText) + u"|" + totalText);
        std::pair<int, int> numbers(-1, -1);
        EXPECT_EQ(CMusicTagEx::splitTrackNumber(text, numbers.first, numbers.second),
                  totalNumber != 0);
        EXPECT_EQ(numbers, std::pair(trackNumber, totalNumber));
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
    using Action = void (*)(CMusicTagEx&);
    static const auto record = makeItem();
    const std::pair<const char*, Action> actions[] = {
        {"take over", [](CMusicTagEx& tag) { tag.setTag(record); }},
        {"mirror", [](CMusicTagEx& tag) { tag.mirror(*record); }},
        {"clear", [](CMusicTagEx& tag) { tag.clear(); }},
        {"reset", [](CMusicTagEx& tag) { tag.reset(); }},
        {"rename", [](CMusicTagEx& tag) { tag.setCrtFileNameAsOriginal(); }},
        {"set", [](CMusicTagEx& tag) { tag.setTitle(u"T", original, true); }},
        {"edit", [](CMusicTagEx& tag) { tag.setTitle(u"E", edited, true); }}};
    for (const auto& [firstName, first] : actions)
    {
        for (const auto& [secondName, second] : actions)
        {
            CMusicTagEx small;
            CMusicTagEx large;
            large.getAttrib(CTagAttrib::AT_Artist);
            for (const Action action : {first, second})
                action(small), action(large);
            EXPECT_EQ(answers(small), answers(large)) << firstName << ", " << secondName;
        }
    }
}

TEST(MusicTagEx, ValuesMayBeReadIntoTheRecordTheyComeFrom)
{
    const std::pair<const char*, void (*)(CMusicTagEx&, const QoFileDbItemPtr&)> ways[] = {
        {"mirrored", [](CMusicTagEx& tag, const QoFileDbItemPtr& item) { tag.mirror(*item); }},
        {"taken over", [](CMusicTagEx& tag, const QoFileDbItemPtr& item) { tag.setTag(item); }}};
    for (const auto& [name, way] : ways)
    {
        const auto item = makeItem();
        CMusicTagEx tag;
        way(tag, item);
        EXPECT_TRUE(tag.getArtist(original, item->artist)) << name;
        EXPECT_TRUE(tag.getLyrics(current, item->lyrics)) << name;
        EXPECT_EQ(item->artist, CString(u"Ann")) << name;
        EXPECT_EQ(item->lyrics, CString(u"la")) << name;
        EXPECT_FALSE(tag.getArtist(edited, item->artist));
        EXPECT_TRUE(item->artist.IsEmpty()) << name;
    }
}

TEST(MusicTagEx, TheLyricsFlagChangesNoLyrics)
{
    for (const bool isLoaded : {false, true})
    {
        const auto item = makeItem();
        item->lyricsLoaded = isLoaded;
        CMusicTagEx tag;
        tag.mirror(*item);
        EXPECT_EQ(tag.getLyrics(), CString(u"la")) << isLoaded;
        tag.setHasOriginalLyrics(!isLoaded);
        EXPECT_EQ(tag.getLyrics(), CString(u"la")) << isLoaded;
        item->lyrics = u"other";
        EXPECT_EQ(tag.getLyrics(), CString(u"la")) << isLoaded;
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
    tag.mirror(*item);
    EXPECT_TRUE(tag.isDirty(true)) << "an edit stays beside the record";
}
