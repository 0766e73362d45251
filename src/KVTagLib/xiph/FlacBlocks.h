#pragma once

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

#include <vector>

namespace KVTagLib
{
class FileParts;

struct FlacBlock
{
    enum Type : char
    {
        streamInfo = 0,
        padding = 1,
        comment = 4,
        picture = 6,
        invalid = 127
    };
    char type; ///< a Type, or another number, which is kept
    TagLib::ByteVector content;
};

/// The metadata blocks at the start of a FLAC file: a byte for the type and the flag of the last
/// one, three bytes for the size, and the content.
class FlacBlocks
{
public:
    /// Finds and reads the blocks. False if they are damaged; then those ahead of the damage are
    /// there, and what the file has of a block that is cut off.
    bool load(TagLib::IOStream& file);
    /// Writes the blocks in the place of those that were loaded. While the padding is large enough
    /// the sound is not moved. False if a block is too large.
    bool store(TagLib::IOStream& file) const;

    /// Adds every block, all padding together at the end, which is not known of damaged blocks; see
    /// FilePart. Gives the bytes of what was added.
    long addParts(bool isWhole, FileParts& parts) const;
    /// Where the first block begins.
    long start() const { return m_start; }

    std::vector<FlacBlock> blocks; ///< without the padding

private:
    bool loadFrom(TagLib::IOStream& file);

    long m_start = 0;
    unsigned long m_size = 0;
};
} // namespace KVTagLib
