#pragma once

#include "types/Export.h"
#include "types/String.h"

/// Removes folders that files have left. Paths are folders of the disk in collection form, with or
/// without a closing backslash. Never removed are output folders, root folders of both collections,
/// the home folder and the user's folders in it, mount points, "/" and the data folder (see
/// qo::ProtectedFolders).
///
///   Music/Ann/Gold/ is empty and Music a root folder: checkRemoveEmptyDir removes Gold, and Ann
///   too if it contains nothing else; Music stays.
class QO_API CQoFileUtils
{
public:
    /// Whether dir is empty and may be removed; dir becomes the topmost folder that would go with
    /// it.
    static bool getEmptyDirCheckParent(CString& dir);
    /// Removes dir if it is empty, together with the folders above it that contain nothing else. A
    /// file that arrives meanwhile stays. With force, removes dir with its content, but only below
    /// a root folder and if no protected folder is in it. True if dir is gone.
    static bool checkRemoveEmptyDir(const CString& dir, bool force);
    /// The same for the folder of a file; dir becomes that folder.
    static bool checkRemoveEmptyDirOfFile(const CString& file, CString& dir, bool force);
    static bool checkRemoveEmptyDirOfFile(const CString& file, bool force);
};
