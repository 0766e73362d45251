#include "SoundFile.h"

#include <taglib/aifffile.h>
#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/asfpicture.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1genres.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/textidentificationframe.h>
#include <taglib/trueaudiofile.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>
#include <taglib/xiphcomment.h>

#include <memory>

using namespace TagLib;

namespace library
{
namespace
{
/// Properties are not wanted here; reading them costs time.
constexpr bool withoutProperties = false;

String text(const std::string& utf8)
{
    return {utf8, String::UTF8};
}

StringList texts(const std::vector<std::string>& list)
{
    StringList result;
    for (const std::string& entry : list)
        result.append(text(entry));
    return result;
}

std::string embeddedLyrics(const Track& track)
{
    return track.lyricsBeside ? std::string() : track.lyrics;
}

/// "Abstract" for "(148)".
String genreName(const std::string& genre)
{
    return genre.front() == '(' ? ID3v1::genre(std::stoi(genre.substr(1))) : text(genre);
}

int totalOf(const Track& track)
{
    const std::size_t slash = track.number.find('/');
    return slash == std::string::npos ? 0 : std::stoi(track.number.substr(slash + 1));
}

template <class Frame>
Frame& added(ID3v2::Tag& tag, std::unique_ptr<Frame> frame)
{
    Frame& kept = *frame;
    tag.addFrame(frame.release());
    return kept;
}

void addText(ID3v2::Tag& tag, const char* id, const StringList& list, String::Type encoding)
{
    added(tag, std::make_unique<ID3v2::TextIdentificationFrame>(id, encoding)).setText(list);
}

void fill(ID3v2::Tag& tag, const Track& track, const ByteVector& cover)
{
    constexpr auto encoding = String::UTF16;
    addText(tag, "TPE1", texts(track.artists), encoding);
    addText(tag, "TALB", text(track.album), encoding);
    addText(tag, "TIT2", text(track.title), encoding);
    addText(tag, "TCON", text(track.genre), String::Latin1);
    addText(tag, "TRCK", text(track.number), String::Latin1);
    addText(tag, "TDRC", text(track.date), String::Latin1);
    if (const std::string lyrics = embeddedLyrics(track); !lyrics.empty())
        added(tag, std::make_unique<ID3v2::UnsynchronizedLyricsFrame>(encoding))
            .setText(text(lyrics));
    if (cover.isEmpty())
        return;
    auto& picture = added(tag, std::make_unique<ID3v2::AttachedPictureFrame>());
    picture.setType(ID3v2::AttachedPictureFrame::FrontCover);
    picture.setMimeType("image/jpeg");
    picture.setPicture(cover);
}

void fill(Ogg::XiphComment& tag, const Track& track)
{
    for (const std::string& artist : track.artists)
        tag.addField("ARTIST", text(artist), false);
    tag.addField("ALBUM", text(track.album));
    tag.addField("TITLE", text(track.title));
    tag.addField("GENRE", genreName(track.genre));
    tag.addField("TRACKNUMBER", track.number.substr(0, track.number.find('/')));
    if (totalOf(track) > 0)
        tag.addField("TRACKTOTAL", String::number(totalOf(track)));
    tag.addField("DATE", track.date);
    if (const std::string lyrics = embeddedLyrics(track); !lyrics.empty())
        tag.addField("LYRICS", text(lyrics));
}

std::unique_ptr<FLAC::Picture> flacPicture(const ByteVector& cover)
{
    auto picture = std::make_unique<FLAC::Picture>();
    picture->setType(FLAC::Picture::FrontCover);
    picture->setMimeType("image/jpeg");
    picture->setData(cover);
    return picture;
}

void fill(APE::Tag& tag, const Track& track, const ByteVector& cover)
{
    tag.setItem("Artist", APE::Item("Artist", texts(track.artists)));
    tag.addValue("Album", text(track.album));
    tag.addValue("Title", text(track.title));
    tag.addValue("Genre", genreName(track.genre));
    tag.addValue("Track", track.number);
    tag.addValue("Year", track.date);
    if (const std::string lyrics = embeddedLyrics(track); !lyrics.empty())
        tag.addValue("Lyrics", text(lyrics));
    if (cover.isEmpty())
        return;
    ByteVector data("cover.jpg");
    data.append(ByteVector(1, 0));
    data.append(cover);
    tag.setData("Cover Art (Front)", data);
}

void fill(MP4::Tag& tag, const Track& track, const ByteVector& cover)
{
    tag.setItem("\251ART", texts(track.artists));
    tag.setItem("\251alb", StringList(text(track.album)));
    tag.setItem("\251nam", StringList(text(track.title)));
    tag.setItem("\251gen", StringList(genreName(track.genre)));
    tag.setItem("\251day", StringList(text(track.date)));
    tag.setItem("trkn", MP4::Item(std::stoi(track.number), totalOf(track)));
    if (const std::string lyrics = embeddedLyrics(track); !lyrics.empty())
        tag.setItem("\251lyr", StringList(text(lyrics)));
    MP4::CoverArtList covers;
    covers.append(MP4::CoverArt(MP4::CoverArt::JPEG, cover));
    if (!cover.isEmpty())
        tag.setItem("covr", covers);
}

void fill(ASF::Tag& tag, const Track& track, const ByteVector& cover)
{
    tag.setArtist(text(track.artists.front()));
    tag.setTitle(text(track.title));
    tag.setAttribute("WM/AlbumTitle", text(track.album));
    tag.setAttribute("WM/Genre", genreName(track.genre));
    tag.setAttribute("WM/TrackNumber", text(track.number));
    tag.setAttribute("WM/Year", text(track.date));
    if (const std::string lyrics = embeddedLyrics(track); !lyrics.empty())
        tag.setAttribute("WM/Lyrics", text(lyrics));
    if (cover.isEmpty())
        return;
    ASF::Picture picture;
    picture.setType(ASF::Picture::FrontCover);
    picture.setMimeType("image/jpeg");
    picture.setPicture(cover);
    tag.setAttribute("WM/Picture", picture);
}

void fill(ID3v1::Tag& tag, const Track& track)
{
    tag.setArtist(text(track.artists.front()));
    tag.setAlbum(text(track.album));
    tag.setTitle(text(track.title));
    tag.setGenre(genreName(track.genre));
    tag.setTrack(static_cast<unsigned>(std::stoi(track.number)));
    tag.setYear(static_cast<unsigned>(std::stoi(track.date)));
}

/// TagLib reads this version but does not write it.
ByteVector id3v22Tag(const Track& track)
{
    ByteVector frames;
    const std::pair<const char*, std::string> rows[] = {
        {"TP1", track.artists.front()},
        {"TAL", track.album},
        {"TT2", track.title},
        {"TCO", track.genre},
        {"TRK", track.number},
        {"TYE", track.date.substr(0, track.date.find('-'))},
    };
    for (const auto& [id, value] : rows)
    {
        ByteVector body(1, 1);
        body.append(text(value).data(String::UTF16));
        frames.append(ByteVector(id));
        frames.append(ByteVector::fromUInt(body.size()).mid(1));
        frames.append(body);
    }
    ByteVector tag("ID3\2\0\0\0\0", 8);
    tag.append(static_cast<char>(frames.size() >> 7));
    tag.append(static_cast<char>(frames.size() & 127));
    tag.append(frames);
    return tag;
}

ByteVector taggedMp3(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    if (track.mp3Tag == Mp3Tag::id3v22)
    {
        ByteVector bytes = id3v22Tag(track);
        bytes.append(*stream.data());
        return bytes;
    }
    MPEG::File file(&stream, ID3v2::FrameFactory::instance(), withoutProperties);
    const bool with1 = track.mp3Tag == Mp3Tag::id3v1 || track.mp3Tag == Mp3Tag::id3v23and1;
    const bool withApe = track.mp3Tag == Mp3Tag::ape;
    const bool with2 = track.mp3Tag != Mp3Tag::id3v1 && !withApe;
    if (with1)
        fill(*file.ID3v1Tag(true), track);
    if (withApe)
        fill(*file.APETag(true), track, cover);
    if (with2)
        fill(*file.ID3v2Tag(true), track, cover);
    file.save((with1 ? MPEG::File::ID3v1 : 0) | (withApe ? MPEG::File::APE : 0) |
                  (with2 ? MPEG::File::ID3v2 : 0),
              TagLib::File::StripNone,
              track.mp3Tag == Mp3Tag::id3v24 ? ID3v2::v4 : ID3v2::v3,
              TagLib::File::DoNotDuplicate);
    return *stream.data();
}

template <class SomeFile>
void saveXiph(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    SomeFile file(&stream, withoutProperties);
    fill(*file.tag(), track);
    if (!cover.isEmpty())
        file.tag()->addPicture(flacPicture(cover).release());
    file.save();
}

/// TagLib forgets that the comment is the last block of the header, so its packet is made here.
void saveOggFlac(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    Ogg::FLAC::File file(&stream, withoutProperties);
    fill(*file.tag(), track);
    if (!cover.isEmpty())
        file.tag()->addPicture(flacPicture(cover).release());
    const ByteVector comment = file.tag()->render(false);
    ByteVector packet = file.packet(1).mid(0, 1);
    packet.append(ByteVector::fromUInt(comment.size()).mid(1));
    packet.append(comment);
    file.setPacket(1, packet);
    file.Ogg::File::save();
}

void saveFlac(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    FLAC::File file(&stream, ID3v2::FrameFactory::instance(), withoutProperties);
    fill(*file.xiphComment(true), track);
    if (!cover.isEmpty())
        file.addPicture(flacPicture(cover).release());
    file.save();
}

template <class SomeFile>
void saveApe(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    SomeFile file(&stream, withoutProperties);
    fill(*file.APETag(true), track, cover);
    file.save();
}

template <class SomeFile>
void saveOwnTag(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    SomeFile file(&stream, withoutProperties);
    fill(*file.tag(), track, cover);
    file.save();
}

void saveWav(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    RIFF::WAV::File file(&stream, withoutProperties);
    fill(*file.ID3v2Tag(), track, cover);
    file.save();
}

void saveTrueAudio(ByteVectorStream& stream, const Track& track, const ByteVector& cover)
{
    TrueAudio::File file(&stream, withoutProperties);
    fill(*file.ID3v2Tag(true), track, cover);
    file.save();
}

using Saver = void (*)(ByteVectorStream&, const Track&, const ByteVector&);

constexpr std::pair<const char*, Saver> savers[] = {
    {"flac", saveFlac},
    {"m4a", saveOwnTag<MP4::File>},
    {"m4b", saveOwnTag<MP4::File>},
    {"ogg", saveXiph<Ogg::Vorbis::File>},
    {"oga", saveOggFlac},
    {"opus", saveXiph<Ogg::Opus::File>},
    {"spx", saveXiph<Ogg::Speex::File>},
    {"wma", saveOwnTag<ASF::File>},
    {"wav", saveWav},
    {"aiff", saveOwnTag<RIFF::AIFF::File>},
    {"ape", saveApe<APE::File>},
    {"wv", saveApe<WavPack::File>},
    {"mpc", saveApe<MPC::File>},
    {"tta", saveTrueAudio},
};
} // namespace

ByteVector taggedSound(const ByteVector& sound, const Track& track, const ByteVector& cover)
{
    if (!track.tagged)
        return sound;
    ByteVectorStream stream(sound);
    if (track.extension == "mp3" || track.extension == "mp2")
        return taggedMp3(stream, track, cover);
    for (const auto& [extension, save] : savers)
    {
        if (track.extension == extension)
            save(stream, track, cover);
    }
    return *stream.data();
}

ByteVector namedCover(const ByteVector& jpeg, const std::string& name)
{
    // A comment segment right behind the start marker.
    ByteVector bytes = jpeg.mid(0, 2);
    bytes.append(ByteVector("\xff\xfe"));
    bytes.append(ByteVector::fromShort(static_cast<short>(name.size() + 2)));
    bytes.append(ByteVector(name.data(), static_cast<unsigned>(name.size())));
    bytes.append(jpeg.mid(2));
    return bytes;
}
} // namespace library
