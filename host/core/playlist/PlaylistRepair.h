#pragma once

#include "core/playlist/Playlists.h"
#include "core/playlist/SongFinder.h"

#include <vector>

namespace qo::host
{
/// An entry that does not mean its song any more, or has no file.
struct EntryFinding
{
    std::size_t index = 0;
    StoredEntry entry; ///< as it was remembered
    EntryState state = EntryState::found;
    QoFileDbItemPtr now;           ///< what its row is now; null where there is none
    FoundBy by = FoundBy::nothing; ///< how a repair found its song
    QoFileDbItemPtr found;         ///< the song; null if it was not found
};

/// All such entries of a list, in their order, but for addresses in the web. Changes nothing. On
/// the kernel's thread.
std::vector<EntryFinding> checkEntries(const Playlist& list);

/// Looks for the songs of these entries. Those that are found mean their songs again; an entry
/// whose song is not found stays as one without a file, so that the list does not name another song
/// in its place. What is remembered of all others is brought up to date. The findings are those of
/// checkEntries(); entries become those that the list should get.
void repairEntries(const Playlist& list,
                   std::vector<EntryFinding>& findings,
                   std::vector<StoredEntry>& entries);
} // namespace qo::host
