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
/// What CLTManager keeps beside its lists: the means to search and change each, and what the last
/// look-ups found, since neighbouring files share artist, album and genre.
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
    /// Whether a search for it would still find it. Not once an album was added, removed or linked
    /// anew: while one has lost its artist, the result of a search depends on the whole list.
    bool isLastAlbumSure = false;

    /// How many tracks are not linked to the artist for which they were put into the list: while
    /// there are any, the order of a title's tracks does not go by their artists.
    int strayTracks = 0;

    SimpleMusicTag tag; ///< of the last file, since the next shares most of it

    /// Of tracks that are about to leave the list.
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
