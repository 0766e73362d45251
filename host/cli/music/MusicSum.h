#pragma once

#include <QoKernel/Logical.h>

#include <string>

namespace qo::cli
{
/// Without a name, or not there at all.
inline bool isUnnamed(const CLTObject* object)
{
    return !object || object->isUnknown();
}
/// "" for what is unnamed.
CString nameOf(const CLTObject* object);
/// The name on one line as people see it: "[unknown]" for what is unnamed.
std::string displayName(const CLTObject* object);

/// The sum of many files of tracks.
struct MusicSum
{
    int tracks = 0;
    std::int64_t duration = 0; ///< milliseconds
    int firstYear = 0;         ///< 0: no track has a year
    int lastYear = 0;

    void add(const CLTTrack& track, const CHDMusicFile& file);
    /// "1999", "1999-2004" or "".
    std::string years() const;
};
} // namespace qo::cli
