#pragma once

/// The kinds of view items, as bits. A group item stands for all unknown objects of its kind and
/// has no link.
class CUVViewItemType
{
public:
    enum EType : int
    {
        Genre = 1,
        OtherGenres = 2, ///< the group of the unknown ones
        Artist = 4,
        OtherArtists = 8,
        Album = 16,
        OtherAlbums = 32,
        Dir = 64,
        File = 128, ///< any file of a collection, texts too
        Text = 256, ///< a line of text that a host adds
        InplaceFile = 512,
        SearchResult = 1024,
        OfflineFile = 2048
    };
};
