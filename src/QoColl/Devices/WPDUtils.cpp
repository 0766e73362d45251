#include "QoColl/Devices/WPDUtils.h"

#include "Analyze/NSUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/QoUSBManagerBase.h"
#include "QoColl/Devices/WPDKeys.h"
#include "QoColl/Plugins/FarName.h"
#include "common/Log.h"
#include "common/QoProgress.h"
#include "platform/Platform.h"
#include "types/CharClass.h"

#include <algorithm>

// Properties first, then devices, objects, and what is told to a device of a new object.

namespace wpd = qo::wpd;
using qo::DeviceResult;
using qo::PropertyBag;
using qo::PropertyKey;

namespace
{
namespace level = qo::level;
constexpr DeviceResult ok = qo::deviceResult::ok;

/// Years before it are no years of recordings to devices.
constexpr int lastUnknownYear = 1899;
constexpr int lastYear = 9999;
/// Units that a record takes of a text, whatever a device says.
constexpr int longestText = 1000;
constexpr int longestLyrics = 1 << 20;

template <class T>
bool getProperty(const char16_t* message, const PropertyKey& key, const PropertyBag& bag, T& value)
{
    const qo::PropertyValue* const found = bag.find(key);
    if (const T* const typed = found ? std::get_if<T>(found) : nullptr)
    {
        value = *typed;
        return true;
    }
    qo::log(level::error, message, found ? qo::deviceResult::failed : qo::deviceResult::notFound);
    return false;
}

/// Takes the value if the device gave one: most objects have few of all properties.
template <class T>
bool takeIfThere(const PropertyKey& key, const PropertyBag& bag, T& value)
{
    const qo::PropertyValue* const found = bag.find(key);
    const T* const typed = found ? std::get_if<T>(found) : nullptr;
    if (typed)
        value = *typed;
    return typed != nullptr;
}

bool takeText(const PropertyKey& key,
              const PropertyBag& bag,
              CString& value,
              int longest = longestText)
{
    const bool isThere = takeIfThere(key, bag, value);
    if (value.GetLength() > longest)
        value = value.Left(longest);
    return isThere;
}

void setIfNotEmpty(const PropertyKey& key, PropertyBag& bag, const CString& value)
{
    if (!value.IsEmpty())
        CWPDUtils::setStringProperty(key, bag, value);
}

/// The texts and numbers of music.
void takeMusic(const PropertyBag& bag, CWPDUtils::ObjectInfo& info)
{
    takeText(wpd::mediaArtist, bag, info.m_artist);
    takeText(wpd::musicAlbum, bag, info.m_album);
    takeText(wpd::mediaTitle, bag, info.m_title);
    takeText(wpd::mediaGenre, bag, info.m_genre);
    info.m_lyricsLoaded = takeText(wpd::musicLyrics, bag, info.m_lyrics, longestLyrics);
    std::int32_t track = 0;
    if (takeIfThere(wpd::musicTrack, bag, track) && track > 0)
        info.m_trackNumber.Format(u"%d", track);
    FILETIME released;
    const int year = takeIfThere(wpd::mediaReleaseDate, bag, released) ? qo::utcTime(released).year
                                                                       : lastUnknownYear;
    if (year > lastUnknownYear && year <= lastYear)
        info.m_year.Format(u"%d", year);
    std::int64_t duration = 0;
    if (takeIfThere(wpd::mediaDuration, bag, duration))
        info.m_duration = static_cast<int>(std::clamp<std::int64_t>(duration, 0, INT32_MAX));
    takeIfThere(wpd::mediaBitrate, bag, info.m_bitrate);
    info.m_bitrate = std::max(info.m_bitrate, 0);
}
} // namespace

bool CWPDUtils::ObjectInfo::isFolder() const
{
    return m_contentType == wpd::contentFolder || m_contentType == wpd::contentFunctional;
}

