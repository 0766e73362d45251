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
    lyrics,
    // Of the rest a writer changes the rating alone.
    albumArtist,
    disc,    ///< "1", or "1/2" when the file names a total
    comment, ///< the general one: not what programs keep among the comments for themselves
    rating,  ///< half stars: "1" to "10"
    playCount
};
constexpr int fieldCount = 12;

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
