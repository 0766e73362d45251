#pragma once

#include "types/FileTime.h"
#include "types/String.h"
#include "types/StringArray.h"

/// What is stored about a collection. The user's own has the id "", others the id of their device
/// or share.
struct CollInfoDbItem
{
    CString collId;
    int id = 0;
    FILETIME scanTime; ///< null before the first scan
    FILETIME modifiedTime;
    CStringArray rootDirs;
    CArray<int> rootDirTypes; ///< one CQoPathInfo::EType for each of rootDirs
    CString userName;
};
