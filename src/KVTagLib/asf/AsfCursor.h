#pragma once

#include <taglib/tbytevector.h>

#include <algorithm>
#include <cstdint>

namespace KVTagLib
{
/// Reads the bytes of a Windows Media (ASF) header from front to back. Reading past the end gives
/// zero or nothing and sets ok() to false for good, so a caller may read several fields and check
/// once. Numbers are little-endian.
class AsfCursor
{
public:
    static constexpr unsigned guidBytes = 16;
    static constexpr unsigned objectHeader = guidBytes + 8;

    explicit AsfCursor(const TagLib::ByteVector& bytes) : m_bytes(bytes) {}

    bool ok() const { return m_ok; }
    bool atEnd() const { return m_at == m_bytes.size(); }
    TagLib::ByteVector rest() const { return m_bytes.mid(m_at); }

    TagLib::ByteVector take(unsigned long long length)
    {
        m_ok = m_ok && length <= left();
        return takePart(m_ok ? length : 0);
    }
    /// As many of these bytes as there are; if fewer, ok() is false afterwards.
    TagLib::ByteVector takeCut(unsigned long long length)
    {
        const auto part = m_ok ? std::min<unsigned long long>(length, left()) : 0;
        m_ok = m_ok && part == length;
        return takePart(part);
    }
    std::uint16_t word()
    {
        const TagLib::ByteVector taken = take(2);
        return m_ok ? taken.toUShort(0U, false) : std::uint16_t(0);
    }
    unsigned number()
    {
        const TagLib::ByteVector taken = take(4);
        return m_ok ? taken.toUInt(0U, false) : 0;
    }
    /// The content of an object whose size (8 bytes, header included) comes next; cut, with ok()
    /// false, when the bytes end before it.
    TagLib::ByteVector objectContent()
    {
        const TagLib::ByteVector taken = take(8);
        const auto size = static_cast<unsigned long long>(m_ok ? taken.toLongLong(0U, false) : 0);
        m_ok = m_ok && size >= objectHeader;
        return takeCut(m_ok ? size - objectHeader : 0);
    }

private:
    unsigned left() const { return m_bytes.size() - m_at; }
    TagLib::ByteVector takePart(unsigned long long length)
    {
        const auto size = static_cast<unsigned>(length);
        m_at += size;
        return m_bytes.mid(m_at - size, size);
    }

    TagLib::ByteVector m_bytes;
    unsigned m_at = 0;
    bool m_ok = true;
};
} // namespace KVTagLib
