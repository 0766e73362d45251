#include "KVTagLib/riff/RiffEditor.h"

#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/riff/RiffChunks.h"

#include <taglib/rifffile.h>

#include <limits>
#include <vector>

// ChunkFile gives access to the chunks, InfoList changes the INFO texts of WAV, editId3v2() the
// ID3v2 chunk, and editRiff() decides which of these must change.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned notFound = ~0U;

/// Gives access to TagLib's handling of chunks, which is protected there.
class ChunkFile final : public RIFF::File
{
public:
    /// The stream must stand at its start.
    ChunkFile(FileStream& stream, bool bigEndian)
        : RIFF::File(&stream, bigEndian ? BigEndian : LittleEndian)
    {
    }
    Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }

    /// The first chunk with that name, without regard to case, whose content starts so.
    unsigned find(const char* name, const ByteVector& start = {})
    {
        for (unsigned i = 0; i < chunkCount(); ++i)
        {
            const String found(chunkName(i));
            if (found.upper() == name && (start.isEmpty() || chunkData(i).startsWith(start)))
                return i;
        }
        return notFound;
    }
    bool has(const ByteVector& name)
    {
        for (unsigned i = 0; i < chunkCount(); ++i)
        {
            if (chunkName(i) == name)
                return true;
        }
        return false;
    }
    ByteVector content(unsigned index) { return chunkData(index); }
    void replace(unsigned index, const ByteVector& content)
    {
        if (content.isEmpty())
            removeChunk(index);
        else
            setChunkData(index, content);
    }
    void append(const ByteVector& name, const ByteVector& content) { setChunkData(name, content); }
};

/// One text of the list as bytes, so that texts which do not change keep their encoding.
struct InfoText
{
    ByteVector id;
    ByteVector bytes;
};

class InfoList
{
public:
    bool load(const ByteVector& content)
    {
        // The texts start after the name of the list; each is padded to an even length.
        unsigned at = 4;
        while (at + 8 <= content.size())
        {
            const unsigned size = content.toUInt(at + 4, false);
            if (size > content.size() - at - 8)
                return false;
            m_texts.push_back({content.mid(at, 4), content.mid(at + 8, size)});
            at += 8 + size + (size & 1);
        }
        return true;
    }

    void apply(const TagChanges& changes)
    {
        constexpr std::pair<Field, const char*> ids[] = {
            {Field::artist, "IART"},
            {Field::album, "IPRD"},
            {Field::title, "INAM"},
            {Field::genre, "IGNR"},
            {Field::trackNumber, "IPRT"},
            {Field::year, "ICRD"},
        };
        for (const auto& [field, id] : ids)
        {
            if (!changes.has(field))
                continue;
            set(id, changes.changed(field, {}));
            if (field == Field::trackNumber)
                set("ITRK", {});
        }
    }

    ByteVector render() const
    {
        if (m_texts.empty())
            return {};
        ByteVector content("INFO", 4);
        for (const InfoText& text : m_texts)
        {
            content.append(text.id);
            content.append(ByteVector::fromUInt(text.bytes.size(), false));
            content.append(text.bytes);
            content.append(ByteVector(text.bytes.size() & 1, 0));
        }
        return content;
    }

private:
    void set(const ByteVector& id, const StringList& texts)
    {
        std::erase_if(m_texts, [&](const InfoText& text) { return text.id == id; });
        if (texts.isEmpty())
            return;
        ByteVector bytes = texts.front().data(String::UTF8);
        // The closing zero counts as part of the text here.
        bytes.append(ByteVector(1, 0));
        m_texts.push_back({id, bytes});
    }

    std::vector<InfoText> m_texts;
};

/// Changes the ID3v2 chunk with that index; makes a chunk for notFound.
void editId3v2(ChunkFile& file, unsigned index, bool aiff, const TagChanges& changes)
{
    const ByteVector old = index == notFound ? ByteVector() : file.content(index);
    const ByteVector tag = Id3v2Editor::changed(old, changes);
    if (index != notFound)
        file.replace(index, tag);
    else if (!tag.isEmpty())
        file.append(aiff ? "ID3 " : "id3 ", tag);
}

