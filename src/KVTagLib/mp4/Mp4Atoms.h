#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <optional>

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
} // namespace KVTagLib
