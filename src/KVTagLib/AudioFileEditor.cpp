#include "KVTagLib/AudioFileEditor.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/mp4/Mp4Editor.h"
#include "KVTagLib/riff/RiffEditor.h"
#include "KVTagLib/xiph/FlacEditor.h"
#include "KVTagLib/xiph/XiphEditor.h"

#include <taglib/apefile.h>
#include <taglib/asffile.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/trueaudiofile.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavpackfile.h>

// Edits the tags of each format. Formats with a single kind of tag go to their editor; MPEG, True
// Audio and the formats with APE tags may have several tags in one file, and all of these get the
// change.
//
//   MP3 with an ID3v1 tag only, new title of 50 letters: ID3v1 takes the first 30 letters, so an
//   ID3v2 tag with the whole title is added. A title of 20 letters fits, and nothing is added.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr bool withoutProperties = false;
constexpr const char16_t* comments = u"its comment";

void editXiph(XiphEditor& comment, const TagChanges& changes)
{
    comment.apply(changes);
    if (changes.picture())
        comment.setPicture(comment.frontCover(), *changes.picture());
}

[[noreturn]] void refuseDamage(const char16_t* what)
{
    throw TagRefusal(withCopyAdvice(what + CString(u" is damaged")));
}

/// Changes the APE tag of the file, or adds one. All other items must be as before when it is read
/// again.
void editApe(FileStream& stream, const TagChanges& changes)
{
    constexpr const char16_t* name = u"its APE tag";
    ApeTag before;
    if (!before.load(stream))
        refuseDamage(name);
    ApeTag tag = before;
    tag.apply(changes);
    const ApeTag::Place place = ApeTag::find(stream);
    stream.insert(tag.render(),
                  static_cast<unsigned long>(place.start),
                  static_cast<unsigned long>(place.size));
    ApeTag after;
    if (!after.load(stream) || !before.keptBy(after, changes))
        refuseDamage(name);
}

void editMpeg(FileStream& stream, const TagChanges& changes)
{
    bool hasId3v2 = false;
    bool hasApe = false;
    bool hasOther = false;
    {
        MPEG::File file(&stream, ID3v2::FrameFactory::instance(), withoutProperties);
        hasId3v2 = file.hasID3v2Tag();
        hasApe = file.hasAPETag();
        // A new kind of tag is added only when those that are present cannot hold the values.
        hasOther = hasApe || (file.hasID3v1Tag() && fitsId3v1(changes, stream));
    }
    if (hasApe)
        editApe(stream, changes);
    applyToId3v1(changes, stream);
    if (hasId3v2 || !hasOther)
        applyToId3v2(changes, hasId3v2, stream);
}

/// Like MPEG without APE tags.
void editTrueAudio(FileStream& stream, const TagChanges& changes)
{
    bool hasId3v2 = false;
    bool hasOther = false;
    {
        TrueAudio::File file(&stream, ID3v2::FrameFactory::instance(), withoutProperties);
        hasId3v2 = file.isValid() && file.hasID3v2Tag();
        hasOther = file.isValid() && file.hasID3v1Tag() && fitsId3v1(changes, stream);
    }
    applyToId3v1(changes, stream);
    if (hasId3v2 || !hasOther)
        applyToId3v2(changes, hasId3v2, stream);
}

/// Monkey's Audio, WavPack and Musepack.
template <class SomeFile>
void editWithApeTag(FileStream& stream, const TagChanges& changes)
{
    bool hasOther = false;
    {
        SomeFile file(&stream, withoutProperties);
        if (!file.isValid())
            refuseDamage(u"the file");
        hasOther = file.hasID3v1Tag() && !file.hasAPETag() && fitsId3v1(changes, stream);
    }
    if (!hasOther)
        editApe(stream, changes);
    applyToId3v1(changes, stream);
}

/// The packet with the comment is changed as bytes: TagLib writes only the entries that it can
/// read. The prefix marks the packet of the codec.
template <class SomeFile>
void editOgg(FileStream& stream, const ByteVector& prefix, const TagChanges& changes)
{
    SomeFile file(&stream, withoutProperties);
    if (!file.isValid() || !file.tag())
        refuseDamage(comments);
    const ByteVector packet = file.packet(1);
    XiphEditor comment;
    if (packet.mid(0, prefix.size()) != prefix || !comment.load(packet.mid(prefix.size())))
        refuseDamage(comments);
    editXiph(comment, changes);
    ByteVector changed = prefix;
    changed.append(comment.render());
    file.setPacket(1, changed);
    if (!file.Ogg::File::save())
        refuseDamage(u"the file");
}

/// Here the packet is a FLAC block: a byte for its type, whose highest bit marks the last block,
/// and three bytes for its size. TagLib does not set that bit again.
void editOggFlac(FileStream& stream, const TagChanges& changes)
{
    constexpr unsigned blockHeader = 4;
    constexpr char lastBlock = '\x80';
    constexpr char commentBlock = 4;
    Ogg::FLAC::File file(&stream, withoutProperties);
    if (!file.isValid() || !file.tag())
        refuseDamage(comments);
    const ByteVector old = file.packet(1);
    XiphEditor comment;
    if (old.size() < blockHeader || (old[0] & ~lastBlock) != commentBlock ||
        !comment.load(old.mid(blockHeader)))
        refuseDamage(comments);
    editXiph(comment, changes);
    const ByteVector changed = comment.render();
    if (changed.size() >= 1U << 24)
        throw TagRefusal(u"its comment would be larger than 16 MiB, which FLAC cannot hold");
    ByteVector packet(1, old[0]);
    packet.append(ByteVector::fromUInt(changed.size()).mid(1));
    packet.append(changed);
    file.setPacket(1, packet);
    if (!file.Ogg::File::save())
        refuseDamage(u"the file");
}

/// The whole tag is in the header, which is read, changed and written as a piece.
void editAsf(FileStream& stream, const TagChanges& changes)
{
    ASF::File file(&stream, withoutProperties);
    AsfHeader header;
    if (!file.isValid() || !header.load(file))
        refuseDamage(u"its header");
    apply(changes, header);
    if (!header.save(file))
        throw TagRefusal(u"its header cannot hold values of that size");
}
} // namespace

void editAudioFile(FileStream& stream, AudioFormat format, const TagChanges& changes)
{
    switch (format)
    {
    case AudioFormat::mpeg:
        return editMpeg(stream, changes);
    case AudioFormat::flac:
        return editFlac(stream, changes);
    case AudioFormat::vorbis:
        return editOgg<Ogg::Vorbis::File>(stream, ByteVector("\x03vorbis", 7), changes);
    case AudioFormat::oggFlac:
        return editOggFlac(stream, changes);
    case AudioFormat::speex:
        return editOgg<Ogg::Speex::File>(stream, ByteVector(), changes);
    case AudioFormat::opus:
        return editOgg<Ogg::Opus::File>(stream, ByteVector("OpusTags", 8), changes);
    case AudioFormat::mp4:
        return editMp4(stream, changes);
    case AudioFormat::asf:
        return editAsf(stream, changes);
    case AudioFormat::wav:
    case AudioFormat::aiff:
        return editRiff(stream, format, changes);
    case AudioFormat::ape:
        return editWithApeTag<APE::File>(stream, changes);
    case AudioFormat::wavPack:
        return editWithApeTag<WavPack::File>(stream, changes);
    case AudioFormat::musepack:
        return editWithApeTag<MPC::File>(stream, changes);
    case AudioFormat::trueAudio:
        return editTrueAudio(stream, changes);
    case AudioFormat::unknown:
        break;
    }
}
} // namespace KVTagLib
