#pragma once

#include <cstdint>

namespace KVTagLib
{
/// The texts that are read from and written into tags.
enum class Field : std::uint8_t
{
    artist,
    album,
    title,
    genre,
    trackNumber,
    year,
    lyrics
};
constexpr int fieldCount = 7;

/// How much of a file's tags a reader takes.
enum class TagExtent : std::uint8_t
{
    /// No pictures. Long texts are cut, and of a field's values no more than 64 are taken, which
    /// bounds what one file can put into the database.
    texts,
    pictures,  ///< the same with the pictures that can be shown
    everything ///< all values, whole, and pictures of any kind and size
};
} // namespace KVTagLib
