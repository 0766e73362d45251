#pragma once

#include "types/String.h"
#include "types/StringArray.h"

/// A playlist of the user. The tracks are stored in one text with ";" between them, so none may
/// contain a ";".
struct QoPlaylistDbItem
{
    int id = 0; ///< row id, 0 while not stored
    CString name;
    CStringArray tracks;
};
