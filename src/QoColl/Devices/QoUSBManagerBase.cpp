#include "QoColl/Devices/QoUSBManagerBase.h"

#include "common/Log.h"
#include "common/MakeObject.h"
#include "types/CharClass.h"

#include <vector>

// The records of devices stand at the head of the class; loadDevicesFromCfg() reads them,
// saveDevicesToCfg() writes them.

namespace
{
namespace level = qo::level;

constexpr char16_t fieldEnd = u'\n';
constexpr int fewestFields = 4;
constexpr int moviesFolderField = 4;
constexpr int firstExtraField = 6;

/// The fields of a record, empty ones included.
std::vector<CString> fieldsOf(const CString& record)
{
    std::vector<CString> fields;
    for (int start = 0;;)
    {
        const int end = record.Find(fieldEnd, start);
        fields.push_back(end < 0 ? record.Mid(start) : record.Mid(start, end - start));
        if (end < 0)
            return fields;
        start = end + 1;
    }
}

CString recordOfDevice(const UsbDeviceInfo& device)
{
    using qo::deviceLine;
    CString record;
    record.Format(u"%s\n%s\n%s\n%s\n%s\n%s",
                  deviceLine(device.m_id),
                  deviceLine(device.m_name),
                  deviceLine(device.m_musicPath),
                  deviceLine(device.m_musicUploadRule),
                  deviceLine(device.m_moviesPath),
                  deviceLine(device.m_moviesUploadRule));
    for (const CString& dir : device.m_extraDirs)
        record.AppendFormat(u"\n%s\n%d", deviceLine(dir), device.m_pathsInfo.getType(dir));
    return record;
}
} // namespace

namespace qo
{
CString deviceLine(const CString& text)
{
    CString line = text;
    line.Replace(u'\n', u'\uF00A');
    return line;
}
} // namespace qo

IUsbDeviceChangedListener::~IUsbDeviceChangedListener() = default;

CQoUSBManagerBase::CQoUSBManagerBase(UsbDeviceInfo::EType type)
    : m_pathType(type == UsbDeviceInfo::usbDevice ? CQoCollPath::usb : CQoCollPath::wpd)
    , m_type(type)
{
}

CQoUSBManagerBase::~CQoUSBManagerBase() = default;

void CQoUSBManagerBase::loadDevicesFromCfg(const CStringArray& records)
{
    qo::log(level::flow, u"CQoUSBManagerBase::loadDevicesFromCfg");
    m_devices.RemoveAll();
    for (const CString& record : records)
    {
        if (const UsbDeviceInfoPtr device = deviceOfRecord(record))
            m_devices.Add(device);
    }
}

/// Null for a record with too few fields.
UsbDeviceInfoPtr CQoUSBManagerBase::deviceOfRecord(const CString& record) const
{
    const std::vector<CString> fields = fieldsOf(record);
    if (fields.size() < fewestFields)
        return {};
    auto device = qo::makeObject<UsbDeviceInfo>(QO_HERE(u".\\QoColl\\Devices\\QoUSBManagerBase"));
    device->m_type = m_type;
    device->m_configured = true;
    device->m_id = fields[0];
    device->m_name = fields[1];
    device->m_musicPath = fields[2];
    device->m_musicUploadRule = fields[3];
    if (fields.size() == fewestFields)
    {
        device->m_moviesPath = device->m_musicPath;
        device->m_moviesUploadRule = device->m_musicUploadRule;
    }
    if (fields.size() >= firstExtraField)
    {
        device->m_moviesPath = fields[moviesFolderField];
        device->m_moviesUploadRule = fields[moviesFolderField + 1];
    }
    for (std::size_t i = firstExtraField; i + 1 < fields.size(); i += 2)
    {
        const int type = qo::textToInt(fields[i + 1].view());
        if (CQoPathInfo::isType(type))
            addExtraDir(device, fields[i], static_cast<CQoPathInfo::EType>(type));
    }
    return device;
}

void CQoUSBManagerBase::saveDevicesToCfg(CStringArray& records) const
{
    records.RemoveAll();
    for (const UsbDeviceInfoPtr& device : m_devices)
    {
        if (device->m_configured)
            records.Add(recordOfDevice(*device));
    }
}

void CQoUSBManagerBase::addUsbDeviceChangedListener(IUsbDeviceChangedListener* listener)
{
    if (!m_listeners.Find(listener))
        m_listeners.AddTail(listener);
}

void CQoUSBManagerBase::removeUsbDeviceChangedListener(IUsbDeviceChangedListener* listener)
{
    if (POSITION known = m_listeners.Find(listener))
        m_listeners.RemoveAt(known);
}

void CQoUSBManagerBase::notifyUsbDeviceChanged(const UsbDeviceInfoPtr& device, bool hasCome)
{
    // A listener may remove itself or others, which must not be called then.
    const CList<IUsbDeviceChangedListener*> listeners = m_listeners;
    for (POSITION at = listeners.GetHeadPosition(); at;)
    {
        IUsbDeviceChangedListener* const listener = listeners.GetNext(at);
        if (m_listeners.Find(listener))
            listener->usbDeviceChanged(device, hasCome);
    }
}

CQoCollPath CQoUSBManagerBase::createPath(const CString& id) const
{
    return {m_pathType, id};
}

CQoCollPath CQoUSBManagerBase::getFullPath(const CString& id, const CString& path) const
{
    return qo::deviceFullPath(createPath(id), path);
}

void CQoUSBManagerBase::getFullPaths(const UsbDeviceInfoPtr& device,
                                     bool rootIfEmpty,
                                     CArray<CQoCollPath>& paths) const
{
    qo::deviceFullPaths(createPath(device->m_id), device->folders(), rootIfEmpty, paths);
}

