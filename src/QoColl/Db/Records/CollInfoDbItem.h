#pragma once

#include "types/FileTime.h"
#include "types/String.h"
#include "types/StringArray.h"

/// What is stored of one collection: the user's own has the empty id, others that of their device
/// or share.
struct CollInfoDbItem
{
    CString collId;
    int id = 0;
    FILETIME scanTime; ///< null while never scanned
    FILETIME modifiedTime;
    CStringArray rootDirs;
    CArray<int> rootDirTypes; ///< one for each of rootDirs
    CString userName;
};
