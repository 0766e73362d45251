#include "KVTagLib/Rating.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/TagValues.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfHeader.h"

#include <taglib/asfpicture.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4tag.h>
#include <taglib/popularimeterframe.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unknownframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/xiphcomment.h>

#include <algorithm>

// Which frame, item or field of each kind of tag holds which value. Where several names are in use
// for one thing, the more usual one is asked first.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned mostPlays = 1'000'000'000;

/// The texts of all frames with that id, in order.
StringList frameTexts(const ID3v2::Tag& tag, const char* id)
{
    StringList texts;
    for (const ID3v2::Frame* frame : tag.frameList(id))
    {
        if (const auto* text = dynamic_cast<const ID3v2::TextIdentificationFrame*>(frame))
            texts.append(text->fieldList());
    }
    return texts;
}

/// TagLib converts the year of older versions to TDRC. The day of 2.2, "0305" for the third of May,
/// it leaves as it is: an encoding and four digits.
StringList dateOf(const ID3v2::Tag& tag)
{
    constexpr unsigned dayBytes = 5;
    const StringList dates = frameTexts(tag, "TDRC");
    const ID3v2::FrameList& days = tag.frameList("TDA");
    const auto* day =
        days.size() == 1 ? dynamic_cast<const ID3v2::UnknownFrame*>(days.front()) : nullptr;
    if (!day || day->data().size() != dayBytes || dates.size() != 1 || dates.front().size() != 4)
        return dates;
    const String digits(day->data().mid(1));
    return {dates.front() + "-" + digits.substr(2, 2) + "-" + digits.substr(0, 2)};
}

/// The texts of the first key that has any.
template <class Map>
StringList firstOf(const Map& map, std::initializer_list<const char*> keys)
{
    for (const char* key : keys)
    {
        const auto it = map.find(key);
        if (it != map.end() && !it->second.isEmpty())
            return it->second;
    }
    return {};
}

String firstText(const StringList& texts)
{
    return texts.isEmpty() ? String() : texts.front();
}

StringList itemTexts(const MP4::Tag& tag, const char* key)
{
    const auto it = tag.itemMap().find(key);
    return it == tag.itemMap().end() ? StringList() : it->second.toStringList();
}

/// Of a track or a disc.
String numberedOf(const MP4::Tag& tag, const char* key)
{
    const auto it = tag.itemMap().find(key);
    if (it == tag.itemMap().end())
        return {};
    // Zero means unknown for number and total.
    const auto [number, total] = it->second.toIntPair();
    if (number <= 0)
        return {};
    return total > 0 ? String::number(number) + "/" + String::number(total)
                     : String::number(number);
}
/// A count that some programs write as "3.0".
int countOf(const String& text)
{
    return text.toInt();
}

/// The comment that was meant for people: without a description, as most programs write it, or else
/// the first that no program keeps for itself.
String commentOf(const ID3v2::Tag& tag)
{
    String other;
    for (const ID3v2::Frame* frame : tag.frameList("COMM"))
    {
        const auto* const comment = dynamic_cast<const ID3v2::CommentsFrame*>(frame);
        if (!comment || comment->text().isEmpty())
            continue;
        const String name = comment->description().upper();
        if (name.isEmpty())
            return comment->text();
        if (other.isEmpty() && !name.startsWith("ITUN") && !name.startsWith("MUSICMATCH") &&
            !name.startsWith("SONGS-DB"))
            other = comment->text();
    }
    return other;
}

/// The text that a user's own frame of that name has, whatever its case.
String ownText(const ID3v2::Tag& tag, const String& name)
{
    for (const ID3v2::Frame* frame : tag.frameList("TXXX"))
    {
        const auto* const text = dynamic_cast<const ID3v2::UserTextIdentificationFrame*>(frame);
        if (text && text->description().upper() == name && text->fieldList().size() > 1)
            return text->fieldList()[1];
    }
    return {};
}

/// Of several programs that rated the first one that did counts, and the highest number of plays.
void collectPopularity(const ID3v2::Tag& tag, TagValues& values)
{
    unsigned plays = 0;
    for (const ID3v2::Frame* frame : tag.frameList("POPM"))
    {
        const auto* const popularity = dynamic_cast<const ID3v2::PopularimeterFrame*>(frame);
        if (!popularity)
            continue;
        values.offerCount(Field::rating,
                          ratingOfByte(static_cast<unsigned char>(popularity->rating())));
        plays = std::max(plays, popularity->counter());
    }
    values.offerCount(Field::rating, ratingOfFraction(ownText(tag, "FMPS_RATING")));
    values.offerCount(Field::playCount, static_cast<int>(std::min(plays, mostPlays)));
    values.offerCount(Field::playCount, countOf(ownText(tag, "FMPS_PLAYCOUNT")));
}

