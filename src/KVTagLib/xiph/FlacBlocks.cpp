#include "KVTagLib/xiph/FlacBlocks.h"

#include "KVTagLib/id3/Id3v2Editor.h"

#include <algorithm>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned blockHeaderBytes = 4;
constexpr unsigned magicBytes = 4;
constexpr unsigned maxBlockBytes = (1U << 24) - 1;
constexpr unsigned long maxBytes = 256UL << 20; ///< limit for all blocks: a sound file has less
constexpr unsigned long searchForMagic = 64 << 10;
constexpr unsigned newFlacPadding = 4096;
constexpr char lastFlag = '\x80';
} // namespace

bool FlacBlocks::load(IOStream& file)
{
    file.seek(0);
    const unsigned tag = Id3v2Editor::sizeOf(file.readBlock(Id3v2Editor::headerBytes));
    file.seek(static_cast<long>(tag));
    const int magic = file.readBlock(searchForMagic).find("fLaC");
    m_start = static_cast<long>(tag + magicBytes) + magic;
    return magic >= 0 && loadFrom(file);
}

bool FlacBlocks::loadFrom(IOStream& file)
{
    bool isSound = true;
    for (bool last = false; !last;)
    {
        file.seek(m_start + static_cast<long>(m_size));
        const ByteVector header = file.readBlock(blockHeaderBytes);
        if (header.size() < blockHeaderBytes)
            return false;
        last = (header[0] & lastFlag) != 0;
        const char type = static_cast<char>(header[0] & ~lastFlag);
        const unsigned size = header.toUInt(1, 3, true);
        m_size += blockHeaderBytes + size;
        if (type == FlacBlock::invalid || m_size > maxBytes)
            return false;
        isSound = isSound && (!blocks.empty() || type == FlacBlock::streamInfo);
        if (type != FlacBlock::padding)
            blocks.push_back({type, file.readBlock(size)});
        if (m_start + static_cast<long>(m_size) > file.length())
            return false;
        if (type != FlacBlock::padding && blocks.back().content.size() != size)
            return false;
    }
    return isSound;
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
    for (const FlacBlock& block : blocks)
    {
        if (block.content.size() > maxBlockBytes)
            return false;
        add(block.type, block.content);
    }
    if (bytes.size() != m_size)
    {
        const unsigned long room = m_size - std::min<unsigned long>(m_size, bytes.size());
        const bool fits = room >= blockHeaderBytes && room - blockHeaderBytes <= maxBlockBytes;
        add(FlacBlock::padding,
            ByteVector(fits ? static_cast<unsigned>(room) - blockHeaderBytes : newFlacPadding, 0));
    }
    bytes[static_cast<int>(lastHeader)] =
        static_cast<char>(bytes[static_cast<int>(lastHeader)] | lastFlag);
    file.insert(bytes, static_cast<unsigned long>(m_start), m_size);
    return true;
}
} // namespace KVTagLib
