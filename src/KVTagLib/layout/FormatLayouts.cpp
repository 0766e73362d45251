#include "KVTagLib/layout/FormatLayouts.h"

#include "KVTagLib/TagText.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfCursor.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/mp4/Mp4Atoms.h"
#include "KVTagLib/riff/RiffChunks.h"
#include "KVTagLib/xiph/FlacBlocks.h"
#include "KVTagLib/xiph/Rescue.h"
#include "KVTagLib/xiph/XiphEditor.h"

#include <taglib/tbytevectorstream.h>
#include <taglib/tfile.h>

#include <algorithm>
#include <string_view>

// Walks over the files as their formats are built; what is in a tag comes from the class that
// takes that tag apart.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned mostTagBytes = 64U << 20;

ByteVector bytesAt(IOStream& file, long at, std::int64_t size)
{
    file.seek(at);
    return file.readBlock(static_cast<unsigned long>(std::max<std::int64_t>(size, 0)));
}

void addId3v2(const ByteVector& tag, int depth, FileParts& parts)
{
    Id3v2Editor editor;
    (void)editor.load(tag);
    parts.add(depth, "ID3v2." + String::number(editor.majorVersion()) + " tag", tag.size());
    editor.addParts(depth + 1, parts);
}

/// The tags at the start of the file; gives where they end.
long addStart(IOStream& file, FileParts& parts)
{
    long at = 0;
    while (!parts.isFull())
    {
        const unsigned size = Id3v2Editor::sizeOf(bytesAt(file, at, Id3v2Editor::headerBytes));
        if (size == 0 || size > mostTagBytes || at + long(size) > file.length())
            break;
        addId3v2(bytesAt(file, at, size), 0, parts);
        at += long(size);
    }
    return at;
}

/// The sound from that position on, and the tags after it.
void addSoundAndEnd(IOStream& file, long at, FileParts& parts)
{
    const long id3v1 = static_cast<long>(id3v1SizeOf(
        bytesAt(file, std::max(0L, file.length() - long(id3v1TailBytes)), id3v1TailBytes)));
    const ApeTag::Place place = ApeTag::find(file);
    const bool hasApe = place.size > 0 && place.start >= at && place.size <= mostTagBytes;
    const long end = file.length() - id3v1;
    parts.addRest(0, "sound", (hasApe ? place.start : end) - at);
    if (hasApe)
    {
        ApeTag tag;
        (void)tag.load(bytesAt(file, place.start, place.size));
        parts.add(0, "APE tag", place.size);
        tag.addParts(1, place.size, parts);
    }
    if (id3v1 > 0)
        parts.add(0, "ID3v1 tag", id3v1, nameOfBytes(bytesAt(file, end + 3, 30)));
}

/// Atoms that consist of atoms.
bool isContainer(const ByteVector& name)
{
    constexpr std::string_view names[] = {"moov",
                                          "trak",
                                          "mdia",
                                          "minf",
                                          "stbl",
                                          "udta",
                                          "meta",
                                          "ilst",
                                          "edts",
                                          "dinf",
                                          "mvex",
                                          "moof",
                                          "traf",
                                          "mfra"};
    const std::string_view own(name.data(), name.size());
    return std::ranges::find(names, own) != std::end(names);
}

class Mp4Walk
{
public:
    Mp4Walk(IOStream& file, FileParts& parts) : m_file(file), m_parts(parts) {}

    void add(std::int64_t at, std::int64_t end, int depth, bool isItem)
    {
        while (at < end && !m_parts.isFull())
        {
            const auto atom =
                atomOf(bytesAt(m_file, at, std::min<std::int64_t>(longAtomHeaderBytes, end - at)),
                       at,
                       end);
            if (!atom)
                return m_parts.addRest(depth, "rest", end - at);
            m_parts.add(depth, nameOfBytes(atom->name), atom->end - at, textOf(*atom, isItem));
            const bool isList = atom->name == "ilst";
            if (depth < deepest && (isItem || isContainer(atom->name)))
                add(atom->start + skipped(*atom), atom->end, depth + 1, isList);
            at = atom->end;
        }
    }

private:
    static constexpr int deepest = 12;

    /// "meta" begins with version and flags, which some writers leave out.
    unsigned skipped(const Mp4Atom& atom)
    {
        return atom.name == "meta" && bytesAt(m_file, atom.start + 4, 4) != "hdlr" ? 4 : 0;
    }

    /// The text of the first value of an item: a "data" atom with a type and a locale.
    String textOf(const Mp4Atom& atom, bool isItem)
    {
        constexpr unsigned valueAt = 16;
        constexpr unsigned longest = 256;
        constexpr unsigned textType = 1;
        if (!isItem)
            return {};
        const ByteVector head =
            bytesAt(m_file, atom.start, std::min<std::int64_t>(longest, atom.end - atom.start));
        const auto data = atomOf(head, 0, head.size());
        if (!data || data->name != "data" || head.size() < valueAt || head.toUInt(8U) != textType)
            return {};
        return {head.mid(valueAt, static_cast<unsigned>(data->end) - valueAt), String::UTF8};
    }

    IOStream& m_file;
    FileParts& m_parts;
};

