#pragma once

#include "types/String.h"

/// Structures that the kernel shares with the host's part that organizes files by rules.
struct IQorganizer
{
    /// What a reorganize rule is matched with. A tag fills the six texts of a track; albumArtist
    /// and isJingle are the host's.
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
