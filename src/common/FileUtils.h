#pragma once

#include "types/Export.h"
#include "types/String.h"

/// Folder helpers. Failures are false with one line in the trace log.
class QO_API CFileUtils
{
public:
    /// Makes one folder, not its parents; true when it is there in the end.
    static bool AssureDirExists(const CString& path);

    /// Removes a folder with all it holds; links are removed, never followed, whether or not the
    /// path has a closing backslash. True when there is no such folder in the first place. Refuses
    /// the root of a drive, the home folder and mount points.
    static bool RemoveDirectoryRec(const CString& path);

    /// A folder that cannot be listed counts as empty; with `recursive` so does one that holds
    /// nothing but empty folders.
    static bool IsDirEmpty(const CString& path, bool recursive);

    /// Looked up once and kept.
    static CString GetWindowsTempDir();

    /// Ids of the temporary folders that the kernel asks for.
    enum ETempFolder : int
    {
        tempQorganizer = 15,
        tempLivePlay = 19
    };
    /// The configured temporary folder joined with the id's name, made with its parents; where that
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

/// Folder, name and extension in one path; a null or empty extension adds nothing.
QO_API CString combinePath(const CString& folder,
                           const CString& name,
                           const char16_t* extension = nullptr);

/// Makes a text usable as one file name: * ? \ ~ / < > | " : become "_" and & becomes "and".
QO_API void sanitizeName(CString& name);
} // namespace qo