bool CWPDUtils::getStringProperty(const PropertyKey& key, const PropertyBag& values, CString& value)
{
    return getProperty(
        u"CWPDUtils::getStringProperty : GetStringValue failed, hr = 0x%lx", key, values, value);
}

bool CWPDUtils::getGUIDProperty(const PropertyKey& key, const PropertyBag& values, GUID& value)
{
    return getProperty(
        u"CWPDUtils::getGUIDProperty : GetGuidValue failed, hr = 0x%lx", key, values, value);
}

bool CWPDUtils::getInt8Property(const PropertyKey& key,
                                const PropertyBag& values,
                                std::int64_t& value)
{
    return getProperty(
        u"CWPDUtils::getInt8Property : GetSignedLargeIntegerValue failed, hr = 0x%lx",
        key,
        values,
        value);
}

bool CWPDUtils::getInt4Property(const PropertyKey& key,
                                const PropertyBag& values,
                                std::int32_t& value)
{
    return getProperty(u"CWPDUtils::getInt4Property : GetSignedIntegerValue failed, hr = 0x%lx",
                       key,
                       values,
                       value);
}

bool CWPDUtils::getDateProperty(const PropertyKey& key, const PropertyBag& values, FILETIME& value)
{
    return getProperty(
        u"CWPDUtils::getDateProperty : GetValue failed, hr = 0x%lx", key, values, value);
}

bool CWPDUtils::getDateProperty(const PropertyKey& key,
                                const PropertyBag& values,
                                qo::CalendarTime& value)
{
    FILETIME time;
    if (!getDateProperty(key, values, time))
        return false;
    value = qo::utcTime(time);
    return true;
}

bool CWPDUtils::setStringProperty(const PropertyKey& key, PropertyBag& values, const CString& value)
{
    values.set(key, value);
    return true;
}

bool CWPDUtils::setGUIDProperty(const PropertyKey& key, PropertyBag& values, const GUID& value)
{
    values.set(key, value);
    return true;
}

bool CWPDUtils::setInt8Property(const PropertyKey& key, PropertyBag& values, std::int64_t value)
{
    values.set(key, value);
    return true;
}

bool CWPDUtils::setInt4Property(const PropertyKey& key, PropertyBag& values, std::int32_t value)
{
    values.set(key, value);
    return true;
}

bool CWPDUtils::setDateProperty(const PropertyKey& key, PropertyBag& values, const FILETIME& value)
{
    values.set(key, value);
    return true;
}

bool CWPDUtils::setDateProperty(const PropertyKey& key,
                                PropertyBag& values,
                                const qo::CalendarTime& value)
{
    return setDateProperty(key, values, qo::timeOf(value));
}

bool CWPDUtils::getDevices(CStringArray& ids)
{
    std::vector<CString> found;
    if (const DeviceResult result = qo::portableDevices().devices(found); result != ok)
    {
        qo::log(level::error, u"CWPDUtils::getDevices : GetDevices failed, hr = 0x%lx", result);
        return false;
    }
    for (const CString& id : found)
        ids.Add(id);
    return true;
}

bool CWPDUtils::getDeviceName(const CString& id, CString& name)
{
    if (const DeviceResult result = qo::portableDevices().friendlyName(id, name); result != ok)
    {
        qo::log(level::error,
                u"CWPDUtils::getDeviceName : GetDeviceFriendlyName failed for %s, hr = 0x%lx",
                id,
                result);
        return false;
    }
    return true;
}

bool CWPDUtils::isStorage(qo::IPortableDevice& device, DeviceResult& result)
{
    std::vector<GUID> categories;
    result = device.functionalCategories(categories);
    return result == ok && std::find(categories.begin(), categories.end(), wpd::categoryStorage) !=
                               categories.end();
}

DeviceResult CWPDUtils::openDevice(const CString& id,
                                   std::unique_ptr<qo::IPortableDevice>& device,
                                   bool readOnly)
{
    const DeviceResult result = qo::portableDevices().open(id, readOnly, device);
    return result == ok && !device ? qo::deviceResult::failed : result;
}

