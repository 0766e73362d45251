#pragma once

#include "platform/Drives.h"

#include <filesystem>
#include <map>
#include <string>

namespace qo
{
/// One block device, mostly a partition, as sysfs and the data base of udev describe it.
class BlockDevice
{
public:
    /// By "major:minor" or, for file systems that hide that, by the source of the mount. isValid()
    /// says whether the system knows such a device.
    BlockDevice(const std::string& sys,
                const std::string& udev,
                const std::string& number,
                const std::string& source);

    bool isValid() const { return !m_disk.empty(); }
    /// The folder in sysfs of the disk that the device is a part of.
    const std::filesystem::path& disk() const { return m_disk; }
    DriveInfo info() const;

private:
    std::string valueOf(const char* key) const;
    CString nameOf() const;
    CString labelOf() const;

    std::filesystem::path m_disk;
    std::map<std::string, std::string> m_properties; ///< of the device, then of its disk
};
} // namespace qo
