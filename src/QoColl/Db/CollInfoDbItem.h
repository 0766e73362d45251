#pragma once

#include "common/types/FileTime.h"
#include "common/types/String.h"
#include "common/types/StringArray.h"

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
