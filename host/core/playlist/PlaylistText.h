#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// A song as a playlist file names it.
struct ListedSong
{
    std::string place; ///< the bytes of a path or an address; "" for a song without one
    CString title;
    CString artist;
    CString album;
    int duration = 0; ///< milliseconds; 0 if it is not known
};

enum class PlaylistFormat
{
    m3u,
    pls,
    xspf
};

/// By the ending of the name; M3U for "m3u", "m3u8" and any other.
PlaylistFormat playlistFormatOf(const std::string& path);

// Limits of what is read; longer lists are refused.
constexpr std::size_t largestPlaylist = 64 << 20; ///< bytes
constexpr std::size_t longestPlaylistLine = 32 << 10;
constexpr std::size_t mostListedSongs = 500000;

/// Reads a list of any of the formats, whatever it is called. Texts are UTF-8 or UTF-16, a line
/// that is neither is Latin-1. Returns what is wrong with the bytes, and "" if nothing is.
///
///   #EXTINF:215,Kino - Zvezda       title "Zvezda", artist "Kino", 215000 ms
///   Kino/01.mp3                     place "Kino/01.mp3"
std::string parsePlaylist(std::string_view bytes, std::vector<ListedSong>& songs);

/// The songs of a file. Throws HostError with the path and the cause.
std::vector<ListedSong> readPlaylistFile(const std::string& path);

/// The list as a text of the format. Places are written as they are, or as addresses in XSPF; none
/// may have a line break.
std::string
playlistText(PlaylistFormat format, const CString& name, const std::vector<ListedSong>& songs);
} // namespace qo::host
