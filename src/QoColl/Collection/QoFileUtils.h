#pragma once

#include "types/Export.h"
#include "types/String.h"

/// Removal of folders that files have left. Paths are folders of the disk in collection form, with
/// or without a backslash at the end. Never removed: output folders, root folders of either
/// collection, the home folder and the user's own folders, mount points, "/" and the data folder.
class QO_API CQoFileUtils
{
public:
    /// Whether dir is empty and may go; dir is then the topmost folder that would go with it.
    static bool getEmptyDirCheckParent(CString& dir);
    /// Removes dir if it is empty, with the folders above that hold nothing else; what comes to lie
    /// in one of them meanwhile stays. With force, dir and what is in it, but only below a root
    /// folder and if it holds none of the folders above. Whether dir is gone.
    static bool checkRemoveEmptyDir(const CString& dir, bool force);
    /// The same for the folder of a file, which dir tells afterwards.
    static bool checkRemoveEmptyDirOfFile(const CString& file, CString& dir, bool force);
    static bool checkRemoveEmptyDirOfFile(const CString& file, bool force);
};
