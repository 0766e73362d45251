#pragma once

#include "Logical/Forward.h"
#include "Physical/Forward.h"
#include "types/Map.h"
#include "types/String.h"

#include <boost/shared_ptr.hpp>

namespace qo
{
/// What a file is counted under in a subset: its directory, its logical objects, null where it has
/// none, and its collection. A subset keeps this for each file, since the links of a file that has
/// left its collection may have changed when it leaves the subset. Whoever holds one of these must
/// see to it that the objects stay alive.
struct FileAssocs
{
    const CHDDirectory* dir = nullptr;
    const CLTGenre* genre = nullptr;
    const CLTArtist* artist = nullptr;
    const CLTAlbum* album = nullptr;
    bool isForeign = false;

    bool operator==(const FileAssocs&) const = default;
};

/// A file to be added to a subset. The handle must stay where it is meanwhile.
struct SubsetFile
{
    const boost::shared_ptr<CHDFile>* file;
    FileAssocs assocs;
};

/// Stands for all unknown objects of a class together, where files are counted.
template <class X>
const X* unknownGroup()
{
    static const X group{CString()};
    return &group;
}

/// The object itself, or the group of the unknown ones if it is one of them; null stays null.
template <class X>
const X* groupOf(const X* object)
{
    return object && object->isUnknown() ? unknownGroup<X>() : object;
}

// Keys of combined counts; null for "any".
struct GenreArtistInfo
{
    const CLTGenre* genre;
    const CLTArtist* artist;
    bool operator==(const GenreArtistInfo&) const = default;
};
struct GenreArtistAlbumInfo
{
    const CLTGenre* genre;
    const CLTArtist* artist;
    const CLTAlbum* album;
    bool operator==(const GenreArtistAlbumInfo&) const = default;
};
struct ArtistAlbumInfo
{
    const CLTArtist* artist;
    const CLTAlbum* album;
    bool operator==(const ArtistAlbumInfo&) const = default;
};

/// Addresses of objects differ in their middle bits mostly.
inline std::size_t hashPointers(const void* a, const void* b = nullptr, const void* c = nullptr)
{
    constexpr std::size_t odd = 0x9E3779B97F4A7C15U;
    std::size_t hash = reinterpret_cast<std::size_t>(a) * odd;
    hash = (hash ^ hash >> 29 ^ reinterpret_cast<std::size_t>(b)) * odd;
    hash = (hash ^ hash >> 29 ^ reinterpret_cast<std::size_t>(c)) * odd;
    return hash ^ hash >> 32;
}
template <>
struct MapKey<GenreArtistInfo>
{
    static std::size_t hash(const GenreArtistInfo& key) noexcept
    {
        return hashPointers(key.genre, key.artist);
    }
};
template <>
struct MapKey<GenreArtistAlbumInfo>
{
    static std::size_t hash(const GenreArtistAlbumInfo& key) noexcept
    {
        return hashPointers(key.genre, key.artist, key.album);
    }
};
template <>
struct MapKey<ArtistAlbumInfo>
{
    static std::size_t hash(const ArtistAlbumInfo& key) noexcept
    {
        return hashPointers(key.artist, key.album);
    }
};
} // namespace qo
