#include "core/rules/RuleWalk.h"

#include "host/core/RuleTexts.h"
#include "support/Print.h"
#include "support/Records.h"

#include <QoKernel/Physical.h>

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <tuple>
#include <utility>

using namespace qo::host;
using File = boost::shared_ptr<CHDFile>;

namespace
{
constexpr const char16_t* root = u"C:\\m";

/// A folder of the tree without a disk below it.
class Folder
{
public:
    Folder() : m_dir(CHDDirectory::createDir(CQoCollPath(u"C:\\m\\f"), {})) {}
    ~Folder() { m_dir->clear(); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    File add(const char16_t* name, const char16_t* album = u"", const char16_t* year = u"")
    {
        const QoFileDbItemPtr record = recordOf(CString(u"C:\\m\\f\\") + name);
        record->title = u"Title";
        record->album = album;
        record->year = year;
        const File file = CHDFile::createHDFile(record);
        CHDDirectory::addFile(m_dir, file);
        m_files.push_back(file);
        return file;
    }

private:
    boost::shared_ptr<CHDDirectory> m_dir;
    std::vector<File> m_files;
};

std::string placeOf(const RuleWalk::Answer& answer)
{
    if (!answer.hasPlace)
        return (answer.isMeant ? "no place: " : "not meant: ") + answer.reason;
    return qo::toUtf8((answer.folder.IsEmpty() ? CString() : answer.folder + u"\\") + answer.name);
}

std::string placeOf(const RuleTexts& texts, const File& file)
{
    CReorganizeRule rule;
    addTexts(rule, texts);
    return placeOf(RuleWalk(rule).answerFor(file, root));
}

constexpr const char16_t* byArtist = u"{artist.name}\\";
constexpr const char16_t* byTitle = u"{track.name}";
constexpr RuleTexts both{byArtist, byTitle};
constexpr RuleTexts numbered{u"\\", u"{track.number}"};
constexpr RuleTexts keptIfEmpty{u"\\", u"{artist.name} - {track.name}", nullptr, nullptr, true};

/// Of a file old/sub/"old: name.mp3" with these tags.
const struct
{
    const char* what;
    RuleTexts texts;
    const char16_t* artist;
    const char16_t* title;
    const char* place;
    const char16_t* number = u"";
} fillings[] = {
    {"plain", {byArtist, u"{track.number} {track.name}"}, u"A", u"SOS", "A\\12 SOS.mp3", u"12"},
    {"no folder", {u"\\", byTitle}, u"", u"SOS", "SOS.mp3"},
    {"folder kept", {nullptr, byTitle}, u"", u"SOS", "old\\sub\\SOS.mp3"},
    {"name kept", {u"\\{artist.name}\\x\\", nullptr}, u"A", u"", "A\\x\\old: name.mp3"},
    {"kept for want of a value", keptIfEmpty, u"", u"SOS", "old: name.mp3"},
    {"not kept", {u"\\", u"{artist.name} - {track.name}"}, u"", u"SOS", "- SOS.mp3"},
    {"one digit", numbered, u"", u"", "07.mp3", u"7"},
    {"with total", numbered, u"", u"", "07.mp3", u"7/12"},
    {"three digits", numbered, u"", u"", "007.mp3", u"007/012"},
    {"no number", numbered, u"", u"", "A7_B.mp3", u"A7/B"},
    {"values make no folders", both, u"../../AC/DC\\", u"/etc/\\x", "_._.._AC_DC_\\_etc__x.mp3"},
    {"forbidden characters", both, u"W: <x>", u"a*b?\"|\x01\u007F", "W_ _x_\\a_b_____.mp3"},
    {"ends of names", both, u"R.E.M.", u" Wait... ", "R.E.M_\\Wait.._.mp3"},
    {"dots are no folder", {byArtist}, u"..", u"", "__\\old: name.mp3"},
    {"nothing is hidden", both, u".hack", u" .x", "_hack\\_x.mp3"},
    {"composed", {u"\\", byTitle}, u"", u"E\u0301", "\xC3\x89.mp3"},
    {"no artist for a folder",
     {u"x\\{artist.name}\\y\\"},
     u" ",
     u"",
     "no place: the file has no value for {artist.name}, which is to name its folder"},
    {"no name",
     {u"\\", u"{artist.name}{track.name}"},
     u"",
     u"",
     "no place: the file has no value for {artist.name}{track.name}, which is to name it"},
    {"mere punctuation",
     {u"{album.name} ({track.year})\\"},
     u"",
     u"",
     "no place: the file has no value for {album.name} ({track.year}), which is to name its "
     "folder"},
    {"words of the rule alone", {u"Disc {track.number}\\", byTitle}, u"", u"x", "Disc\\x.mp3"},
    {"a folder of punctuation", {u"!\\", byTitle}, u"", u"x", "!\\x.mp3"},
    {"kind left out",
     {u"\\", u""},
     u"",
     u"",
     "not meant: the rule has no name for files of the kind Music"},
};
} // namespace

TEST(RuleWalk, TimesAndDatesHaveTheFormsThatTheirNamesSay)
{
    QorganizerDef::VelmoraFileParams params;
    params.source = IPostProcessingQueue::sourceRadioRecording;
    params.stationName = u"Radio 1/2";
    params.recordingStart = 1798761599; // 2026-12-31 23:59:59
    params.recordingEnd = 1798761600 + 5;
    const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
    record->params = CVelmoraFileParamsUtils::ToDbParam(params);
    const std::pair<const char16_t*, const char*> cases[] = {{u"{time.eu}", "23-59"},
                                                             {u"{time.sec-eu}", "23-59-59"},
                                                             {u"{time.us}", "11-59 PM"},
                                                             {u"{time.sec-us}", "11-59-59 PM"},
                                                             {u"{time-end.eu}", "00-00"},
                                                             {u"{time-end.sec-eu}", "00-00-05"},
                                                             {u"{time-end.us}", "12-00 AM"},
                                                             {u"{time-end.sec-us}", "12-00-05 AM"},
                                                             {u"{date.eu}", "31.12.2026"},
                                                             {u"{date.us}", "12-31-2026"},
                                                             {u"{date.int}", "2026-12-31"},
                                                             {u"{date-end.eu}", "01.01.2027"},
                                                             {u"{date-end.us}", "01-01-2027"},
                                                             {u"{date-end.int}", "2027-01-01"},
                                                             {u"{source.name}", "Radio 1_2"}};
    for (const auto& [attribute, text] : cases)
        EXPECT_EQ(placeOf({u"\\", attribute}, CHDFile::createHDFile(record)),
                  std::string(text) + ".mp3");
}

TEST(RuleWalk, FileWithoutRecordingHasTheTimeOfItsCreation)
{
    std::tm local{0, 7, 12, 4, 6, 126, 0, 0, -1, 0, nullptr}; // 2026-07-04 12:07
    const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
    const RuleTexts texts{u"\\", u"{date-end.int} {time.us}"};
    EXPECT_EQ(placeOf(texts, CHDFile::createHDFile(record)),
              "no place: the file has no value for {date-end.int} {time.us}, which is to name it")
        << "no time at all";
    record->createTime = qo::fromUnixTime(std::mktime(&local), 0);
    EXPECT_EQ(placeOf(texts, CHDFile::createHDFile(record)), "2026-07-04 12-07 PM.mp3");
}

TEST(RuleWalk, SourceIsWhatTheWayIntoTheCollectionCallsIt)
{
    using Queue = IPostProcessingQueue;
    const std::pair<eItemSource, const char*> cases[] = {{Queue::sourceRadioWish, "station"},
                                                         {Queue::sourcePodcast, "channel"},
                                                         {Queue::sourceShare, "share"},
                                                         {Queue::sourceWebRecording, "web"},
                                                         {Queue::sourceConversion, "origin"}};
    for (const auto& [source, name] : cases)
    {
        QorganizerDef::VelmoraFileParams params;
        params.source = source;
        params.origin = u"origin";
        params.stationName = u"station";
        params.podcastChannel = u"channel";
        params.shareName = u"share";
        params.webOrigin = u"web";
        const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
        record->params = CVelmoraFileParamsUtils::ToDbParam(params);
        EXPECT_EQ(placeOf({u"{source.name}\\"}, CHDFile::createHDFile(record)),
                  std::string(name) + "\\1.mp3");
    }
}

TEST(RuleWalk, PatternsAreFilledFromTheTagAndCleaned)
{
    for (const auto& c : fillings)
    {
        const QoFileDbItemPtr record = recordOf(u"C:\\m\\old\\sub\\old: name.mp3");
        record->artist = c.artist;
        record->title = c.title;
        record->trackNumber = c.number;
        EXPECT_EQ(placeOf(c.texts, CHDFile::createHDFile(record)), c.place) << c.what;
    }
}

TEST(RuleWalk, DefaultStandsForAnEmptyAttribute)
{
    CReorganizeRule rule;
    addTexts(rule, {u"{artist.name}\\", u"{track.name} {track.year}", nullptr, nullptr, true});
    rule.setUnknownAttribDefValue(CNSAtom::Artist, u"No/body");
    rule.setUnknownAttribDefValue(CNSAtom::Year, u"0000");
    const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
    record->title = u"SOS";
    RuleWalk walk(rule);
    EXPECT_EQ(placeOf(walk.answerFor(CHDFile::createHDFile(record), root)),
              "No_body\\SOS 0000.mp3");
}

TEST(RuleWalk, TheFirstNodeAtTheTopDecidesAndEveryStepIsTold)
{
    CReorganizeRule rule;
    const auto* const tracks = rule.addSeperateRule(new CArtistTracksSeperateRule(3), nullptr);
    auto* const jingles = rule.addSeperateRule(new CJingleSeperateRule, tracks->getOutput(2));
    addTexts(rule, {u"none\\", u"{track.name}"}, jingles->getOutput(0));
    addTexts(rule, {u"second\\", nullptr});
    RuleWalk walk(rule);
    const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
    record->title = u"SOS";
    const RuleWalk::Answer plain = walk.answerFor(CHDFile::createHDFile(record), root);
    EXPECT_EQ(placeOf(plain), "none\\SOS.mp3");
    EXPECT_EQ(plain.decidedBy, "NoArtist > NotJingle > none\\ > Music {track.name}");
    EXPECT_EQ(plain.kind, u"Music");
    QorganizerDef::VelmoraFileParams params;
    params.source = IPostProcessingQueue::sourceRadioRecording;
    params.isJingle = true;
    record->params = CVelmoraFileParamsUtils::ToDbParam(params);
    const RuleWalk::Answer jingle = walk.answerFor(CHDFile::createHDFile(record), root);
    EXPECT_EQ(placeOf(jingle), "not meant: the rule has nothing below Jingle");
    EXPECT_EQ(jingle.decidedBy, "NoArtist > Jingle");
    const File other = fileOf(u"C:\\m\\1.log");
    EXPECT_EQ(placeOf(walk.answerFor(other, root)),
              "not meant: rules are about music, pictures and lyrics only");
    CReorganizeRule empty;
    EXPECT_EQ(placeOf(RuleWalk(empty).answerFor(CHDFile::createHDFile(record), root)),
              "not meant: the rule has no folder for it");
}

TEST(RuleWalk, WhatLiesBesideMusicAsksItForWhatItDoesNotKnow)
{
    const char* const noYear =
        "no place: the file has no value for {track.year}, which is to name its folder";
    const char* const noAlbum =
        "no place: the file has no value for {album.name}, which is to name its folder";
    Folder folder;
    folder.add(u"1.mp3", u"Red", u"1998");
    folder.add(u"2.MP3", u"Red", u"1998");
    folder.add(u"3.mp3", u"Blue", u"2001");
    folder.add(u"4.mp3", u"Blue");
    folder.add(u"5.mp3", u"Blue", u"2001");
    folder.add(u"6.mp3", u"Grey", u"2002");
    folder.add(u"7.mp3", u"Grey");
    folder.add(u"a: .8.MP3", u"Pink", u"1990");
    folder.add(u".9.mp3", u"Pink", u"1990");
    const std::tuple<const char*, File, const char*> cases[] = {
        {"same name", folder.add(u"3.jpg", u"Red", u"1970"), "Blue\\2001\\P.jpg"},
        {"same name but for case", folder.add(u"2.txt"), "Red\\1998\\Title.txt"},
        {"of an album", folder.add(u"cover.jpg", u"RED"), "Red\\1998\\P.jpg"},
        {"knows better", folder.add(u"front.jpg", u"Blue", u"1970"), "Blue\\1970\\P.jpg"},
        {"album of no music", folder.add(u"other.jpg", u"Green"), noYear},
        {"music without a value has no say", folder.add(u"back.jpg", u"Blue"), "Blue\\2001\\P.jpg"},
        {"unless it is half of it", folder.add(u"inside.jpg", u"Grey"), noYear},
        {"where music does not agree", folder.add(u"folder.jpg"), noAlbum},
        {"no kind but a track", folder.add(u"3.lrc", u"Red"), "Blue\\2001\\3.lrc"},
        {"the track's spelling", folder.add(u"A: .8.Cue"), "Pink\\1990\\a: .8.Cue"},
        {"a kept name stays hidden", folder.add(u".9.log"), "Pink\\1990\\.9.log"},
        {"track without a place", folder.add(u"7.log"), noYear},
        {"neither kind nor track",
         folder.add(u"Blue.cue", u"Blue", u"2001"),
         "not meant: rules are about music, pictures and lyrics only"},
    };
    CReorganizeRule rule;
    addTexts(rule, {u"{album.name}\\{track.year}\\", nullptr, u"P", u"{track.name}"});
    RuleWalk walk(rule);
    for (const auto& [what, file, place] : cases)
        EXPECT_EQ(placeOf(walk.answerFor(file, root)), place) << what;
}
