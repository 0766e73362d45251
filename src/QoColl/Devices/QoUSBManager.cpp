#include "QoColl/Devices/QoUSBManager.h"

#include "QoColl/Devices/USBUtils.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/Paths.h"
#include "common/Settings.h"
#include "platform/Drives.h"
#include "platform/FileSystem.h"
#include "platform/FolderNames.h"
#include "platform/Platform.h"

CQoUSBManager theQoUSBManager;

namespace
{
namespace level = qo::level;

constexpr char16_t firstLetter = u'C';
constexpr char16_t lastLetter = u'Z';
constexpr int lettersInMask = 26;
constexpr const char16_t* usbDeviceKey = u"UsbDevice%d";
/// How many levels of folders are looked at for those of music and movies.
constexpr int levelsForNames = 2;

bool isAccepted(const qo::DriveInfo& drive)
{
    using Drive = qo::DriveInfo;
    return (drive.kind == Drive::Kind::removable && drive.medium == Drive::Medium::removable) ||
           (drive.kind == Drive::Kind::fixed && drive.bus == Drive::Bus::usb);
}

/// A disk that holds root folders of the own collection, or lies in one, stays where it is: with a
/// letter its files would get other paths than their records have.
std::vector<qo::DriveChange> updateDrives()
{
    return qo::drives().update([](const CString& folder)
                               { return CQoPaths::isParentDirOrSubDirOfRootDirs(folder); });
}

/// Adds the folders below one, written from the root of the device.
void addSubDirs(const CString& root, const CString& folder, int levels, CStringArray& dirs)
{
    const CString real = qo::combinePath(root, folder);
    std::vector<qo::DirEntry> entries;
    (void)qo::fileSystem().list(real, entries);
    CStringArray found;
    for (const qo::DirEntry& entry : entries)
    {
        if (entry.info.kind == qo::FileKind::directory && !entry.info.isLink &&
            !qo::isPassedOver({}, qo::addBackslash(real), entry.name))
            found.Add(folder.IsEmpty() ? entry.name : folder + u"\\" + entry.name);
    }
    dirs.Append(found);
    for (const CString& dir : found)
    {
        if (levels > 1)
            addSubDirs(root, dir, levels - 1, dirs);
    }
}

const CString& nameOrNone(const UsbDeviceInfoPtr& device)
{
    static const CString none;
    return device ? device->m_name : none;
}
} // namespace

CQoUSBManager::CQoUSBManager() : CQoUSBManagerBase(UsbDeviceInfo::usbDevice) {}

void CQoUSBManager::init()
{
    qo::log(level::flow, u"CQoUSBManager::init");
    loadDevices();
    refreshDevices();
}

void CQoUSBManager::loadDevices()
{
    CStringArray records;
    CQoSettings::getList(CQoSettings::UsbDevicesCount, usbDeviceKey, records);
    loadDevicesFromCfg(records);
}

void CQoUSBManager::saveDevices()
{
    CStringArray records;
    saveDevicesToCfg(records);
    CQoSettings::setList(CQoSettings::UsbDevicesCount, usbDeviceKey, records);
}

void CQoUSBManager::refreshDevices()
{
    qo::log(level::flow, u"CQoUSBManager::refreshDevices");
    (void)updateDrives();
    for (char16_t letter = firstLetter; letter <= lastLetter; ++letter)
    {
        UsbDeviceInfoPtr device;
        (void)refreshDevice(letter, device);
    }
}

void CQoUSBManager::checkDrives()
{
    for (const qo::DriveChange& change : updateDrives())
    {
        qo::VolumeEvent event;
        event.unitMask = 1U << (change.letter - u'A');
        deviceChanged(change.hasCome ? qo::VolumeEvent::arrival : qo::VolumeEvent::removal, &event);
    }
}

void CQoUSBManager::deviceChanged(int event, const qo::VolumeEvent* broadcast)
{
    if (!broadcast || broadcast->deviceType != qo::VolumeEvent::volumeType)
        return;
    int bit = 0;
    while (bit < lettersInMask && (broadcast->unitMask >> bit & 1U) == 0)
        ++bit;
    if (bit == lettersInMask)
        return;
    const auto letter = static_cast<char16_t>(u'A' + bit);
    UsbDeviceInfoPtr device;
    (void)getDeviceByLetter(letter, device);
    const bool isThere = refreshDevice(letter, device);
    if (event == qo::VolumeEvent::arrival)
    {
        qo::log(level::flow,
                u"CQoUSBManager::deviceChanged : device %c(%s) inserted",
                letter,
                nameOrNone(device));
        if (isThere)
            notifyUsbDeviceChanged(device, true);
        else
            qo::log(level::flow,
                    u"CQoUSBManager::deviceChanged : device %c not accepted for qo usage",
                    letter);
    }
    else if (event == qo::VolumeEvent::removal)
    {
        qo::log(level::flow,
                u"CQoUSBManager::deviceChanged : device %c(%s) removed",
                letter,
                nameOrNone(device));
        if (device)
            notifyUsbDeviceChanged(device, false);
    }
}

