#include "KVTagLib/TagText.h"
#include "KVTagLib/TagValues.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfHeader.h"

#include <taglib/asfpicture.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4tag.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unknownframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/xiphcomment.h>

// Which frame, item or field of each kind of tag holds which value. Where several names are in use
// for one thing, the more usual one is asked first.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
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

String trackOf(const MP4::Tag& tag)
{
    const auto it = tag.itemMap().find("trkn");
    if (it == tag.itemMap().end())
        return {};
    // Zero means unknown for number and total.
    const auto [number, total] = it->second.toIntPair();
    if (number <= 0)
        return {};
    return total > 0 ? String::number(number) + "/" + String::number(total)
                     : String::number(number);
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
}

void collect(const ApeTag& tag, TagValues& values)
{
    for (const Field field :
         {Field::artist, Field::album, Field::title, Field::genre, Field::year, Field::lyrics})
        values.offer(field, tag.texts(field));
    values.offerTrack(tag.texts(Field::trackNumber), tag.trackTotal());
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
    values.offerTrack(firstOf(fields, {"TRACKNUMBER", "TRACKNUM"}),
                      firstText(firstOf(fields, {"TRACKTOTAL", "TOTALTRACKS"})));
    values.offer(Field::year, firstOf(fields, {"DATE", "YEAR"}));
    values.offer(Field::lyrics, firstOf(fields, {"LYRICS", "UNSYNCEDLYRICS", "UNSYNCED LYRICS"}));
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
    values.offer(Field::trackNumber, trackOf(tag));
    values.offer(Field::year, itemTexts(tag, "\251day"));
    values.offer(Field::lyrics, itemTexts(tag, "\251lyr"));
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
    values.offerTrack(header.texts("WM/TrackNumber"), firstText(header.texts("TotalTracks")));
    values.offer(Field::year, header.texts("WM/Year"));
    values.offer(Field::lyrics, header.texts("WM/Lyrics"));
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
}

void collect(const FLAC::Picture& picture, TagValues& values)
{
    values.offerPicture(picture.data(), picture.type(), picture.description());
}
} // namespace KVTagLib
