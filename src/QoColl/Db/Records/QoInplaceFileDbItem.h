#pragma once

#include "types/FileTime.h"
#include "types/String.h"

#include <cstdint>

/// A file that was converted in its own folder; the player knows it, the collection does not.
struct QoInplaceFileDbItem
{
    int id = 0; ///< row id, 0 while not stored
    CString path;
    FILETIME createTime;
    FILETIME modifTime;
    CString artist;
    CString album;
    CString title;
    CString genre;
    CString trackNumber;
    CString year;
    CString lyrics;
    CString picturePath;
    std::int64_t size = 0; ///< bytes
    int duration = 0;      ///< milliseconds
    CString velmoraId;
    CString params;
};
