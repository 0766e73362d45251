#pragma once

#include "platform/FileSystem.h"

#include <nettle/sha2.h>
#include <taglib/tbytevector.h>

#include <cstdint>
#include <limits>

namespace KVTagLib
{
/// Reads a file in blocks and adds parts of it to a digest, up to a limit of bytes; more is
/// ignored. A failure is remembered and ends all further reading: see sound().
class AudioRegionReader
{
public:
    explicit AudioRegionReader(qo::IFile& file,
                               std::int64_t limit = std::numeric_limits<std::int64_t>::max());

    std::int64_t size() const { return m_size; }
    /// The bytes at that position; fewer only at the end of the file or where more than a block
    /// (256 KiB) is asked for. Empty after a failure.
    TagLib::ByteVector look(std::int64_t position, std::int64_t length);
    /// Adds that part of the file, as far as the file reaches.
    void add(std::int64_t position, std::int64_t length);
    void add(const TagLib::ByteVector& bytes);
    void addNumber(std::int64_t number);

    /// Whether everything could be read and added so far.
    bool sound() const { return m_sound; }
    /// Whether the limit is reached.
    bool isFull() const { return m_left == 0; }
    /// Ends the digest; to be called once. Meaningless unless sound() is true afterwards.
    std::string digest();

private:
    /// Reads the block that starts at that position.
    void fill(std::int64_t position);

    qo::IFile& m_file;
    std::int64_t m_size;
    std::int64_t m_left; ///< bytes that the digest still takes
    sha256_ctx m_context;
    TagLib::ByteVector m_block;
    std::int64_t m_blockAt = 0;
    bool m_sound = true;
};

// For the formats whose sound is in several pieces. False if the structure is damaged.
bool addMp4Sound(AudioRegionReader& file);
bool addOggSound(AudioRegionReader& file);
} // namespace KVTagLib
