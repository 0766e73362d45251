#include "KVTagLib/xiph/FlacEditor.h"

#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/xiph/XiphEditor.h"

#include <taglib/tiostream.h>

#include <algorithm>
#include <vector>

// FlacBlocks loads the metadata blocks of a file (a byte for type and last flag, three bytes for
// the size, content), changes the comment and the picture, and stores them with enough padding.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned headerBytes = 4;
constexpr unsigned magicBytes = 4;
constexpr unsigned maxBlockBytes = (1U << 24) - 1;
constexpr unsigned long maxBytes = 256UL << 20; ///< limit for all blocks: a sound file has less
constexpr unsigned long searchForMagic = 64 << 10;
constexpr unsigned newPadding = 4096;
constexpr char lastFlag = '\x80';
constexpr char streamInfo = 0;
constexpr char padding = 1;
constexpr char comment = 4;
constexpr char picture = 6;
constexpr char invalid = 127;

struct Block
{
    char type;
    ByteVector content;
};

class FlacBlocks
{
public:
    /// Reads the blocks; start is the position of the first one. False if they are damaged.
    bool load(IOStream& file, long start);
    bool apply(const TagChanges& changes);
    /// Writes the blocks in the place of the old ones. While the padding is large enough the sound
    /// is not moved.
    bool store(IOStream& file) const;

private:
    void applyPicture(const ByteVector& content, XiphEditor& xiph);

    long m_start = 0;
    unsigned long m_size = 0;
    std::vector<Block> m_blocks; ///< without the padding
};

bool FlacBlocks::load(IOStream& file, long start)
{
    m_start = start;
    bool last = false;
    while (!last)
    {
        file.seek(m_start + static_cast<long>(m_size));
        const ByteVector header = file.readBlock(headerBytes);
        if (header.size() < headerBytes)
            return false;
        last = (header[0] & lastFlag) != 0;
        const char type = static_cast<char>(header[0] & ~lastFlag);
        const unsigned size = header.toUInt(1, 3, true);
        m_size += headerBytes + size;
        const bool wrongStart = m_blocks.empty() && type != streamInfo;
        if (type == invalid || wrongStart || m_size > maxBytes ||
            m_start + static_cast<long>(m_size) > file.length())
            return false;
        if (type != padding)
            m_blocks.push_back({type, file.readBlock(size)});
        if (type != padding && m_blocks.back().content.size() != size)
            return false;
    }
    return true;
}

bool FlacBlocks::apply(const TagChanges& changes)
{
    const auto isComment = [](const Block& block)
    { return block.type == comment && !block.content.isEmpty(); };
    auto found = std::ranges::find_if(m_blocks, isComment);
    if (found == m_blocks.end())
    {
        // No vendor and no entries.
        m_blocks.push_back({comment, ByteVector(8, 0)});
        found = m_blocks.end() - 1;
    }
    const auto place = found - m_blocks.begin();
    XiphEditor xiph;
    if (!xiph.load(found->content))
        return false;
    xiph.apply(changes);
    if (changes.picture())
        applyPicture(*changes.picture(), xiph);
    m_blocks[static_cast<std::size_t>(place)].content = xiph.render();
    std::erase_if(m_blocks,
                  [&](const Block& block) {
                      return block.type == picture &&
                             changes.removesPicture(pictureTypeOf(block.content));
                  });
    return true;
}

/// Replaces the first front cover, with picture blocks before pictures in the comment.
void FlacBlocks::applyPicture(const ByteVector& content, XiphEditor& xiph)
{
    const auto front = std::ranges::find_if(
        m_blocks,
        [](const Block& block) {
            return block.type == picture && pictureTypeOf(block.content) == pictureType::frontCover;
        });
    if (front != m_blocks.end())
        front->content = changedPicture(front->content, content);
    else if (const int entry = xiph.frontCover(); entry >= 0)
        xiph.setPicture(entry, content);
    else
        m_blocks.push_back({picture, changedPicture({}, content)});
}

bool FlacBlocks::store(IOStream& file) const
{
    ByteVector bytes;
    unsigned lastHeader = 0;
    const auto add = [&](char type, const ByteVector& content)
    {
        lastHeader = bytes.size();
        bytes.append(ByteVector(1, type));
        bytes.append(ByteVector::fromUInt(content.size()).mid(1));
        bytes.append(content);
    };
    for (const Block& block : m_blocks)
    {
        if (block.content.size() > maxBlockBytes)
            return false;
        add(block.type, block.content);
    }
    if (bytes.size() != m_size)
    {
        const unsigned long room = m_size - std::min<unsigned long>(m_size, bytes.size());
        const bool fits = room >= headerBytes && room - headerBytes <= maxBlockBytes;
        add(padding, ByteVector(fits ? static_cast<unsigned>(room) - headerBytes : newPadding, 0));
    }
    bytes[static_cast<int>(lastHeader)] =
        static_cast<char>(bytes[static_cast<int>(lastHeader)] | lastFlag);
    file.insert(bytes, static_cast<unsigned long>(m_start), m_size);
    return true;
}
} // namespace

void editFlac(IOStream& file, const TagChanges& changes)
{
    file.seek(0);
    const ByteVector head = file.readBlock(Id3v2Editor::headerBytes);
    const unsigned id3v2Bytes = Id3v2Editor::sizeOf(head);
    if (head.startsWith("ID3") && id3v2Bytes == 0)
        throw TagRefusal(CString(u"its ID3v2 tag is damaged") + copyAdvice);
    file.seek(static_cast<long>(id3v2Bytes));
    const int magic = file.readBlock(searchForMagic).find("fLaC");
    FlacBlocks blocks;
    if (magic < 0 || !blocks.load(file, static_cast<long>(id3v2Bytes + magicBytes) + magic) ||
        !blocks.apply(changes))
        throw TagRefusal(CString(u"its comment is damaged, or a block before the sound") +
                         copyAdvice);
    if (!blocks.store(file))
        throw TagRefusal(u"its comment or a picture would be larger than 16 MiB, which FLAC "
                         u"cannot hold");
    applyToId3v1(changes, file);
    if (id3v2Bytes > 0)
        applyToId3v2(changes, true, file);
}
} // namespace KVTagLib
