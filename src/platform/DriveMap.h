#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <atomic>
#include <shared_mutex>
#include <string>
#include <vector>

namespace qo
{
/// How collection paths and the system's paths stand for each other. "C:" is the root of the
/// system. "D:" to "Z:" are mount points of removable devices that were made known, in the order
/// in which they appeared; a device keeps its letter for the life of the process. A network path
/// goes through the table of mounts. Every system path has exactly one collection form: a known
/// mount point that holds it wins over "C:", the longest first.
///
/// Names: a backslash, a control character, a byte that is not part of valid UTF-8 and each byte of
/// a character of the block U+F000 to U+F0FF stand in a collection path as U+F000 plus the byte, so
/// that any name survives the way there and back. Safe from any thread.
class QO_API DriveMap
{
public:
    static DriveMap& instance();

    /// The letter of the device, a new one when it was never seen; 0 when "Z:" is taken. Says
    /// where the device is mounted now.
    char16_t addDevice(const CString& deviceId, const std::string& mountPoint);
    /// The device is gone; its letter stays reserved and maps to nothing.
    void removeDevice(const CString& deviceId);
    /// "\\server\share" stands for the mount point; an empty mount point takes the entry out.
    void mapServer(const CString& serverAndShare, const std::string& mountPoint);

    /// Empty when the path maps to nothing: an unknown drive or server, a relative path, a NUL, a
    /// lone surrogate, a slash in a name.
    std::string toSystem(const CString& path) const;
    /// The path must be absolute; doubled and closing slashes are passed over.
    CString fromSystem(const std::string& path) const;

    /// One name, without the separators.
    static CString nameFromSystem(std::string_view name);

private:
    struct Mount
    {
        CString prefix; ///< "D:" or "\\server\share"
        CString deviceId;
        std::string point; ///< without closing slash; empty: away
    };

    void setPoint(const CString& prefix, const CString& deviceId, const std::string& point);

    mutable std::shared_mutex m_mutex;
    std::atomic<bool> m_hasMounts{false};
    std::vector<Mount> m_mounts;
};
} // namespace qo
