#pragma once

#include "platform/Drives.h"
#include "platform/Forward.h"

#include <mutex>
#include <string>

namespace qo
{
/// IDrives over the table of mounts, sysfs and the data base of udev. Drives are the mounted block
/// devices on disks that are removable or connected by USB, but for floppies, optical media and any
/// disk that the system itself runs from. Of a file system that is mounted several times the first
/// mount counts, and of two disks with one id the first that came: with both under one letter, the
/// files of one would be taken for those of the other.
class PosixDrives final : public IDrives
{
public:
    /// Where the system tells about its disks; a test has its own.
    struct Places
    {
        std::string mounts = "/proc/self/mountinfo";
        std::string sys = "/sys";
        std::string udev = "/run/udev/data";
    };

    PosixDrives();
    PosixDrives(Places places, DriveMap& map);

    std::vector<DriveChange>
    update(const std::function<bool(const CString& folder)>& isLeftAlone) override;
    bool look(char16_t letter, DriveInfo& info) override;
    std::vector<MountedDrive> mounted() override;

private:
    struct Drive
    {
        DriveInfo info;
        std::string point;
        std::string source;
        std::string number; ///< of the block device, "8:17"
        std::string disk;   ///< its folder in sysfs
        char16_t letter = 0;
        std::vector<std::string> points = {}; ///< as in MountedDrive

        bool isSame(const Drive& other) const
        {
            return point == other.point && number == other.number && disk == other.disk &&
                   info.id == other.info.id;
        }
    };

    std::vector<Drive> mountedDrives() const;

    const Places m_places;
    DriveMap& m_map;
    std::mutex m_mutex; ///< guards m_drives
    std::vector<Drive> m_drives;
};
} // namespace qo
