#pragma once

#include <QoKernel/Logical.h>

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qo::cli
{
/// Which tracks a command is about: those of the artist, album and genre that were typed. Names are
/// compared as the collection does, without regard to case. An empty name stands for tracks without
/// one.
struct MusicFilter
{
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<std::string> genre;

    bool isSet() const { return artist || album || genre; }
    /// Those with a file, in the collection's order. Throws HostError when a name was typed that no
    /// track has, or no track has all of them together. On the kernel's thread.
    std::vector<const CLTTrack*> tracks() const;
};

/// Gives the command the options --artist, --album and --genre.
void addFilter(CLI::App& command, MusicFilter& filter);

/// Without a name, or not there at all.
inline bool isUnnamed(const CLTObject* object)
{
    return !object || object->isUnknown();
}
/// "" for what is unnamed.
CString nameOf(const CLTObject* object);
/// The name on one line as people see it: "[unknown]" for what is unnamed.
std::string displayName(const CLTObject* object);

/// The sum of many tracks.
struct MusicSum
{
    int tracks = 0;
    std::int64_t duration = 0; ///< milliseconds
    int firstYear = 0;         ///< 0: no track has a year
    int lastYear = 0;

    void add(const CLTTrack& track);
    /// "1999", "1999-2004" or "".
    std::string years() const;
};
} // namespace qo::cli
