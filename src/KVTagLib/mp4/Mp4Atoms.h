#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <optional>
#include <vector>

/// Atoms, of which MP4 files consist: a size, a name, and a content that may be atoms again.
namespace KVTagLib
{
constexpr unsigned atomHeaderBytes = 8;
/// A size of one says that the true one follows the name, as 64 bits.
constexpr unsigned longAtomHeaderBytes = 16;

struct Mp4Atom
{
    TagLib::ByteVector name;
    std::int64_t start = 0; ///< of the content
    std::int64_t end = 0;   ///< as far as its surroundings reach
    bool isWhole = true;    ///< false if it claims more than that
};

/// The atom at that position, of whose header these are the bytes (longAtomHeaderBytes, or fewer at
/// the end), in surroundings that end there. Nothing if its size cannot be right.
std::optional<Mp4Atom>
atomOf(const TagLib::ByteVector& header, std::int64_t at, std::int64_t endOfSurroundings);

/// An atom with its content, as in a list of tags.
struct Mp4Item
{
    TagLib::ByteVector name;
    TagLib::ByteVector content;

    TagLib::ByteVector render() const;
};

/// Splits bytes into atoms, and zeros at their end. Nothing if they are something else.
struct Mp4Row
{
    static std::optional<Mp4Row> of(const TagLib::ByteVector& bytes);
    TagLib::ByteVector render() const;
    Mp4Item* find(const char* name); ///< the first one; null if there is none

    std::vector<Mp4Item> items;
    TagLib::ByteVector rest;
};

/// Where an atom holds positions that count from the start of the file, and so change when bytes
/// are inserted: the tables of a track's chunks (stco, co64), the base of a fragment (tfhd) and the
/// index of fragments (tfra).
struct Mp4Positions
{
    static constexpr unsigned headBytes = 16;

    std::int64_t at = 0; ///< of the first one, in the content
    unsigned width = 0;  ///< of each: 4 or 8 bytes
    unsigned step = 0;   ///< from one to the next
    std::int64_t count = 0;
};
/// In an atom of that name, whose content is so long and begins with these bytes (headBytes, or
/// all); nothing in others.
std::optional<Mp4Positions>
positionsIn(const TagLib::ByteVector& name, const TagLib::ByteVector& head, std::int64_t size);

/// Whether atoms with such positions stand in an atom of that name, however deep.
bool holdsPositions(const TagLib::ByteVector& name);
} // namespace KVTagLib
