#pragma once

#include "types/Export.h"
#include "types/String.h"

/// Helpers for folders. A failure gives false and one line in the trace log.
class QO_API CFileUtils
{
public:
    /// Creates one folder, without its parents; true if it exists afterwards.
    static bool AssureDirExists(const CString& path);

    /// Removes a folder with its content; links are removed and never followed, whether or not the
    /// path has a closing backslash. True if there is no such folder. Refuses the root of a drive,
    /// the home folder and mount points.
    static bool RemoveDirectoryRec(const CString& path);

    /// A folder that cannot be listed counts as empty; with recursive also one that contains only
    /// empty folders.
    static bool IsDirEmpty(const CString& path, bool recursive);

    /// The system's folder for temporary files; determined once.
    static CString GetWindowsTempDir();

    /// Ids of temporary folders.
    enum ETempFolder : int
    {
        tempQorganizer = 15,
        tempLivePlay = 19
    };
    /// The configured temporary folder and the name of the id, created with its parents. If that
    /// fails, or the id is unknown, the configured folder itself.
    static CString GetTempDir(int id);

    static CString GetLastErrorText(int error);
    static void logFolderNotMade(const CString& path);
};

namespace qo
{
/// The path with a closing backslash; an empty one stays empty.
QO_API CString addBackslash(const CString& path);
QO_API CString removeBackslash(const CString& path);

/// Joins folder, name and extension; a null or empty extension adds nothing.
QO_API CString combinePath(const CString& folder,
                           const CString& name,
                           const char16_t* extension = nullptr);

/// Makes a text usable as a file name: * ? \ ~ / < > | " : become "_", and & becomes "and".
QO_API void sanitizeName(CString& name);

/// A path that no other call gives, in the temporary folder of the id (see CFileUtils), for what
/// comes under any foreign name: its last part is that name, as far as it is safe, with its
/// extension.
QO_API CString uniqueTempPath(int folderId, const CString& foreignName);
} // namespace qo