CString CQoUSBManager::getRealPath(const CQoCollPath& path) const
{
    UsbDeviceInfoPtr device;
    if (!path.isUSB() || !getDevice(path.getDevice(), device) || device->m_driveLetter == 0)
        return {};
    return CQoCollPath::fromDriveLetter(device->m_driveLetter, path.getComponents()).toString();
}

CString CQoUSBManager::getRealPath(const CString& id, const CString& path) const
{
    return getRealPath(getFullPath(id, path));
}

bool CQoUSBManager::isConnected(const CQoCollPath& path) const
{
    UsbDeviceInfoPtr device;
    qo::DriveInfo drive;
    return path.isUSB() && getDevice(path.getDevice(), device) && device->m_driveLetter != 0 &&
           qo::drives().look(device->m_driveLetter, drive) &&
           qo::deviceLine(drive.id) == device->m_id;
}

int CQoUSBManager::getDeviceByLetter(char16_t letter) const
{
    for (int i = 0; i < m_devices.GetSize(); ++i)
    {
        if (letter != 0 && m_devices[i]->m_driveLetter == letter)
            return i;
    }
    return -1;
}

bool CQoUSBManager::getDeviceByLetter(char16_t letter, UsbDeviceInfoPtr& device) const
{
    const int index = getDeviceByLetter(letter);
    if (index >= 0)
        device = m_devices[index];
    return index >= 0;
}

void CQoUSBManager::updateDevice(const CString& id, const CString& name, char16_t letter)
{
    const UsbDeviceInfoPtr device = findOrAddDevice(id, name);
    device->m_driveLetter = letter;
    device->m_active = letter != 0;
    device->m_name = name;
}

void CQoUSBManager::forgetLetter(char16_t letter)
{
    UsbDeviceInfoPtr device;
    if (!getDeviceByLetter(letter, device))
        return;
    device->m_active = false;
    device->m_driveLetter = 0;
}

bool CQoUSBManager::refreshDevice(char16_t letter, UsbDeviceInfoPtr& device)
{
    qo::log(level::flow, u"CQoUSBManager::refreshDevice %c", letter);
    forgetLetter(letter);
    qo::DriveInfo drive;
    if (!qo::drives().look(letter, drive) || !isAccepted(drive))
        return false;
    CString deviceInfo;
    CString id;
    if (!GetDriveInfoByLetter(letter, deviceInfo, id))
        return false;
    qo::log(
        level::flow, u"CQoUSBManager::refreshDevice: deviceID=%s deviceInfo=%s", id, deviceInfo);
    CString name = CUSBUtils::GetDeviceName(id);
    qo::log(level::flow, u"CQoUSBManager::refreshDevice: deviceName(%s) = %s", id, name);
    if (!drive.label.IsEmpty())
    {
        name = drive.label;
        qo::log(level::flow, u"CQoUSBManager::refreshDevice: user deviceName(%s) = %s", id, name);
    }
    updateDevice(id, name, letter);
    return getDeviceByLetter(letter, device);
}

bool CQoUSBManager::detectMusicAndMoviesDirs(UsbDeviceInfoPtr& device,
                                             bool& foundMusic,
                                             bool& foundMovies)
{
    foundMusic = foundMovies = false;
    const CString root = getRealPath(device->m_id, CString());
    if (root.IsEmpty())
        return false;
    const auto exists = [&](const CString& dir)
    { return qo::fileSystem().isDirectory(qo::combinePath(root, dir)); };
    const auto list = [&]
    {
        qo::log(level::flow, u"CQoUSBManager::findMusicDirs : %s", root);
        CStringArray dirs;
        addSubDirs(root, CString(), levelsForNames, dirs);
        return dirs;
    };
    detectDirs(*device, exists, list, foundMusic, foundMovies);
    return true;
}
