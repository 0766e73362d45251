#include "devices/known/Devices.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <algorithm>

namespace qo::host
{
namespace
{
/// The path that a folder has while no disk has a letter.
CString pathWithoutLetters(const std::string& folder)
{
    return DriveMap().fromSystem(folder);
}

/// A name is one component, also where it is typed before a folder.
std::string shownName(const UsbDeviceInfo& info)
{
    std::string name = toUtf8(info.m_name.IsEmpty() ? info.m_id : info.m_name);
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

/// False when the path is neither the folder nor below it; rest gets what follows it.
bool restBelow(const std::string& path, const std::string& folder, std::string& rest)
{
    if (folder.empty() || !path.starts_with(folder) ||
        (path.size() > folder.size() && path[folder.size()] != '/'))
        return false;
    rest = path.substr(folder.size());
    return true;
}

UsbDeviceInfoPtr recordOf(const DriveInfo& drive)
{
    const UsbDeviceInfoPtr info(new UsbDeviceInfo());
    info->m_id = deviceLine(drive.id);
    info->m_name = drive.label.IsEmpty() ? drive.name : drive.label;
    return info;
}
} // namespace

CQoUSBManagerBase& Device::manager() const
{
    return isPortable() ? static_cast<CQoUSBManagerBase&>(theQoWPDManager) : theQoUSBManager;
}

bool Device::hasFolders() const
{
    return !info->m_musicPath.IsEmpty() || !info->m_moviesPath.IsEmpty();
}

CStringArray Device::folders() const
{
    CArray<CQoCollPath> paths;
    manager().getFullPaths(info, !hasFolders(), paths);
    CStringArray texts;
    for (const CQoCollPath& path : paths)
        texts.Add(path.toString());
    return texts;
}

CQoPathsInfoMap Device::folderKinds() const
{
    CQoPathsInfoMap kinds;
    (void)manager().getDeviceQoPathsInfoMap(info->m_id, !hasFolders(), kinds);
    return kinds;
}

FarCollection Device::farCollection() const
{
    FarCollection far = {name, collection(), folders(), folderKinds(), {}};
    for (const CString& folder : far.folders)
    {
        if (!isPortable() && isPresent())
            far.diskFolders.Add(theQoUSBManager.getRealPath(CQoCollPath(folder)));
    }
    return far;
}

Devices::Devices(Scope scope)
{
    theQoUSBManager.init();
    if (scope == Scope::all || CQoSettings::getInt(CQoSettings::WpdDevicesCount) > 0)
        theQoWPDManager.init();
    else
        theQoWPDManager.loadDevicesFromCfg({});
    for (CQoUSBManagerBase* const manager : {static_cast<CQoUSBManagerBase*>(&theQoUSBManager),
                                             static_cast<CQoUSBManagerBase*>(&theQoWPDManager)})
    {
        UsbDeviceInfoArray infos;
        manager->getDevices(infos, true, false);
        manager->getDevices(infos, false, true);
        for (const UsbDeviceInfoPtr& info : infos)
            add(info);
    }
    addMounted();
    std::ranges::stable_sort(m_all, {}, &Device::name);
}

void Devices::add(const UsbDeviceInfoPtr& info)
{
    Device device{info, Device::State::away, shownName(*info), {}, {}};
    if (info->m_active)
        device.state = Device::State::present;
    if (info->m_active && !device.isPortable())
        device.place = absolutePath(toSystemPath(theQoUSBManager.getRealPath(device.root())));
    m_all.push_back(std::move(device));
}

/// Adds what the disks that are mounted say beyond the list of devices.
void Devices::addMounted()
{
    for (const MountedDrive& drive : drives().mounted())
    {
        const CString id = deviceLine(drive.info.id);
        const auto isIt = [&](const Device& each)
        { return !each.isPortable() && each.info->m_id == id; };
        const auto known = std::ranges::find_if(m_all, isIt);
        const bool inRoots = std::ranges::any_of(
            drive.points,
            [](const std::string& point)
            { return CQoPaths::isParentDirOrSubDirOfRootDirs(pathWithoutLetters(point)); });
        if (known != m_all.end() && known->isPresent() && known->place == drive.point)
            known->source = drive.source;
        else if (inRoots && known != m_all.end() && known->state == Device::State::away)
        {
            known->state = Device::State::inRoots;
            known->place = drive.point;
        }
        else if (inRoots || known != m_all.end())
        {
            const UsbDeviceInfoPtr info = recordOf(drive.info);
            m_all.push_back({info,
                             inRoots ? Device::State::inRoots : Device::State::twin,
                             shownName(*info),
                             drive.point,
                             drive.source});
        }
    }
}

Device Devices::need(const std::string& typed, std::string* rest) const
{
    const bool isPath = typed.starts_with('/');
    const std::string path = isPath ? absolutePath(typed) : typed;
    std::vector<const Device*> found;
    std::string after;
    for (const Device& device : m_all)
    {
        const std::string start = isPath ? path : rest ? typed.substr(0, typed.find('/')) : typed;
        std::string below;
        const bool isIt =
            isPath ? restBelow(path, device.place, below) && (rest || below.empty())
                   : CString(fromUtf8(start)).CompareNoCase(fromUtf8(device.name)) == 0 ||
                         start == toUtf8(device.info->m_id);
        if (!isIt)
            continue;
        // Of disks that are mounted in each other the inner one has the file.
        if (isPath && !found.empty() && found.front()->place.size() > device.place.size())
            continue;
        if (isPath)
            found.clear();
        found.push_back(&device);
        after = isPath ? below : typed.substr(start.size());
    }
    if (found.empty())
        throw HostError(ExitCode::notFound,
                        "there is no device \"" + typed + "\"; \"qo device ls\" lists them");
    if (found.size() > 1)
    {
        std::string ways;
        for (const Device* const each : found)
            ways += (ways.empty() ? "" : ", ") +
                    (each->place.empty() ? toUtf8(each->info->m_id) : each->place);
        throw HostError(ExitCode::usage,
                        "several devices are called " + found.front()->name +
                            ": name the folder or the id instead, one of " + ways);
    }
    if (rest)
        *rest = after;
    return *found.front();
}

Device Devices::needPresent(const std::string& typed, std::string* rest) const
{
    Device device = need(typed, rest);
    switch (device.state)
    {
    case Device::State::present:
        return device;
    case Device::State::away:
        throw HostError(ExitCode::away, "the device " + device.name + " is not connected");
    case Device::State::inRoots:
        throw HostError(ExitCode::usage,
                        device.place +
                            " is no device for qo: a root folder of the collection lies on that "
                            "disk or holds it, and \"qo roots\" names it");
    case Device::State::twin:
        break;
    }
    throw HostError(ExitCode::usage,
                    "the disk at " + device.place +
                        " cannot be told from another one that is connected and has the same id: "
                        "take out that one first");
}

std::vector<Device> Devices::adopted() const
{
    std::vector<Device> list;
    std::ranges::copy_if(m_all,
                         std::back_inserter(list),
                         [](const Device& each) { return each.info->m_configured; });
    return list;
}

bool hasAdoptedDevices()
{
    return CQoSettings::getInt(CQoSettings::UsbDevicesCount) > 0 ||
           CQoSettings::getInt(CQoSettings::WpdDevicesCount) > 0;
}

void refuseFolderOfDevice(const CString& folder)
{
    theQoUSBManager.loadDevices();
    for (const MountedDrive& drive : drives().mounted())
    {
        UsbDeviceInfoPtr device;
        const bool isDevice =
            theQoUSBManager.getDevice(deviceLine(drive.info.id), device) && device->m_configured;
        const CQoCollPath root(folder);
        const auto meets = [&](const std::string& point)
        {
            const CQoCollPath place(pathWithoutLetters(point));
            return root.isSubPathOrSame(place) || place.isSubPathOf(root);
        };
        if (isDevice && std::ranges::any_of(drive.points, meets))
            throw HostError(ExitCode::usage,
                            shownPath(folder) + " lies on the device " + shownName(*device) +
                                " or holds it; \"qo scan\" reads that by itself, and \"qo device "
                                "forget\" makes it a plain disk again");
    }
}
} // namespace qo::host
