#pragma once

#include <taglib/tbytevector.h>

#include <optional>

namespace KVTagLib
{
/// The header of a page of an Ogg file. A table of the lengths of its segments follows it, then the
/// segments.
struct OggPageHeader
{
    static constexpr unsigned bytes = 27;

    /// Nothing if these bytes do not begin with one.
    static std::optional<OggPageHeader> of(const TagLib::ByteVector& head)
    {
        if (head.size() < bytes || !head.startsWith("OggS"))
            return {};
        return OggPageHeader{head[5],
                             head.toLongLong(6U, false),
                             head.toUInt(14U, false),
                             head.toUInt(18U, false),
                             static_cast<unsigned char>(head[26])};
    }

    char flags = 0;
    long long time = 0; ///< at the end of the page, in samples
    unsigned serial = 0;
    unsigned number = 0;
    unsigned segments = 0;

    bool isFirstOfStream() const { return (flags & 2) != 0; }
};
} // namespace KVTagLib
