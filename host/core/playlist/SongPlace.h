#pragma once

#include <string>
#include <vector>

/// Places of songs as playlist files write them. Nothing here looks at the disk.
namespace qo::host
{
/// Whether a place is an address: "file:..." or "http://...".
bool isAddress(const std::string& place);

/// What a place may mean.
struct SongPlace
{
    /// Absolute system paths, the likeliest first; none for a place that is elsewhere.
    std::vector<std::string> paths;
    /// A path of another system, with slashes: "C:/Music/Kino/01.mp3" for "C:\Music\Kino\01.mp3",
    /// "//nas/Music/01.mp3" for "\\nas\Music\01.mp3"; "" for none.
    std::string foreign;
};

/// Relative places are seen from the folder. Bytes that are no UTF-8 may be those of a name here,
/// or Latin-1.
SongPlace meaningOf(const std::string& place, const std::string& folder);

/// How the place of a file is written into a list.
enum class PlaceStyle
{
    relative, ///< to the folder of the list
    absolute,
    address ///< "file:///Music/a%20b.mp3"
};

/// The place of an absolute system path, for a list in the folder. A path with a line break, which
/// no list can hold, becomes an address.
std::string placeFor(const std::string& path, PlaceStyle style, const std::string& folder);

/// A place as a URI reference: paths are percent-encoded, and so is what no address can have.
std::string addressOf(const std::string& place);
} // namespace qo::host