bool CQoUSBManagerBase::getDeviceFullPaths(const CString& id,
                                           bool rootIfEmpty,
                                           CArray<CQoCollPath>& paths) const
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    getFullPaths(device, rootIfEmpty, paths);
    return true;
}

bool CQoUSBManagerBase::getDeviceQoPathsInfoMap(const CString& id,
                                                bool rootIfEmpty,
                                                CQoPathsInfoMap& info) const
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    qo::devicePathsInfo(createPath(id), device->folders(), rootIfEmpty, info);
    return true;
}

bool CQoUSBManagerBase::getDeviceTargetDirs(const CString& id,
                                            bool rootIfEmpty,
                                            CString& music,
                                            CString& movies) const
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    qo::deviceTargetDirs(createPath(id), device->folders(), rootIfEmpty, music, movies);
    return true;
}

int CQoUSBManagerBase::getDevice(const CString& id) const
{
    for (int i = 0; i < m_devices.GetSize(); ++i)
    {
        if (m_devices[i]->m_id == id)
            return i;
    }
    return -1;
}

bool CQoUSBManagerBase::getDevice(const CString& id, UsbDeviceInfoPtr& device) const
{
    const int index = getDevice(id);
    if (index >= 0)
        device = m_devices[index];
    return index >= 0;
}

UsbDeviceInfoPtr CQoUSBManagerBase::findOrAddDevice(const CString& id, const CString& name)
{
    UsbDeviceInfoPtr device;
    const CString knownId = qo::deviceLine(id);
    if (!getDevice(knownId, device))
    {
        device = qo::makeObject<UsbDeviceInfo>(QO_HERE(u".\\QoColl\\Devices\\QoUSBManagerBase"));
        device->m_type = m_type;
        device->m_id = knownId;
        device->m_name = name;
        m_devices.Add(device);
    }
    return device;
}

void CQoUSBManagerBase::resetActiveDevices()
{
    for (const UsbDeviceInfoPtr& device : m_devices)
    {
        device->m_active = false;
        device->m_driveLetter = 0;
    }
}

void CQoUSBManagerBase::getDevices(UsbDeviceInfoArray& devices,
                                   bool configured,
                                   bool onlyActive,
                                   bool) const
{
    for (const UsbDeviceInfoPtr& device : m_devices)
    {
        if (device->m_configured == configured && (device->m_active || !onlyActive))
            devices.Add(device);
    }
}

void CQoUSBManagerBase::getConfiguredDevices(UsbDeviceInfoArray& devices) const
{
    getDevices(devices, true, false);
}

bool CQoUSBManagerBase::setDeviceConfigured(const CString& id)
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    device->m_configured = true;
    saveDevices();
    return true;
}

bool CQoUSBManagerBase::removeDevice(const CString& id)
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    device->m_configured = false;
    saveDevices();
    return true;
}

bool CQoUSBManagerBase::setDevicePaths(const CString& id,
                                       const CString& music,
                                       const CString& movies,
                                       const CStringArray& extra)
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    device->m_musicPath = music;
    device->m_moviesPath = movies;
    // The caller's list may be the device's own, which is emptied.
    CStringArray dirs;
    dirs.Append(extra);
    const CQoPathsInfoMap types = device->m_pathsInfo;
    device->m_extraDirs.RemoveAll();
    device->m_pathsInfo.RemoveAll();
    for (const CString& dir : dirs)
        addExtraDir(device, dir, types.getType(dir));
    saveDevices();
    return true;
}

bool CQoUSBManagerBase::setDeviceUploadRules(const CString& id,
                                             const CString& music,
                                             const CString& movies)
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    device->m_musicUploadRule = music;
    device->m_moviesUploadRule = movies;
    saveDevices();
    return true;
}

bool CQoUSBManagerBase::getDeviceUploadRules(const CString& id,
                                             CString& music,
                                             CString& movies) const
{
    UsbDeviceInfoPtr device;
    if (!getDevice(id, device))
        return false;
    music = device->m_musicUploadRule;
    movies = device->m_moviesUploadRule;
    return true;
}

void CQoUSBManagerBase::addExtraDir(const UsbDeviceInfoPtr& device,
                                    const CString& path,
                                    CQoPathInfo::EType type)
{
    if (!device->m_pathsInfo.PLookup(path))
        device->m_extraDirs.Add(path);
    device->m_pathsInfo.SetAt(path, type);
}

void CQoUSBManagerBase::removeExtraDir(const UsbDeviceInfoPtr& device, const CString& path)
{
    device->m_pathsInfo.RemoveKey(path);
    for (int i = device->m_extraDirs.GetUpperBound(); i >= 0; --i)
    {
        if (device->m_extraDirs[i] == path)
            device->m_extraDirs.RemoveAt(i);
    }
}

void CQoUSBManagerBase::detectDirs(UsbDeviceInfo& device,
                                   const std::function<bool(const CString& dir)>& exists,
                                   const std::function<CStringArray()>& list,
                                   bool& foundMusic,
                                   bool& foundMovies)
{
    foundMusic = foundMovies = false;
    for (CString* const chosen : {&device.m_musicPath, &device.m_moviesPath})
    {
        if (!chosen->IsEmpty() && !exists(*chosen))
            chosen->Empty();
    }
    if (device.m_musicPath.IsEmpty() || device.m_moviesPath.IsEmpty())
        CQoDeviceUtils::chooseMusicAndMoviesDirs(
            list(), CString(), device.m_musicPath, device.m_moviesPath, foundMusic, foundMovies);
}
