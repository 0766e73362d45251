#include "platform/posix/PosixDrives.h"

#include "platform/DriveMap.h"
#include "platform/FileSystem.h"
#include "platform/posix/BlockDevice.h"
#include "platform/posix/MountTable.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace qo
{
namespace
{
/// The letter "C" is the system's own disk.
constexpr char16_t systemLetter = u'C';

bool isDriveOfUser(const DriveInfo& info)
{
    return info.kind != DriveInfo::Kind::optical && info.medium != DriveInfo::Medium::floppy &&
           (info.bus == DriveInfo::Bus::usb || info.kind == DriveInfo::Kind::removable) &&
           !info.id.IsEmpty();
}

/// Where a running system has its own files.
bool isOfSystem(const std::string& point)
{
    return point == "/" || point == "/boot" || point == "/boot/efi" || point == "/usr";
}

/// A bind mount shows a part of what is mounted elsewhere.
bool isWhole(const MountEntry& mount)
{
    return mount.root == "/" || mount.type == "btrfs";
}
} // namespace

IDrives::~IDrives() = default;

PosixDrives::PosixDrives() : PosixDrives(Places(), DriveMap::instance()) {}

PosixDrives::PosixDrives(Places places, DriveMap& map) : m_places(std::move(places)), m_map(map) {}

/// One entry for each id, by the order of mounts; no letters yet.
std::vector<PosixDrives::Drive> PosixDrives::mountedDrives() const
{
    std::vector<Drive> drives;
    std::set<std::string> systemDisks;
    std::map<std::pair<std::string, CString>, std::vector<std::string>> points;
    for (const MountEntry& mount : readMounts(m_places.mounts))
    {
        const BlockDevice device(m_places.sys, m_places.udev, mount.device, mount.source);
        if (!device.isValid())
            continue;
        if (isOfSystem(mount.point))
            systemDisks.insert(device.disk().string());
        Drive drive{
            device.info(), mount.point, mount.source, mount.device, device.disk().string(), 0};
        points[{drive.disk, drive.info.id}].push_back(mount.point);
        if (isWhole(mount) && isDriveOfUser(drive.info))
            drives.push_back(std::move(drive));
    }
    for (Drive& drive : drives)
        drive.points = points[{drive.disk, drive.info.id}];
    std::erase_if(drives, [&](const Drive& drive) { return systemDisks.contains(drive.disk); });
    return drives;
}

std::vector<DriveChange>
PosixDrives::update(const std::function<bool(const CString& folder)>& isLeftAlone)
{
    std::vector<Drive> mounted = mountedDrives();
    // The answers of others come before the lock. They are about the form that a disk without a
    // letter has, also while it has one.
    std::set<std::string> leftAlone;
    const auto isOfOthers = [&](const std::string& point)
    { return isLeftAlone && isLeftAlone(DriveMap().fromSystem(point)); };
    for (const Drive& drive : mounted)
    {
        if (std::ranges::any_of(drive.points, isOfOthers))
            leftAlone.insert(drive.point);
    }
    const std::lock_guard lock(m_mutex);
    // What was there before comes first, so that it keeps its id against a newcomer with the same.
    const auto stays = [&](const Drive& drive)
    {
        return std::any_of(
            m_drives.begin(), m_drives.end(), [&](const Drive& old) { return old.isSame(drive); });
    };
    std::stable_partition(mounted.begin(), mounted.end(), stays);
    std::vector<DriveChange> changes;
    std::vector<Drive> now;
    for (Drive& drive : mounted)
    {
        const bool hasTwin = std::any_of(
            now.begin(), now.end(), [&](const Drive& d) { return d.info.id == drive.info.id; });
        const bool isOld = stays(drive);
        if (hasTwin || leftAlone.contains(drive.point))
            continue;
        drive.letter = m_map.addDevice(drive.info.id, drive.point);
        if (drive.letter == 0)
            continue;
        if (!isOld)
            changes.push_back({drive.letter, true});
        now.push_back(std::move(drive));
    }
    for (const Drive& old : m_drives)
    {
        if (std::any_of(
                now.begin(), now.end(), [&](const Drive& d) { return d.letter == old.letter; }))
            continue;
        m_map.removeDevice(old.info.id);
        changes.insert(changes.begin(), {old.letter, false});
    }
    m_drives = std::move(now);
    return changes;
}

std::vector<MountedDrive> PosixDrives::mounted()
{
    std::vector<MountedDrive> list;
    for (Drive& drive : mountedDrives())
        list.push_back({std::move(drive.info),
                        std::move(drive.point),
                        std::move(drive.source),
                        std::move(drive.points)});
    return list;
}

bool PosixDrives::look(char16_t letter, DriveInfo& info)
{
    info = {};
    if (letter == systemLetter)
    {
        info.kind = DriveInfo::Kind::fixed;
        info.medium = DriveInfo::Medium::other;
        return true;
    }
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_drives.begin(),
                                    m_drives.end(),
                                    [&](const Drive& drive) { return drive.letter == letter; });
    if (found == m_drives.end())
        return false;
    // Where it was mounted an empty folder may stand by now. A stick that was pulled out stays
    // mounted until somebody unmounts it, but the system knows no such device any more.
    const auto isStill = [&](const MountEntry& mount)
    {
        if (mount.point != found->point || mount.device != found->number)
            return false;
        const BlockDevice device(m_places.sys, m_places.udev, mount.device, mount.source);
        return device.isValid() && device.info().id == found->info.id;
    };
    const std::vector<MountEntry> mounts = readMounts(m_places.mounts);
    const bool isThere = std::any_of(mounts.begin(), mounts.end(), isStill);
    if (isThere)
        info = found->info;
    return isThere;
}
} // namespace qo
