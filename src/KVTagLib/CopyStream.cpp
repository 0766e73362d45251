#include "KVTagLib/CopyStream.h"

#include "KVTagLib/WriteStop.h"
#include "platform/FileReplacement.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>

namespace KVTagLib
{
namespace
{
/// A size from a damaged file may exceed what a position can hold.
long positionOf(unsigned long value)
{
    return static_cast<long>(std::min<unsigned long>(value, std::numeric_limits<long>::max() / 4));
}

/// An exception and not a failed write, since an editor would ignore the failure and go on to the
/// end of a long file.
class WriteStopped final : public std::exception
{
};

void checkStop()
{
    if (WriteStop::isAsked())
        throw WriteStopped();
}
} // namespace

CopyStream::CopyStream(qo::FileReplacement& replacement)
    : TagLib::FileStream(replacement.copyPath().c_str(), true), m_replacement(replacement)
{
}

TagLib::ByteVector CopyStream::readBlock(unsigned long length)
{
    const long left = this->length() - m_position;
    if (left <= 0 || length == 0)
        return {};
    constexpr long largest = std::numeric_limits<int>::max();
    const long wanted = std::min({positionOf(length), left, largest});
    TagLib::ByteVector block(static_cast<unsigned>(wanted));
    const auto got = m_replacement.readCopy(m_position, block.data(), block.size());
    block.resize(static_cast<unsigned>(std::max<std::int64_t>(got, 0)));
    m_position += static_cast<long>(block.size());
    return block;
}

void CopyStream::writeBlock(const TagLib::ByteVector& data)
{
    checkStop();
    if (m_replacement.writeCopy(m_position, data.data(), data.size()))
        m_position += static_cast<long>(data.size());
}

/// Replaces a part of the file, or inserts into it; the rest of the file moves.
void CopyStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace)
{
    const long at = positionOf(start);
    const long size = static_cast<long>(data.size());
    const long end = length();
    // Example: replacing 10 bytes at 100 by 30 moves everything from 110 on to 130.
    const long replaced = std::min(positionOf(replace), std::max(end - at, 0L));
    moveTail(at + replaced, at + size);
    m_position = at;
    writeBlock(data);
}

void CopyStream::removeBlock(unsigned long start, unsigned long length)
{
    const long at = positionOf(start);
    const long end = this->length();
    if (at < end)
        moveTail(std::min(at + positionOf(length), end), at);
}

void CopyStream::seek(long offset, Position from)
{
    const long base = from == Beginning ? 0 : from == Current ? m_position : length();
    m_position = std::max(0L, base + offset);
}

long CopyStream::length()
{
    return static_cast<long>(m_replacement.copySize());
}

void CopyStream::truncate(long length)
{
    m_replacement.resizeCopy(length);
}

void CopyStream::moveTail(long from, long to)
{
    constexpr long blockSize = 1L << 20;
    const long tail = length() - from;
    if (from == to || tail < 0)
        return;
    const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
    long done = 0;
    while (done < tail)
    {
        checkStop();
        const long part = std::min(blockSize, tail - done);
        // When the file grows, the blocks are moved from the last to the first, so that none is
        // overwritten before it was moved.
        const long offset = to > from ? tail - done - part : done;
        const auto size = static_cast<std::size_t>(part);
        if (m_replacement.readCopy(from + offset, block.get(), size) != part ||
            !m_replacement.writeCopy(to + offset, block.get(), size))
            return;
        done += part;
    }
    if (to < from)
        m_replacement.resizeCopy(to + tail);
}
} // namespace KVTagLib
