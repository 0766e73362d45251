#pragma once

#include "types/Map.h"

/// What kind of content a root directory has.
struct CQoPathInfo
{
    enum EType : int
    {
        allIsMusic = 1, ///< audio and video files below count as music
        nothingIsMusic = 2,
        audioIsMusic = 3 ///< only audio files below count as music
    };
};

/// The kind by the path string of a root directory; the key is compared exactly, so it is the form
/// that CQoCollPath::toString gives.
class CQoPathsInfoMap : public CMap<CString, CQoPathInfo::EType>
{
public:
    /// audioIsMusic for a path without an entry.
    CQoPathInfo::EType getType(const CString& path) const
    {
        const CQoPathInfo::EType* const found = PLookup(path);
        return found ? *found : CQoPathInfo::audioIsMusic;
    }
};