/// The content of a chunk, as far as the file reaches.
ByteVector contentOf(IOStream& file, const RiffChunk& chunk)
{
    return bytesAt(file, chunk.start, std::min<long>(chunk.size, file.length() - chunk.start));
}

/// The texts of a list: chunks like those of the file itself.
void addRiffList(IOStream& file, const RiffChunk& list, FileParts& parts)
{
    ByteVectorStream stream(
        bytesAt(file, list.start - long(RiffChunk::headerBytes), list.size + 8));
    const auto add = [&](const RiffChunk& chunk)
    {
        ByteVector text = contentOf(stream, chunk);
        while (!text.isEmpty() && text.data()[text.size() - 1] == 0)
            text.resize(text.size() - 1);
        parts.add(1, nameOfBytes(chunk.name), chunk.size + 8, textOfBytes(text));
        return !parts.isFull();
    };
    forEachRiffChunk(stream, false, add);
}

/// MPEG, True Audio, Monkey's Audio, WavPack and Musepack.
void addTagsAndSound(IOStream& file, FileParts& parts)
{
    addSoundAndEnd(file, addStart(file, parts), parts);
}

void addFlac(IOStream& file, FileParts& parts)
{
    const long tags = addStart(file, parts);
    FlacBlocks blocks;
    const bool isWhole = blocks.load(file);
    if (blocks.blocks.empty())
        return addSoundAndEnd(file, tags, parts);
    parts.addRest(0, "mark", blocks.start() - tags);
    const long size = blocks.addParts(isWhole, parts);
    addSoundAndEnd(file, std::min(blocks.start() + size, file.length()), parts);
}

void addOgg(IOStream& file, FileParts& parts)
{
    const OggHead head = oggHeadOf(file);
    parts.addRest(0, "identification", head.first.size());
    if (head.second.size() > 0)
    {
        parts.add(0, "comment", head.second.size());
        XiphEditor comment;
        if (comment.load(head.comment))
            comment.addParts(1, parts);
    }
    parts.addRest(0,
                  "further packets and page headers",
                  file.length() - long(head.first.size() + head.second.size()));
}

void addMp4(IOStream& file, FileParts& parts)
{
    Mp4Walk(file, parts).add(0, file.length(), 0, false);
}

/// The stream as AsfHeader takes it, without TagLib's own reading of the header.
class AsfStream final : public File
{
public:
    explicit AsfStream(IOStream& stream) : File(&stream) {}
    Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};

void addAsf(IOStream& file, FileParts& parts)
{
    AsfStream opened(file);
    AsfHeader header;
    const bool isWhole = header.load(opened);
    for (long at = 0; at < file.length() && !parts.isFull();)
    {
        const ByteVector head = bytesAt(file, at, AsfCursor::objectHeader);
        const long long size = head.size() < AsfCursor::objectHeader
                                   ? 0
                                   : head.toLongLong(AsfCursor::guidBytes, false);
        if (size < AsfCursor::objectHeader || size > file.length() - at)
            return parts.addRest(0, "rest", file.length() - at);
        parts.add(0, at == 0 ? String("header") : AsfHeader::nameOf(head), size);
        if (at == 0)
            header.addParts(1, parts);
        if (at == 0 && !isWhole)
            parts.add(1, "damaged objects", 0);
        at += size;
    }
}

void addRiff(IOStream& file, bool isAiff, FileParts& parts)
{
    constexpr long formHeader = 12;
    long at = formHeader;
    parts.add(0, nameOfBytes(bytesAt(file, 0, 4)), std::min(formHeader, file.length()));
    const auto add = [&](const RiffChunk& chunk)
    {
        const long start = chunk.start - long(RiffChunk::headerBytes);
        parts.addRest(0, "padding", start - at);
        at =
            std::min(chunk.isOpenSound() ? file.length() : chunk.start + chunk.size, file.length());
        parts.add(0, nameOfBytes(chunk.name), at - start);
        if (chunk.size > mostTagBytes)
            return true;
        if (chunk.isId3())
            addId3v2(contentOf(file, chunk), 1, parts);
        else if (chunk.name == "LIST" && bytesAt(file, chunk.start, 4) == "INFO")
            addRiffList(file, chunk, parts);
        return !parts.isFull() && !chunk.isOpenSound();
    };
    forEachRiffChunk(file, isAiff, add);
    const long rest = file.length() - at;
    parts.addRest(0, rest == 1 ? "padding" : "rest", rest);
}
} // namespace

bool addParts(IOStream& file, AudioFormat format, FileParts& parts)
{
    switch (format)
    {
    case AudioFormat::unknown:
        return false;
    case AudioFormat::flac:
        addFlac(file, parts);
        return true;
    case AudioFormat::vorbis:
    case AudioFormat::oggFlac:
    case AudioFormat::speex:
    case AudioFormat::opus:
        addOgg(file, parts);
        return true;
    case AudioFormat::mp4:
        addMp4(file, parts);
        return true;
    case AudioFormat::asf:
        addAsf(file, parts);
        return true;
    case AudioFormat::wav:
    case AudioFormat::aiff:
        addRiff(file, format == AudioFormat::aiff, parts);
        return true;
    default:
        addTagsAndSound(file, parts);
        return true;
    }
}
} // namespace KVTagLib
