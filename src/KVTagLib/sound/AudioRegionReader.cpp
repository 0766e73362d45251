#include "KVTagLib/sound/AudioRegionReader.h"

#include "KVTagLib/WriteStop.h"

#include <algorithm>

// A block of the file is kept, from which both look() and add() are served, so walking over a file
// and adding its parts reads it once.

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr std::int64_t blockBytes = 256 << 10;
constexpr std::int64_t smallBlockBytes = 64 << 10;
} // namespace

AudioRegionReader::AudioRegionReader(qo::IFile& file, std::int64_t limit)
    : m_file(file), m_size(file.sizeAtOpen()), m_left(limit)
{
    ::sha256_init(&m_context);
}

ByteVector AudioRegionReader::look(std::int64_t position, std::int64_t length)
{
    if (position < 0 || position >= m_size || !m_sound)
        return {};
    const std::int64_t wanted = std::min({length, m_size - position, blockBytes});
    if (position < m_blockAt || position + wanted > m_blockAt + m_block.size())
        fill(position);
    return m_block.mid(static_cast<unsigned>(position - m_blockAt), static_cast<unsigned>(wanted));
}

void AudioRegionReader::fill(std::int64_t position)
{
    m_blockAt = position;
    // A caller who wants only the start of the sound shall not read much more from the disk.
    const std::int64_t wanted = std::clamp(m_left, smallBlockBytes, blockBytes);
    m_block.resize(static_cast<unsigned>(std::min(wanted, m_size - position)));
    unsigned done = 0;
    // Comparing a copy with its original takes longest in a write, so a stop is checked here too.
    bool going = !WriteStop::isAsked() && m_file.seek(position);
    while (going && done < m_block.size())
    {
        const std::int64_t got = m_file.read(m_block.data() + done, m_block.size() - done);
        going = got > 0;
        done += going ? static_cast<unsigned>(got) : 0;
    }
    m_sound = m_sound && done == m_block.size();
    m_block.resize(done);
}

void AudioRegionReader::add(std::int64_t position, std::int64_t length)
{
    const std::int64_t end = std::min(m_size, position + std::min(length, m_size));
    for (std::int64_t at = position; at < end && m_sound && !isFull();)
    {
        const ByteVector bytes = look(at, end - at);
        add(bytes);
        at += bytes.size();
        m_sound = m_sound && !bytes.isEmpty();
    }
}

void AudioRegionReader::add(const ByteVector& bytes)
{
    const std::int64_t taken = std::min<std::int64_t>(bytes.size(), m_left);
    m_left -= taken;
    ::sha256_update(&m_context,
                    static_cast<std::size_t>(taken),
                    reinterpret_cast<const unsigned char*>(bytes.data()));
}

void AudioRegionReader::addNumber(std::int64_t number)
{
    add(ByteVector::fromLongLong(number));
}

std::string AudioRegionReader::digest()
{
    unsigned char bytes[SHA256_DIGEST_SIZE];
    ::sha256_digest(&m_context, sizeof(bytes), bytes);
    return {bytes, bytes + sizeof(bytes)};
}
} // namespace KVTagLib