bool CWPDUtils::getDeviceInfo(const CString& id, CString& name, bool& readable, bool& writable)
{
    readable = writable = false;
    if (!getDeviceName(id, name))
        return false;
    // A line feed in it would begin a line of its own in the log.
    name = qo::deviceLine(name);
    std::unique_ptr<qo::IPortableDevice> device;
    DeviceResult result = openDevice(id, device, false);
    const bool isOpenToWrite = result == ok;
    if (!isOpenToWrite)
        result = openDevice(id, device, true);
    if (result != ok)
    {
        qo::log(level::error,
                u"CWPDUtils::getDeviceInfo : couldn't open device %s neither for read or write, hr "
                u"= 0x%lx",
                id,
                result);
        return false;
    }
    if (!isStorage(*device, result))
    {
        qo::log(level::error,
                u"CWPDUtils::getDeviceInfo : device %s is not storage, hr = 0x%lx",
                id,
                result);
        return false;
    }
    readable = true;
    writable = isOpenToWrite;
    return true;
}

bool CWPDUtils::getDeviceFillStateInfo(qo::IPortableDevice& device,
                                       const CString& storageId,
                                       std::int64_t& total,
                                       std::int64_t& free)
{
    PropertyBag values;
    const DeviceResult result = device.properties(storageId, qo::PropertySet::listing, values);
    const DeviceResult cause = result == ok ? qo::deviceResult::notFound : result;
    if (!takeIfThere(wpd::storageCapacity, values, total))
    {
        qo::log(level::error,
                u"CWPDUtils::getDeviceFillStateInfo : error getting total space, hr = 0x%lx",
                cause);
        return false;
    }
    if (!takeIfThere(wpd::storageFree, values, free))
    {
        qo::log(level::error,
                u"CWPDUtils::getDeviceFillStateInfo : error getting free space, hr = 0x%lx",
                cause);
        return false;
    }
    return true;
}

bool CWPDUtils::getObjectInfo(qo::IPortableDevice& device,
                              const CString& objectId,
                              ObjectInfo& info,
                              DeviceResult* cause,
                              qo::PropertySet wanted)
{
    PropertyBag bag;
    const DeviceResult result = device.properties(objectId, wanted, bag);
    if (cause)
        *cause = result;
    if (result != ok)
    {
        qo::log(level::error,
                u"CWPDUtils::getObjectInfo : GetValues failed for %s, hr = 0x%lx",
                objectId,
                result);
        return false;
    }
    info = ObjectInfo();
    info.m_id = objectId;
    takeIfThere(wpd::objectName, bag, info.m_name);
    takeIfThere(wpd::objectOriginalName, bag, info.m_originalFileName);
    info.m_pathName =
        qo::farEntryName(info.m_originalFileName.IsEmpty() ? info.m_name : info.m_originalFileName);
    takeIfThere(wpd::objectContentType, bag, info.m_contentType);
    takeIfThere(wpd::functionalCategory, bag, info.m_functionalCategory);
    takeIfThere(wpd::objectSize, bag, info.m_size);
    info.m_size = std::max<std::int64_t>(info.m_size, 0);
    takeIfThere(wpd::objectCreated, bag, info.m_created);
    takeIfThere(wpd::objectModified, bag, info.m_modified);
    takeMusic(bag, info);
    return true;
}