/// Of the tags whose fields have plain names; other is the rating by another field than
/// FMPS_RATING.
void offerPopularity(const String& fraction, int other, const String& plays, TagValues& values)
{
    values.offerCount(Field::rating, ratingOfFraction(fraction));
    values.offerCount(Field::rating, other);
    values.offerCount(Field::playCount, countOf(plays));
}
} // namespace

void collect(const ID3v2::Tag& tag, TagValues& values)
{
    values.offer(Field::artist, frameTexts(tag, "TPE1"));
    values.offer(Field::album, frameTexts(tag, "TALB"));
    values.offer(Field::title, frameTexts(tag, "TIT2"));
    values.offer(Field::genre, frameTexts(tag, "TCON"));
    values.offer(Field::trackNumber, frameTexts(tag, "TRCK"));
    values.offer(Field::year, dateOf(tag));
    // Some writers leave it in tags of 2.4, where TagLib does not look for it.
    values.offer(Field::year, frameTexts(tag, "TYER"));
    StringList lyrics;
    for (const ID3v2::Frame* frame : tag.frameList("USLT"))
    {
        if (const auto* text = dynamic_cast<const ID3v2::UnsynchronizedLyricsFrame*>(frame))
            lyrics.append(text->text());
    }
    values.offer(Field::lyrics, lyrics);
    values.offer(Field::albumArtist, frameTexts(tag, "TPE2"));
    values.offer(Field::disc, frameTexts(tag, "TPOS"));
    values.offer(Field::comment, commentOf(tag));
    collectPopularity(tag, values);
    if (!values.wantsPictures())
        return;
    for (const ID3v2::Frame* frame : tag.frameList("APIC"))
    {
        if (const auto* picture = dynamic_cast<const ID3v2::AttachedPictureFrame*>(frame))
            values.offerPicture(picture->picture(), picture->type(), picture->description());
    }
}

void collect(const ID3v1::Tag& tag, TagValues& values)
{
    values.offer(Field::artist, tag.artist());
    values.offer(Field::album, tag.album());
    values.offer(Field::title, tag.title());
    values.offer(Field::genre, tag.genre());
    if (tag.track() > 0)
        values.offer(Field::trackNumber, String::number(static_cast<int>(tag.track())));
    if (tag.year() > 0)
        values.offer(Field::year, String::number(static_cast<int>(tag.year())));
    values.offer(Field::comment, tag.comment());
}

void collect(const ApeTag& tag, TagValues& values)
{
    for (const Field field : {Field::artist,
                              Field::album,
                              Field::title,
                              Field::genre,
                              Field::year,
                              Field::lyrics,
                              Field::albumArtist,
                              Field::disc,
                              Field::comment})
        values.offer(field, tag.texts(field));
    offerPopularity(firstText(tag.textsOf("FMPS_RATING")),
                    ratingOfNumber(firstText(tag.textsOf("RATING"))),
                    firstText(tag.textsOf("FMPS_PLAYCOUNT")),
                    values);
    values.offerNumbered(Field::trackNumber, tag.texts(Field::trackNumber), tag.trackTotal());
    if (!values.wantsPictures())
        return;
    for (const ApeTag::Picture& picture : tag.pictures())
        values.offerPicture(picture.content, picture.type);
}

void collect(Ogg::XiphComment& tag, TagValues& values)
{
    const Ogg::FieldListMap& fields = tag.fieldListMap();
    values.offer(Field::artist, firstOf(fields, {"ARTIST"}));
    values.offer(Field::album, firstOf(fields, {"ALBUM"}));
    values.offer(Field::title, firstOf(fields, {"TITLE"}));
    values.offer(Field::genre, firstOf(fields, {"GENRE"}));
    values.offerNumbered(Field::trackNumber,
                         firstOf(fields, {"TRACKNUMBER", "TRACKNUM"}),
                         firstText(firstOf(fields, {"TRACKTOTAL", "TOTALTRACKS"})));
    values.offer(Field::year, firstOf(fields, {"DATE", "YEAR"}));
    values.offer(Field::lyrics, firstOf(fields, {"LYRICS", "UNSYNCEDLYRICS", "UNSYNCED LYRICS"}));
    values.offer(Field::albumArtist, firstOf(fields, {"ALBUMARTIST", "ALBUM ARTIST"}));
    values.offerNumbered(Field::disc,
                         firstOf(fields, {"DISCNUMBER", "DISC"}),
                         firstText(firstOf(fields, {"DISCTOTAL", "TOTALDISCS"})));
    values.offer(Field::comment, firstOf(fields, {"COMMENT", "DESCRIPTION"}));
    offerPopularity(firstText(firstOf(fields, {"FMPS_RATING"})),
                    ratingOfNumber(firstText(firstOf(fields, {"RATING"}))),
                    firstText(firstOf(fields, {"FMPS_PLAYCOUNT"})),
                    values);
    if (!values.wantsPictures())
        return;
    for (const FLAC::Picture* picture : tag.pictureList())
        collect(*picture, values);
}

