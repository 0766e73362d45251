#pragma once

#include "types/String.h"

/// Shapes that the kernel shares with whoever organizes files by rules.
struct IQorganizer
{
    /// What a reorganize rule matches on. A tag fills the six texts of a track; the rest is the
    /// host's.
    struct TagInfo
    {
        CString artist;
        CString album;
        CString title;
        CString albumArtist;
        CString trackNumber;
        CString year;
        CString genre;
        bool isJingle = false;
    };
};
