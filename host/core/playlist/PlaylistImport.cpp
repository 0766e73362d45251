#include "core/playlist/PlaylistImport.h"

#include "core/playlist/SongPlace.h"

namespace qo::host
{
namespace
{
/// What is kept of a song that was not found: a path of this system, or else the place as it is.
StoredEntry entryWithoutFile(const ListedSong& song, const std::string& folder)
{
    StoredEntry entry;
    const SongPlace place = meaningOf(song.place, folder);
    if (!place.paths.empty())
        entry.path = fromSystemPath(place.paths.front());
    else
        entry.text =
            isUtf8(song.place) ? fromUtf8(song.place) : fromCharset(song.place, "windows-1252");
    entry.title = song.title;
    entry.artist = song.artist;
    entry.duration = song.duration;
    return entry;
}
} // namespace

ImportedSongs
importSongs(const std::vector<ListedSong>& songs, const std::string& folder, bool match)
{
    ImportedSongs imported;
    imported.entries.reserve(songs.size());
    SongFinder finder;
    for (const ListedSong& song : songs)
    {
        FoundBy by = FoundBy::nothing;
        const QoFileDbItemPtr item = findListed(finder, song, folder, match, by);
        if (!item)
            imported.withoutFile.push_back(imported.entries.size());
        imported.byPathEnd += by == FoundBy::pathEnd ? 1 : 0;
        imported.byTags += by == FoundBy::tags ? 1 : 0;
        imported.entries.push_back(item ? entryOf(*item) : entryWithoutFile(song, folder));
    }
    return imported;
}
} // namespace qo::host