void collect(const MP4::Tag& tag, TagValues& values)
{
    values.offer(Field::artist, itemTexts(tag, "\251ART"));
    values.offer(Field::album, itemTexts(tag, "\251alb"));
    values.offer(Field::title, itemTexts(tag, "\251nam"));
    values.offer(Field::genre, itemTexts(tag, "\251gen"));
    values.offer(Field::trackNumber, numberedOf(tag, "trkn"));
    values.offer(Field::year, itemTexts(tag, "\251day"));
    values.offer(Field::lyrics, itemTexts(tag, "\251lyr"));
    values.offer(Field::albumArtist, itemTexts(tag, "aART"));
    values.offer(Field::disc, numberedOf(tag, "disk"));
    values.offer(Field::comment, itemTexts(tag, "\251cmt"));
    offerPopularity(firstText(itemTexts(tag, "----:com.apple.iTunes:FMPS_Rating")),
                    ratingOfNumber(firstText(itemTexts(tag, "----:com.apple.iTunes:RATING"))),
                    firstText(itemTexts(tag, "----:com.apple.iTunes:FMPS_Playcount")),
                    values);
    const auto covers = tag.itemMap().find("covr");
    if (!values.wantsPictures() || covers == tag.itemMap().end())
        return;
    // The format has no types of pictures; the first is the cover by custom.
    int type = pictureType::frontCover;
    for (const MP4::CoverArt& cover : covers->second.toCoverArtList())
    {
        values.offerPicture(cover.data(), type);
        type = pictureType::none;
    }
}

void collect(const AsfHeader& header, TagValues& values)
{
    // The first artist is in the plain description; the others are attributes, where some writers
    // repeat the first one.
    StringList artists = header.texts("Author");
    const String first = header.named(AsfHeader::Named::artist);
    if (!first.isEmpty() && (artists.isEmpty() || artists.front() != first))
        artists.prepend(first);
    values.offer(Field::artist, artists);
    values.offer(Field::album, header.texts("WM/AlbumTitle"));
    values.offer(Field::title, header.named(AsfHeader::Named::title));
    values.offer(Field::title, header.texts("Title"));
    values.offer(Field::genre, header.texts("WM/Genre"));
    values.offerNumbered(
        Field::trackNumber, header.texts("WM/TrackNumber"), firstText(header.texts("TotalTracks")));
    values.offer(Field::year, header.texts("WM/Year"));
    values.offer(Field::lyrics, header.texts("WM/Lyrics"));
    values.offer(Field::albumArtist, header.texts("WM/AlbumArtist"));
    values.offer(Field::disc, header.texts("WM/PartOfSet"));
    values.offer(Field::comment, header.named(AsfHeader::Named::comment));
    offerPopularity(firstText(header.texts("FMPS/Rating")),
                    ratingOfPercent(firstText(header.texts("WM/SharedUserRating"))),
                    firstText(header.texts("FMPS/Playcount")),
                    values);
    if (!values.wantsPictures())
        return;
    for (const AsfValue& value : header.values("WM/Picture"))
    {
        const ASF::Picture picture = pictureOf(value);
        if (picture.isValid())
            values.offerPicture(picture.picture(), picture.type(), picture.description());
    }
}

void collect(const RIFF::Info::Tag& tag, TagValues& values)
{
    values.offer(Field::artist, tag.fieldText("IART"));
    values.offer(Field::album, tag.fieldText("IPRD"));
    values.offer(Field::title, tag.fieldText("INAM"));
    values.offer(Field::genre, tag.fieldText("IGNR"));
    // Two names are in use for the track.
    values.offer(Field::trackNumber, tag.fieldText("IPRT"));
    values.offer(Field::trackNumber, tag.fieldText("ITRK"));
    values.offer(Field::year, tag.fieldText("ICRD"));
    values.offer(Field::comment, tag.fieldText("ICMT"));
}

void collect(const FLAC::Picture& picture, TagValues& values)
{
    values.offerPicture(picture.data(), picture.type(), picture.description());
}
} // namespace KVTagLib
