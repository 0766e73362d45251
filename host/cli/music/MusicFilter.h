#pragma once

#include <QoKernel/Logical.h>

#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
/// Which tracks a command is about: those of the artist, album and genre that were typed. Names are
/// the same when they are so to the collection, that is, but for upper and lower case. An empty one
/// stands for the tracks that have none.
struct MusicFilter
{
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<std::string> genre;

    /// Those with a file, in the collection's order. Throws HostError when a name was typed that no
    /// track has, or no track has all of them together. On the kernel's thread.
    std::vector<const CLTTrack*> tracks() const;
};

/// Without a name, or not there at all.
inline bool isUnnamed(const CLTObject* object)
{
    return !object || object->isUnknown();
}
/// "" for what is unnamed.
CString nameOf(const CLTObject* object);
/// The name on one line as people see it: "[unknown]" for what is unnamed.
std::string displayName(const CLTObject* object);

/// What many tracks come to.
struct MusicSum
{
    int tracks = 0;
    std::int64_t duration = 0; ///< milliseconds
    int firstYear = 0;         ///< 0: no track tells
    int lastYear = 0;

    void add(const CLTTrack& track);
    /// "1999", "1999-2004" or "".
    std::string years() const;
};
} // namespace qo::cli