bool CWPDUtils::getObjectChildren(qo::IPortableDevice& device,
                                  const CString& objectId,
                                  std::vector<ObjectInfo>& children,
                                  IQoProgress* progress,
                                  DeviceResult* cause,
                                  qo::PropertySet wanted)
{
    DeviceResult result = ok;
    DeviceResult& last = cause ? *cause : result;
    std::vector<CString> ids;
    last = device.children(objectId, ids);
    if (last != ok)
    {
        qo::log(level::error,
                u"CWPDUtils::getObjectChildren : EnumObjects failed for %s, hr = 0x%lx",
                objectId,
                last);
        return false;
    }
    bool isWhole = true;
    for (const CString& id : ids)
    {
        if (progress && progress->isCanceled())
            return false;
        ObjectInfo info;
        if (!getObjectInfo(device, id, info, &last, wanted))
            isWhole = false;
        else if (!info.m_pathName.IsEmpty())
            children.push_back(std::move(info));
        // Each further object would cost one more call that fails.
        if (last == qo::deviceResult::notConnected)
            break;
    }
    return isWhole;
}

bool CWPDUtils::getReqPropsForAllContentTypes(const CString& parentId,
                                              const CString& name,
                                              PropertyBag& values)
{
    return setStringProperty(wpd::objectParentId, values, parentId) &&
           setStringProperty(wpd::objectOriginalName, values, name) &&
           setStringProperty(wpd::objectName, values, name);
}

bool CWPDUtils::getReqPropsForDir(const CString& parentId, const CString& name, PropertyBag& values)
{
    return getReqPropsForAllContentTypes(parentId, name, values) &&
           setGUIDProperty(wpd::objectContentType, values, wpd::contentFolder) &&
           setGUIDProperty(wpd::objectFormat, values, wpd::formatPropertiesOnly);
}

bool CWPDUtils::getReqPropsForFile(const CString& parentId,
                                   const CString& name,
                                   const CString& extension,
                                   const qo::IByteStream& content,
                                   PropertyBag& values)
{
    GUID contentType;
    GUID format;
    if (!getFormatInfo(extension, contentType, format))
    {
        qo::log(level::error,
                u"CWPDUtils::getReqPropsForFile : didn't find content type for file %s",
                name);
        return false;
    }
    return getReqPropsForAllContentTypes(parentId, name, values) &&
           setInt8Property(wpd::objectSize, values, content.size()) &&
           setGUIDProperty(wpd::objectContentType, values, contentType) &&
           setGUIDProperty(wpd::objectFormat, values, format);
}

bool CWPDUtils::addMusicProperties(PropertyBag& values, const QoFileDbItemPtr& record)
{
    setDateProperty(wpd::objectCreated, values, record->createTime);
    setDateProperty(wpd::objectModified, values, qo::systemClock().now());
    setIfNotEmpty(wpd::mediaArtist, values, record->artist);
    setIfNotEmpty(wpd::musicAlbum, values, record->album);
    setIfNotEmpty(wpd::mediaTitle, values, record->title);
    setIfNotEmpty(wpd::objectName, values, record->title);
    setIfNotEmpty(wpd::mediaGenre, values, record->genre);
    int track = 0;
    int total = 0;
    CNSUtils::analyzeTrackNumber(record->trackNumber, track, total);
    if (track > 0)
        setInt4Property(wpd::musicTrack, values, track);
    qo::CalendarTime released = qo::utcTime(qo::systemClock().now());
    released.year = qo::textToInt(record->year.view());
    if (released.year > lastUnknownYear)
        setDateProperty(wpd::mediaReleaseDate, values, released);
    setIfNotEmpty(wpd::musicLyrics, values, record->lyrics);
    if (record->duration != 0)
        setInt8Property(wpd::mediaDuration, values, record->duration);
    if (record->bitrate > 0)
        setInt4Property(wpd::mediaBitrate, values, record->bitrate);
    return true;
}

bool CWPDUtils::createDir(qo::IPortableDevice& device,
                          const CString& parentId,
                          const CString& name,
                          CString& objectId)
{
    PropertyBag values;
    if (!getReqPropsForDir(parentId, name, values))
        return false;
    if (const DeviceResult result = device.createObject(values, objectId); result != ok)
    {
        qo::log(level::error,
                u"CWPDUtils::createDir : CreateObjectWithPropertiesOnly failed for %s, hr = 0x%lx",
                name,
                result);
        return false;
    }
    return true;
}
