#pragma once

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Logical/SortedLTList.h"
#include "QoColl/Tags/SimpleMusicTag.h"

namespace qo
{
/// The state of CLTManager beside its public lists: how to search and change each of them, and what
/// the last look-ups found, since neighbouring files usually share artist, album and genre.
struct LTLists
{
    SortedLTList<CLTAlbum> albums;
    SortedLTList<CLTArtist> artists;
    SortedLTList<CLTGenre> genres;
    LTListOf<CLTLyrics> lyrics;
    LTListOf<CLTPicture> pictures;
    SortedLTList<CLTTrack> tracks;

    boost::shared_ptr<CLTArtist> lastArtist;
    boost::shared_ptr<CLTGenre> lastGenre;
    boost::shared_ptr<CLTAlbum> lastAlbum;
    /// Whether a search would still find lastAlbum. False after an album was added, removed or
    /// linked to another artist: an album that has lost its artist compares differently, and then
    /// the result of a search depends on the whole list.
    bool isLastAlbumSure = false;

    /// How many tracks have no artist at present although they were put into the list by one. While
    /// there are any, tracks of one title are not ordered by artist, and a search must not rely on
    /// that.
    int strayTracks = 0;

    SimpleMusicTag tag; ///< of the last file, since the next shares most of it

    /// Corrects the count for tracks that are about to leave the list; the indexes are those of the
    /// list.
    void forgetStrays(const std::vector<int>& indexes) noexcept
    {
        for (const int index : indexes)
            strayTracks -= !static_cast<const CLTTrack&>(tracks.object(index)).getArtist();
    }
    void forgetLast() noexcept
    {
        lastArtist.reset();
        lastGenre.reset();
        lastAlbum.reset();
        isLastAlbumSure = false;
        tag = SimpleMusicTag();
    }
};
} // namespace qo
