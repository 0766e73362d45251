#pragma once

#include "core/playlist/PlaylistText.h"
#include "core/playlist/Playlists.h"
#include "core/playlist/SongFinder.h"

#include <vector>

namespace qo::host
{
/// The songs of a list as entries of a playlist, one for each, in their order.
struct ImportedSongs
{
    std::vector<StoredEntry> entries;
    std::vector<std::size_t> withoutFile; ///< indices of those that were not found
    int byPathEnd = 0;                    ///< how many were found by that
    int byTags = 0;
};

/// Looks the songs up in the loaded collection; places are seen from the folder, an absolute system
/// path. With `match` also by tags. What is not found becomes an entry with its place and its
/// names. On the kernel's thread.
ImportedSongs
importSongs(const std::vector<ListedSong>& songs, const std::string& folder, bool match);
} // namespace qo::host
