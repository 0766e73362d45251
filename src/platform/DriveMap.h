#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <atomic>
#include <shared_mutex>
#include <string>
#include <vector>

namespace qo
{
/// Converts between collection paths, which have the form of drive paths, and paths of the system.
/// "C:" is the root of the system. "D:" to "Z:" are mount points of removable devices that were
/// made known, in the order of their appearance; a device keeps its letter as long as the process
/// runs. Network paths go through a table. Every system path has exactly one collection form: a
/// known mount point that contains it goes before "C:", and the longest one before others.
///
///   /home/ann/Music/a.mp3       C:\home\ann\Music\a.mp3
///   /media/stick/a.mp3          D:\a.mp3                after addDevice(id, "/media/stick")
///   /mnt/nas/a.mp3              \\nas\music\a.mp3       after mapServer of these two
///   /home/ann/a\b.mp3           C:\home\ann\aU+F05Cb.mp3
///
/// Names: a backslash, a control character, a byte that is not valid UTF-8, and each byte of a
/// character from U+F000 to U+F0FF become U+F000 plus the byte, so that every name survives the way
/// there and back. May be called from any thread.
class QO_API DriveMap
{
public:
    static DriveMap& instance();

    /// Tells that a device is mounted at that point. Returns its letter, a new one for a device
    /// that was never seen; 0 when all letters are in use.
    char16_t addDevice(const CString& deviceId, const std::string& mountPoint);
    /// Tells that a device is gone. Its letter stays reserved and maps to nothing.
    void removeDevice(const CString& deviceId);
    /// Maps "\\server\share" to a mount point; an empty mount point removes the entry.
    void mapServer(const CString& serverAndShare, const std::string& mountPoint);

    /// The system path; "" for a path that maps to nothing: an unknown drive or server, a relative
    /// path, a NUL, a lone surrogate, a slash in a name.
    std::string toSystem(const CString& path) const;
    /// The collection form of an absolute path; doubled and closing slashes are ignored.
    CString fromSystem(const std::string& path) const;

    /// The collection form of one name without separators.
    static CString nameFromSystem(std::string_view name);

private:
    struct Mount
    {
        CString prefix; ///< "D:" or "\\server\share"
        CString deviceId;
        std::string point; ///< without a closing slash; "" while it is away
    };

    void setPoint(const CString& prefix, const CString& deviceId, const std::string& point);

    mutable std::shared_mutex m_mutex;
    std::atomic<bool> m_hasMounts{false};
    std::vector<Mount> m_mounts;
};
} // namespace qo
