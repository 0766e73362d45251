#include "core/playlist/PlaylistText.h"
#include "core/playlist/SongPlace.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace
{
using qo::host::ListedSong;
using qo::host::PlaylistFormat;

/// Whether a list can hold the place: no controls, something but blanks, and of the length that
/// paths have.
bool isWritable(const ListedSong& song)
{
    constexpr std::size_t longest = 4096;
    const std::string& place = song.place;
    return place.size() <= longest && place.find_first_not_of(" \t") != std::string::npos &&
           std::none_of(place.begin(),
                        place.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}
} // namespace

/// Any bytes are a list that can be read or refused; the songs in it are written in each format and
/// read again, as many as they were.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<ListedSong> songs;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (!qo::host::parsePlaylist(bytes, songs).empty())
        return 0;
    for (const ListedSong& song : songs)
        (void)qo::host::meaningOf(song.place, "/music");
    songs.erase(std::remove_if(songs.begin(),
                               songs.end(),
                               [](const ListedSong& song) { return !isWritable(song); }),
                songs.end());
    for (const PlaylistFormat format :
         {PlaylistFormat::m3u, PlaylistFormat::pls, PlaylistFormat::xspf})
    {
        std::vector<ListedSong> again;
        const std::string text = qo::host::playlistText(format, u"name", songs);
        if (!qo::host::parsePlaylist(text, again).empty() || again.size() != songs.size())
            std::abort();
    }
    return 0;
}