/// RF64, for files over 4 GiB: the size in the header is all ones, and the true one stands as 64
/// bits in the first chunk, "ds64". TagLib knows only the former.
class LongSize
{
public:
    explicit LongSize(FileStream& stream) : m_stream(stream)
    {
        stream.seek(0);
        const ByteVector head = stream.readBlock(longSizeAt);
        m_isUsed = head.startsWith("RF64");
        m_isKnown = head.mid(chunkAt, 4) == "ds64";
        m_shortSize = head.mid(shortSizeAt, 4);
    }
    bool isSound() const { return !m_isUsed || m_isKnown; } ///< false: the size has no place
    void write()
    {
        if (!m_isUsed)
            return;
        m_stream.seek(shortSizeAt);
        m_stream.writeBlock(m_shortSize);
        m_stream.seek(longSizeAt);
        m_stream.writeBlock(ByteVector::fromLongLong(m_stream.length() - chunkHeaderBytes, false));
    }

private:
    static constexpr unsigned shortSizeAt = 4;
    static constexpr unsigned chunkAt = 12;
    static constexpr unsigned chunkHeaderBytes = 8;
    static constexpr unsigned longSizeAt = chunkAt + chunkHeaderBytes;

    FileStream& m_stream;
    bool m_isUsed = false;
    bool m_isKnown = false;
    ByteVector m_shortSize;
};

/// Who writes into a pipe cannot come back to write the sizes at the start. The sound then goes on
/// to the end of the file.
void closeOpenSizes(FileStream& stream)
{
    stream.seek(0);
    if (!hasOpenSizes(stream.readBlock(RiffChunk::headerBytes)))
        return;
    const auto close = [&](const RiffChunk& chunk)
    {
        if (!chunk.isOpenSound())
            return chunk.name != "data";
        const long size = stream.length() - chunk.start;
        if (stream.length() > std::numeric_limits<std::uint32_t>::max())
            throw TagRefusal(withCopyAdvice(u"it is longer than 4 GiB"));
        stream.seek(chunk.start - 4);
        stream.writeBlock(ByteVector::fromUInt(static_cast<unsigned>(size), false));
        return false;
    };
    forEachRiffChunk(stream, false, close);
}

void editChunks(FileStream& stream, bool aiff, const TagChanges& changes)
{
    stream.seek(0, IOStream::Beginning);
    ChunkFile file(stream, aiff);
    // The size of the sound in a recording that was not closed properly seems to exceed the file:
    // TagLib then does not list that chunk, and would overwrite it.
    if (!file.isValid() || !file.has(aiff ? "SSND" : "data"))
        throw TagRefusal(withCopyAdvice(u"it is shorter than its header says"));
    const unsigned info = aiff ? notFound : file.find("LIST", "INFO");
    // INFO cannot hold these.
    const bool beyondInfo =
        changes.picture() || changes.has(Field::lyrics) || changes.has(Field::rating);
    if (info != notFound)
    {
        InfoList list;
        if (!list.load(file.content(info)))
            throw TagRefusal(withCopyAdvice(u"its INFO list is damaged"));
        list.apply(changes);
        file.replace(info, list.render());
    }
    const unsigned id3v2 = file.find("ID3 ");
    if (info == notFound || id3v2 != notFound || beyondInfo)
        editId3v2(file, id3v2, aiff, changes);
}
} // namespace

void editRiff(FileStream& stream, AudioFormat format, const TagChanges& changes)
{
    LongSize size(stream);
    if (!size.isSound())
        throw TagRefusal(withCopyAdvice(u"its \"ds64\" chunk with the size is missing"));
    closeOpenSizes(stream);
    editChunks(stream, format == AudioFormat::aiff, changes);
    size.write();
}
} // namespace KVTagLib
