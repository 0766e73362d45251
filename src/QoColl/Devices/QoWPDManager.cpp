#include "QoColl/Devices/QoWPDManager.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Log.h"
#include "common/QoProgress.h"
#include "common/Settings.h"
#include "platform/Platform.h"

// The list of devices, and what comes and goes. Folders and files on them are in
// QoWPDManagerFiles.cpp, transfers in QoWPDManagerTransfer.cpp.

CQoWPDManager theQoWPDManager;

namespace
{
namespace level = qo::level;

constexpr const char16_t* wpdDeviceKey = u"WpdDevice%d";
/// What stands behind such an id is a disk that has a letter.
constexpr std::u16string_view refusedIds = u"\\\\?\\wpdbusenumroot#";
constexpr int levelsOfNames = 2;
} // namespace

CQoWPDManager::CQoWPDManager() : CQoUSBManagerBase(UsbDeviceInfo::portableDevice) {}

void CQoWPDManager::init()
{
    qo::log(level::flow, u"CQoWPDManager::init");
    CStringArray records;
    CQoSettings::getList(CQoSettings::WpdDevicesCount, wpdDeviceKey, records);
    loadDevicesFromCfg(records);
    refreshDevices();
}

void CQoWPDManager::saveDevices()
{
    CStringArray records;
    saveDevicesToCfg(records);
    CQoSettings::setList(CQoSettings::WpdDevicesCount, wpdDeviceKey, records);
}

void CQoWPDManager::refreshDevices()
{
    resetActiveDevices();
    CStringArray ids;
    (void)CWPDUtils::getDevices(ids);
    for (const CString& id : ids)
    {
        UsbDeviceInfoPtr device;
        (void)refreshDevice(id, device);
    }
}

void CQoWPDManager::registerNotifications(qo::IPortableWatcher* window)
{
    if (window)
        init();
    const qo::DeviceResult result = qo::portableDevices().watch(window);
    // Where there is no such service, nothing was registered either.
    const bool isNothingToEnd = !window && result == qo::deviceResult::notImplemented;
    if (result != qo::deviceResult::ok && !isNothingToEnd)
        qo::log(level::error,
                u"CQoWPDManager::registerNotifications : RegisterDeviceNotification failed, hr = "
                u"0x%lx",
                result);
}

void CQoWPDManager::deviceChanged(int event, const qo::PortableEvent* broadcast)
{
    if (!broadcast || broadcast->deviceType != qo::PortableEvent::interfaceType ||
        broadcast->interfaceClass != qo::portableDeviceClass)
        return;
    CString id = broadcast->name;
    id.MakeLower();
    UsbDeviceInfoPtr device;
    if (event == qo::PortableEvent::arrival)
    {
        const bool isAccepted = refreshDevice(id, device);
        qo::log(level::flow,
                u"CQoWPDManager::deviceChanged : device %s(%s) inserted",
                id,
                device ? device->m_name : CString());
        if (isAccepted)
            notifyUsbDeviceChanged(device, true);
        else
            qo::log(level::flow,
                    u"CQoWPDManager::deviceChanged : device %s(%s) not accepted for qo usage",
                    id,
                    device ? device->m_name : CString());
    }
    else if (event == qo::PortableEvent::removal)
    {
        const bool wasAccepted = getDevice(qo::deviceLine(id), device) && device->m_active;
        const CString name = device ? device->m_name : CString();
        if (wasAccepted)
            updateDevice(id, name, false, false, false);
        qo::log(level::flow, u"CQoWPDManager::deviceChanged : device %s(%s) removed", id, name);
        if (wasAccepted)
            notifyUsbDeviceChanged(device, false);
    }
}

void CQoWPDManager::updateDevice(
    const CString& id, const CString& name, bool active, bool readable, bool writable)
{
    const UsbDeviceInfoPtr device = findOrAddDevice(id, name);
    device->m_active = active;
    if (!active)
    {
        device->m_driveLetter = 0;
        return;
    }
    device->m_name = name;
    device->m_readable = readable;
    device->m_writable = writable;
}

bool CQoWPDManager::refreshDevice(const CString& id, UsbDeviceInfoPtr& device)
{
    CString name;
    bool readable = false;
    bool writable = false;
    if (!CWPDUtils::getDeviceInfo(id, name, readable, writable) ||
        id.view().starts_with(refusedIds))
        return false;
    qo::log(level::flow,
            u"CQoWPDManager::refreshDevice: deviceName(%s) = %s, %s %s",
            id,
            name,
            readable ? u"readable" : u"",
            writable ? u"writable" : u"");
    updateDevice(id, name, true, readable, writable);
    return getDevice(qo::deviceLine(id), device);
}

bool CQoWPDManager::canCopyFromDevice(const CString& id) const
{
    UsbDeviceInfoPtr device;
    return getDevice(id, device) && device->m_readable;
}

bool CQoWPDManager::canCopyToDevice(const CString& id) const
{
    UsbDeviceInfoPtr device;
    return getDevice(id, device) && device->m_writable;
}

bool CQoWPDManager::detectMusicAndMoviesDirs(UsbDeviceInfoPtr& device,
                                             bool& foundMusic,
                                             bool& foundMovies)
{
    foundMusic = foundMovies = false;
    if (!device->m_active)
        return false;
    CDummyProgress progress;
    const CQoCollPath root = createPath(device->m_id);
    const auto exists = [&](const CString& dir)
    {
        ObjectInfo info;
        return getPathInfo(qo::deviceFullPath(root, dir), &progress, info);
    };
    const auto list = [&]
    {
        qo::log(level::flow, u"CQoWPDManager::findMusicDirs : %s", root.toString());
        QoFileDbItemArray found;
        (void)getDirSubDirs(root, levelsOfNames, &progress, found);
        CStringArray dirs;
        for (const QoFileDbItemPtr& item : found)
            dirs.Add(qo::deviceRelativePath(root, CQoCollPath(item->path)));
        return dirs;
    };
    detectDirs(*device, exists, list, foundMusic, foundMovies);
    return true;
}
