#pragma once

#include "types/String.h"
#include "types/StringArray.h"

/// A user's playlist. The tracks are stored joined by ";": a track must not hold one.
struct QoPlaylistDbItem
{
    int id = 0; ///< row id, 0 while not stored
    CString name;
    CStringArray tracks;
};
