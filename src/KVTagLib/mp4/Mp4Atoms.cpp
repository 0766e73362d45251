#include "KVTagLib/mp4/Mp4Atoms.h"

#include <algorithm>

using TagLib::ByteVector;

namespace KVTagLib
{
std::optional<Mp4Atom>
atomOf(const ByteVector& header, std::int64_t at, std::int64_t endOfSurroundings)
{
    if (header.size() < atomHeaderBytes)
        return {};
    const std::int64_t left = endOfSurroundings - at;
    std::int64_t headerBytes = atomHeaderBytes;
    std::int64_t length = header.toUInt(0U, true);
    if (length == 1 && header.size() >= longAtomHeaderBytes)
    {
        length = header.toLongLong(8U, true);
        headerBytes = longAtomHeaderBytes;
    }
    else if (length == 0)
        length = left; // the last atom of a file may say so
    if (length < headerBytes)
        return {};
    return Mp4Atom{header.mid(4, 4), at + headerBytes, at + std::min(length, left), length <= left};
}

ByteVector Mp4Item::render() const
{
    ByteVector bytes = ByteVector::fromUInt(content.size() + atomHeaderBytes);
    bytes.append(name);
    bytes.append(content);
    return bytes;
}

std::optional<Mp4Row> Mp4Row::of(const ByteVector& bytes)
{
    Mp4Row row;
    unsigned at = 0;
    while (at + atomHeaderBytes <= bytes.size())
    {
        const unsigned length = bytes.toUInt(at, true);
        if (length < atomHeaderBytes || length > bytes.size() - at)
            break;
        row.items.push_back(
            {bytes.mid(at + 4, 4), bytes.mid(at + atomHeaderBytes, length - atomHeaderBytes)});
        at += length;
    }
    row.rest = bytes.mid(at);
    const bool isSound = std::ranges::all_of(row.rest, [](char c) { return c == 0; });
    return isSound ? std::optional(row) : std::nullopt;
}

ByteVector Mp4Row::render() const
{
    ByteVector bytes;
    for (const Mp4Item& item : items)
        bytes.append(item.render());
    bytes.append(rest);
    return bytes;
}

Mp4Item* Mp4Row::find(const char* name)
{
    const auto found = std::ranges::find(items, ByteVector(name), &Mp4Item::name);
    return found == items.end() ? nullptr : &*found;
}

namespace
{
std::optional<Mp4Positions> layoutOf(const ByteVector& name, const ByteVector& head)
{
    if (name == "stco")
        return Mp4Positions{8, 4, 4};
    if (name == "co64")
        return Mp4Positions{8, 8, 8};
    constexpr unsigned hasBase = 1;
    if (name == "tfhd" && head.size() >= 4 && (head.toUInt(0U, true) & hasBase) != 0)
        return Mp4Positions{8, 8, 8, 1};
    if (name != "tfra" || head.size() < Mp4Positions::headBytes)
        return {};
    // Each entry is a time, a position and three numbers, whose widths two bits each tell.
    const unsigned width = head[0] == 1 ? 8 : 4;
    const unsigned widths = head.toUInt(8U, true);
    const unsigned numbers = 3 + (widths >> 4 & 3) + (widths >> 2 & 3) + (widths & 3);
    return Mp4Positions{Mp4Positions::headBytes + width, width, 2 * width + numbers};
}
} // namespace

std::optional<Mp4Positions>
positionsIn(const ByteVector& name, const ByteVector& head, std::int64_t size)
{
    std::optional<Mp4Positions> found = layoutOf(name, head);
    if (!found)
        return {};
    const std::int64_t room = size - found->at - found->width;
    const std::int64_t fitting = room < 0 ? 0 : room / found->step + 1;
    found->count = found->count == 0 ? fitting : std::min(found->count, fitting);
    return found;
}

bool holdsPositions(const ByteVector& name)
{
    constexpr const char* containers[] = {
        "moov", "trak", "mdia", "minf", "stbl", "moof", "traf", "mfra"};
    return std::ranges::any_of(containers, [&](const char* other) { return name == other; });
}
} // namespace KVTagLib
