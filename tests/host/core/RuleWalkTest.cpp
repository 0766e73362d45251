#include "core/RuleWalk.h"

#include "host/core/RuleTexts.h"
#include "support/Print.h"

#include <QoKernel/Physical.h>

#include <gtest/gtest.h>

#include <ctime>
#include <string>

using namespace qo::host;
using File = boost::shared_ptr<CHDFile>;

namespace
{
constexpr const char16_t* root = u"C:\\m";

QoFileDbItemPtr recordOf(const CString& path)
{
    QoFileDbItemPtr record(new QoFileDbItem);
    record->path = path;
    return record;
}

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

/// Of a file old/sub/"old: name.mp3" with these tags.
const struct
{
    const char* what;
    RuleTexts texts;
    const char16_t* artist;
    const char16_t* title;
    const char16_t* number;
    const char* place;
} fillings[] = {
    {"plain",
     {u"{artist.name}\\", u"{track.number} {track.name}"},
     u"Abba",
     u"SOS",
     u"12",
     "Abba\\12 SOS.mp3"},
    {"no folder", {u"\\", u"{track.name}"}, u"", u"SOS", u"", "SOS.mp3"},
    {"folder kept", {nullptr, u"{track.name}"}, u"", u"SOS", u"", "old\\sub\\SOS.mp3"},
    {"name kept", {u"\\{artist.name}\\x\\", nullptr}, u"A", u"", u"", "A\\x\\old: name.mp3"},
    {"kept for want of a value",
     {u"\\", u"{artist.name} - {track.name}", nullptr, nullptr, true},
     u"",
     u"SOS",
     u"",
     "old: name.mp3"},
    {"not kept", {u"\\", u"{artist.name} - {track.name}"}, u"", u"SOS", u"", "- SOS.mp3"},
    {"one digit", {u"\\", u"{track.number}"}, u"", u"", u"7", "07.mp3"},
    {"with total", {u"\\", u"{track.number}"}, u"", u"", u"7/12", "07.mp3"},
    {"three digits", {u"\\", u"{track.number}"}, u"", u"", u"007/012", "007.mp3"},
    {"no number", {u"\\", u"{track.number}"}, u"", u"", u"A7/B", "A7_B.mp3"},
    {"values make no folders",
     {u"{artist.name}\\", u"{track.name}"},
     u"../../AC/DC\\",
     u"/etc/\\x",
     u"",
     "_._.._AC_DC_\\_etc__x.mp3"},
    {"forbidden characters",
     {u"{artist.name}\\", u"{track.name}"},
     u"W: <x>",
     u"a*b?\"|\x01\u007F",
     u"",
     "W_ _x_\\a_b_____.mp3"},
    {"ends of names",
     {u"{artist.name}\\", u"{track.name}"},
     u"R.E.M.",
     u" Wait... ",
     u"",
     "R.E.M_\\Wait.._.mp3"},
    {"dots are no folder", {u"{artist.name}\\"}, u"..", u"", u"", "__\\old: name.mp3"},
    {"nothing is hidden",
     {u"{artist.name}\\", u"{track.name}"},
     u".hack",
     u" .x",
     u"",
     "_hack\\_x.mp3"},
    {"composed", {u"\\", u"{track.name}"}, u"", u"E\u0301", u"", "\xC3\x89.mp3"},
    {"no artist for a folder",
     {u"x\\{artist.name}\\y\\"},
     u" ",
     u"",
     u"",
     "no place: the folder name of {artist.name} would be empty"},
    {"no name",
     {u"\\", u"{artist.name}{track.name}"},
     u"",
     u"",
     u"",
     "no place: the file name of {artist.name}{track.name} would be empty"},
    {"mere punctuation",
     {u"{album.name} ({track.year})\\"},
     u"",
     u"",
     u"",
     "no place: the folder name of {album.name} ({track.year}) would be empty"},
    {"words of the rule alone",
     {u"Disc {track.number}\\", u"{track.name}"},
     u"",
     u"x",
     u"",
     "Disc\\x.mp3"},
    {"a folder of punctuation", {u"!\\", u"{track.name}"}, u"", u"x", u"", "!\\x.mp3"},
    {"kind left out",
     {u"\\", u""},
     u"",
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
    const struct
    {
        const char16_t* attribute;
        const char* text;
    } cases[] = {{u"{time.eu}", "23-59"},
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
    for (const auto& c : cases)
        EXPECT_EQ(placeOf({u"\\", c.attribute}, CHDFile::createHDFile(record)),
                  std::string(c.text) + ".mp3");
}

TEST(RuleWalk, FileWithoutRecordingHasTheTimeOfItsCreation)
{
    std::tm local{};
    local.tm_year = 126;
    local.tm_mon = 6;
    local.tm_mday = 4;
    local.tm_hour = 12;
    local.tm_min = 7;
    local.tm_isdst = -1;
    const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
    const RuleTexts texts{u"\\", u"{date-end.int} {time.us}"};
    EXPECT_EQ(placeOf(texts, CHDFile::createHDFile(record)),
              "no place: the file name of {date-end.int} {time.us} would be empty")
        << "no time at all";
    record->createTime = qo::fromUnixTime(std::mktime(&local), 0);
    EXPECT_EQ(placeOf(texts, CHDFile::createHDFile(record)), "2026-07-04 12-07 PM.mp3");
}

TEST(RuleWalk, SourceIsWhatTheWayIntoTheCollectionCallsIt)
{
    using Queue = IPostProcessingQueue;
    const struct
    {
        eItemSource source;
        const char* name;
    } cases[] = {{Queue::sourceRadioWish, "station"},
                 {Queue::sourcePodcast, "channel"},
                 {Queue::sourceShare, "share"},
                 {Queue::sourceWebRecording, "web"},
                 {Queue::sourceConversion, "origin"}};
    for (const auto& c : cases)
    {
        QorganizerDef::VelmoraFileParams params;
        params.source = c.source;
        params.origin = u"origin";
        params.stationName = u"station";
        params.podcastChannel = u"channel";
        params.shareName = u"share";
        params.webOrigin = u"web";
        const QoFileDbItemPtr record = recordOf(u"C:\\m\\1.mp3");
        record->params = CVelmoraFileParamsUtils::ToDbParam(params);
        EXPECT_EQ(placeOf({u"{source.name}\\"}, CHDFile::createHDFile(record)),
                  std::string(c.name) + "\\1.mp3");
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
    const File other = CHDFile::createHDFile(recordOf(u"C:\\m\\1.log"));
    EXPECT_EQ(placeOf(walk.answerFor(other, root)),
              "not meant: rules are about music, pictures and lyrics only");
    CReorganizeRule empty;
    EXPECT_EQ(placeOf(RuleWalk(empty).answerFor(CHDFile::createHDFile(record), root)),
              "not meant: the rule has no folder for it");
}

TEST(RuleWalk, WhatLiesBesideMusicAsksItForWhatItDoesNotKnow)
{
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
    const struct
    {
        const char* what;
        File file;
        const char* place;
    } cases[] = {
        {"same name", folder.add(u"3.jpg", u"Red", u"1970"), "Blue\\2001\\P.jpg"},
        {"same name but for case", folder.add(u"2.txt"), "Red\\1998\\Title.txt"},
        {"of an album", folder.add(u"cover.jpg", u"RED"), "Red\\1998\\P.jpg"},
        {"knows better", folder.add(u"front.jpg", u"Blue", u"1970"), "Blue\\1970\\P.jpg"},
        {"album of no music",
         folder.add(u"other.jpg", u"Green"),
         "no place: the folder name of {track.year} would be empty"},
        {"music without a value has no say", folder.add(u"back.jpg", u"Blue"), "Blue\\2001\\P.jpg"},
        {"unless it is half of it",
         folder.add(u"inside.jpg", u"Grey"),
         "no place: the folder name of {track.year} would be empty"},
        {"where music does not agree",
         folder.add(u"folder.jpg"),
         "no place: the folder name of {album.name} would be empty"},
        {"no kind but a track", folder.add(u"3.lrc", u"Red"), "Blue\\2001\\3.lrc"},
        {"the track's spelling", folder.add(u"A: .8.Cue"), "Pink\\1990\\a: .8.Cue"},
        {"a kept name stays hidden", folder.add(u".9.log"), "Pink\\1990\\.9.log"},
        {"track without a place",
         folder.add(u"7.log"),
         "no place: the folder name of {track.year} would be empty"},
        {"neither kind nor track",
         folder.add(u"Blue.cue", u"Blue", u"2001"),
         "not meant: rules are about music, pictures and lyrics only"},
    };
    CReorganizeRule rule;
    addTexts(rule, {u"{album.name}\\{track.year}\\", nullptr, u"P", u"{track.name}"});
    RuleWalk walk(rule);
    for (const auto& c : cases)
        EXPECT_EQ(placeOf(walk.answerFor(c.file, root)), c.place) << c.what;
}
