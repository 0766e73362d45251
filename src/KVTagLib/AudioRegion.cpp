#include "KVTagLib/AudioRegion.h"

#include "KVTagLib/AudioRegionReader.h"
#include "KVTagLib/id3/Id3v2Editor.h"

#include <algorithm>

// What belongs to the sound, for the formats that keep it in one piece or in a list of chunks:
// addBetweenTags() for files with tags at both ends, addFlacSound(), addRiffSound(), addAsfSound().
// MP4 and Ogg have files of their own.

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr std::int64_t id3v1Bytes = 128;
constexpr std::int64_t apeFooterBytes = 32;
/// Foreign bytes before a tag or before the mark of a format are rare and few.
constexpr std::int64_t searchBytes = 64 << 10;

/// The position after the ID3v2 tags that start at that position; some files have several in a row.
std::int64_t behindId3v2(AudioRegionReader& file, std::int64_t at)
{
    for (;;)
    {
        const unsigned size = Id3v2Editor::sizeOf(file.look(at, Id3v2Editor::headerBytes));
        if (size == 0)
            return at;
        at += size;
    }
}

/// The start of the file's first ID3v2 tag; 0 without one.
std::int64_t findId3v2(AudioRegionReader& file)
{
    const ByteVector head = file.look(0, searchBytes);
    for (int at = head.find("ID3"); at >= 0; at = head.find("ID3", static_cast<unsigned>(at) + 1))
    {
        const unsigned start = static_cast<unsigned>(at);
        if (Id3v2Editor::sizeOf(head.mid(start, Id3v2Editor::headerBytes)) > 0)
            return at;
    }
    return 0;
}

/// The position before the ID3v1 tag, or the end of the file.
std::int64_t aheadOfId3v1(AudioRegionReader& file)
{
    const std::int64_t start = file.size() - id3v1Bytes;
    return file.look(start, 3) == "TAG" ? start : file.size();
}

/// The position before the APE tag that ends there; negative if the tag claims more than the file
/// has.
std::int64_t aheadOfApeTag(AudioRegionReader& file, std::int64_t end)
{
    const ByteVector footer = file.look(end - apeFooterBytes, apeFooterBytes);
    if (!footer.startsWith("APETAGEX"))
        return end;
    constexpr unsigned sizeAt = 12;
    constexpr unsigned flagsAt = 20;
    constexpr unsigned hasHeader = 1U << 31;
    const bool header = (footer.toUInt(flagsAt, false) & hasHeader) != 0;
    return end - footer.toUInt(sizeAt, false) - (header ? apeFooterBytes : 0);
}

/// Adds everything except the tags at both ends.
bool addBetweenTags(AudioRegionReader& file)
{
    const std::int64_t tag = findId3v2(file);
    const std::int64_t start = behindId3v2(file, tag);
    const std::int64_t end = aheadOfApeTag(file, aheadOfId3v1(file));
    file.add(0, tag);
    file.add(start, end - start);
    return start <= end;
}

/// The frames, and all blocks before them except padding, comments and pictures.
bool addFlacSound(AudioRegionReader& file)
{
    constexpr std::int64_t blockHeader = 4;
    const std::int64_t head = behindId3v2(file, 0);
    const int mark = file.look(head, searchBytes).find("fLaC");
    if (mark < 0)
        return false;
    std::int64_t at = head + mark + 4;
    for (bool last = false; !last;)
    {
        const ByteVector header = file.look(at, blockHeader);
        if (header.size() < blockHeader)
            return false;
        last = (header[0] & 0x80) != 0;
        const int type = header[0] & 0x7F;
        const std::int64_t length = header.toUInt(0U, true) & 0xFFFFFF;
        constexpr int padding = 1;
        constexpr int comment = 4;
        constexpr int picture = 6;
        if (type != padding && type != comment && type != picture)
        {
            file.addNumber(type);
            file.add(at + blockHeader, length);
        }
        at += blockHeader + length;
    }
    const std::int64_t end = aheadOfId3v1(file);
    file.add(at, end - at);
    return at <= end;
}

/// Adds all chunks except those with tags.
bool addRiffSound(AudioRegionReader& file, bool bigEndian)
{
    constexpr std::int64_t chunkHeader = 8;
    const ByteVector soundName = bigEndian ? "SSND" : "data";
    bool found = false;
    std::int64_t at = 12;
    while (at + chunkHeader <= file.size() && file.sound())
    {
        const ByteVector header = file.look(at, chunkHeader + 4);
        const ByteVector name = header.mid(0, 4);
        const std::int64_t length = header.toUInt(4, bigEndian);
        const TagLib::String upper = TagLib::String(name).upper();
        const bool isInfo = upper == "LIST" && header.mid(chunkHeader) == "INFO";
        if (upper != "ID3 " && !isInfo)
        {
            file.add(name);
            file.addNumber(length);
            file.add(at + chunkHeader, length);
        }
        at += chunkHeader + length;
        found = found || (name == soundName && at <= file.size());
        // Chunks start at even positions, except in files of careless writers.
        if ((at & 1) != 0 && file.look(at, 1) == ByteVector(1, 0))
            ++at;
    }
    return found;
}

/// Everything after the header, which contains all tags.
bool addAsfSound(AudioRegionReader& file)
{
    constexpr std::int64_t smallest = 30;
    const std::int64_t header = file.look(0, smallest).toLongLong(16U, false);
    if (header < smallest || header > file.size())
        return false;
    file.add(header, file.size() - header);
    return true;
}

bool addSound(AudioRegionReader& file, AudioFormat format)
{
    switch (format)
    {
    case AudioFormat::mpeg:
    case AudioFormat::ape:
    case AudioFormat::wavPack:
    case AudioFormat::musepack:
    case AudioFormat::trueAudio:
        return addBetweenTags(file);
    case AudioFormat::flac:
        return addFlacSound(file);
    case AudioFormat::vorbis:
    case AudioFormat::oggFlac:
    case AudioFormat::speex:
    case AudioFormat::opus:
        return addOggSound(file);
    case AudioFormat::mp4:
        return addMp4Sound(file);
    case AudioFormat::asf:
        return addAsfSound(file);
    case AudioFormat::wav:
    case AudioFormat::aiff:
        return addRiffSound(file, format == AudioFormat::aiff);
    case AudioFormat::unknown:
        break;
    }
    return false;
}
} // namespace

std::optional<std::string> digestOfSound(qo::IFile& file, AudioFormat format, std::int64_t limit)
{
    AudioRegionReader reader(file, limit);
    if (!addSound(reader, format))
        return {};
    std::string digest = reader.digest();
    return reader.sound() ? std::optional(std::move(digest)) : std::nullopt;
}
} // namespace KVTagLib
