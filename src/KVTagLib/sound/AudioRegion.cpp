#include "KVTagLib/sound/AudioRegion.h"

#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/riff/RiffChunks.h"
#include "KVTagLib/sound/AudioRegionReader.h"

#include <algorithm>

// What belongs to the sound, for the formats that keep it in one piece or in a list of chunks:
// addBetweenTags() for files with tags at both ends, addFlacSound(), addRiffSound(), addAsfSound().
// MP4 and Ogg have files of their own.

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
/// Foreign bytes before the mark of a format are rare and few.
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

/// The last bytes of the file, or all that it has.
ByteVector endOf(AudioRegionReader& file, unsigned bytes)
{
    return file.look(std::max<std::int64_t>(0, file.size() - bytes), bytes);
}

/// Adds everything except the tags at both ends.
bool addBetweenTags(AudioRegionReader& file)
{
    const std::int64_t tag =
        std::max(0, Id3v2Editor::find(file.look(0, Id3v2Editor::searchedBytes)));
    const std::int64_t start = behindId3v2(file, tag);
    const std::int64_t end = ApeTag::find(endOf(file, ApeTag::tailBytes), file.size()).start;
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
    const std::int64_t end = file.size() - id3v1SizeOf(endOf(file, id3v1TailBytes));
    file.add(at, end - at);
    return at <= end;
}

/// Adds all chunks except those with tags.
bool addRiffSound(AudioRegionReader& file, bool bigEndian)
{
    constexpr std::int64_t chunkHeader = 8;
    const ByteVector soundName = bigEndian ? "SSND" : "data";
    const bool isOpen = hasOpenSizes(file.look(0, chunkHeader));
    bool found = false;
    std::int64_t at = 12;
    while (at + chunkHeader <= file.size() && file.sound())
    {
        const ByteVector header = file.look(at, chunkHeader + 4);
        const ByteVector name = header.mid(0, 4);
        std::int64_t length = header.toUInt(4, bigEndian);
        if (isOpen && name == soundName && RiffChunk::isOpenSize(length))
            length = file.size() - at - chunkHeader;
        const TagLib::String upper = TagLib::String(name).upper();
        const bool isInfo = upper == "LIST" && header.mid(chunkHeader) == "INFO";
        if (upper != "ID3 " && !isInfo)
        {
            // A long file's header begins with the size of the file.
            const std::int64_t skipped = name == "ds64" ? std::min<std::int64_t>(8, length) : 0;
            file.add(name);
            file.addNumber(length);
            file.add(at + chunkHeader + skipped, length - skipped);
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
