#pragma once

#include "core/playlist/PlaylistText.h"
#include "core/playlist/Playlists.h"
#include "core/playlist/SongPlace.h"

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// The entries as songs of a list in that folder. One whose song is not found keeps the place that
/// is remembered of it; missing gets its index. On the kernel's thread.
std::vector<ListedSong> exportedSongs(const std::vector<StoredEntry>& entries,
                                      PlaceStyle style,
                                      const std::string& folder,
                                      std::vector<std::size_t>& missing);

/// A song of a list and the copy that it gets.
struct SongCopy
{
    std::size_t index = 0; ///< of its entry
    ListedSong song;       ///< its place is the name of the copy
    std::string from;      ///< absolute system paths
    std::string source;    ///< what is copied: from, with its links followed
    std::string to;
    std::int64_t size = 0;    ///< bytes
    bool isThere = false;     ///< the folder has that copy already
    std::string failure = {}; ///< why it could not be made; "" if it could
};

/// Copies of the songs that are found, in a folder that may have to be made. Their names begin with
/// their positions and can be held by any file system: "01 Kino - Zvezda.mp3". A name that another
/// file has gets a number at its end; a file with the same content is that copy. Reads the files
/// for that, and changes nothing. On the kernel's thread.
std::vector<SongCopy> planCopies(const std::vector<StoredEntry>& entries,
                                 const std::string& folder);

/// Throws HostError when nothing can be written there, or there is no room for all copies.
void checkCopies(const std::vector<SongCopy>& copies, const std::string& folder);

/// Makes the copies, each read back and compared, and the folder. The ones that fail say why.
/// Throws HostError when stop says so, which is asked again and again.
void makeCopies(std::vector<SongCopy>& copies,
                const std::string& folder,
                const std::function<bool()>& stop);

/// Writes a list where it is new or takes the place of another, whose rights and owner stay. All of
/// it is on the disk when the call returns. Throws HostError.
void writePlaylistFile(const std::string& path, const std::string& text);

/// The name as one of a file on any file system, with that ending: "AC/DC" and ".m3u8" give
/// "AC_DC.m3u8".
std::string portableName(const CString& name, const std::string& ending);
} // namespace qo::host
