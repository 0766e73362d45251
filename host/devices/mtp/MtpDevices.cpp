#include "devices/mtp/MtpDevices.h"

#include "devices/base/Holders.h"
#include "devices/mtp/MtpStreams.h"
#include "devices/mtp/SilentOutput.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

namespace qo::host
{
namespace
{
/// A device may say any time.
FILETIME timeOfSeconds(std::int64_t seconds)
{
    constexpr std::int64_t furthest = std::int64_t{1} << 38; // some 8,700 years
    return fromUnixTime(seconds < -furthest || seconds > furthest ? 0 : seconds, 0);
}

void setText(PropertyBag& values, const PropertyKey& key, const char* text)
{
    if (text && *text)
        values.set(key, fromUtf8(text));
}

/// What the device says of the music.
void addTrack(const LIBMTP_track_t& track, PropertyBag& values)
{
    setText(values, wpd::mediaTitle, track.title);
    setText(values, wpd::mediaArtist, track.artist);
    setText(values, wpd::musicAlbum, track.album);
    setText(values, wpd::mediaGenre, track.genre);
    // "20030519T000000": the year of the recording.
    int year = 0;
    if (track.date && std::sscanf(track.date, "%4d", &year) == 1 && year > 0)
    {
        CalendarTime date;
        date.year = year;
        date.month = 1;
        date.day = 1;
        values.set(wpd::mediaReleaseDate, timeOf(date));
    }
    if (track.tracknumber > 0)
        values.set(wpd::musicTrack, static_cast<std::int32_t>(track.tracknumber));
    if (track.duration > 0)
        values.set(wpd::mediaDuration, static_cast<std::int64_t>(track.duration));
    if (track.bitrate > 0 && track.bitrate <= INT32_MAX)
        values.set(wpd::mediaBitrate, static_cast<std::int32_t>(track.bitrate));
}

class MtpDevice final : public IPortableDevice
{
public:
    explicit MtpDevice(std::shared_ptr<MtpConnection> connection)
        : m_connection(std::move(connection))
    {
    }

    DeviceResult functionalCategories(std::vector<GUID>& categories) override
    {
        std::map<std::uint32_t, MtpStorage> storages;
        const DeviceResult result = m_connection->storages(storages);
        if (!storages.empty())
            categories.push_back(wpd::categoryStorage);
        return result;
    }
    DeviceResult children(const CString& objectId, std::vector<CString>& ids) override
    {
        std::vector<MtpId> found;
        MtpId folder;
        DeviceResult result = deviceResult::notFound;
        if (objectId == deviceRootId)
        {
            std::map<std::uint32_t, MtpStorage> storages;
            result = m_connection->storages(storages);
            for (const auto& [number, storage] : storages)
                found.push_back({number});
        }
        else if (MtpId::parse(objectId, folder))
            result = m_connection->children(folder, found);
        for (const MtpId& id : found)
            ids.push_back(id.text());
        return result;
    }
    DeviceResult
    properties(const CString& objectId, PropertySet wanted, PropertyBag& values) override
    {
        MtpId id;
        if (!MtpId::parse(objectId, id))
            return deviceResult::notFound;
        return id.isStorage() ? storageProperties(id, values)
                              : objectProperties(id, wanted, values);
    }
    DeviceResult read(const CString& objectId, std::unique_ptr<IByteStream>& stream) override
    {
        MtpId id;
        return MtpId::parse(objectId, id) && !id.isStorage() ? readObject(m_connection, id, stream)
                                                             : deviceResult::notFound;
    }
    DeviceResult createObject(const PropertyBag& values, CString& objectId) override
    {
        MtpId parent;
        std::string name;
        if (!placeOf(values, parent, name))
            return deviceResult::accessDenied;
        MtpId made{parent.storage, 0};
        const auto call = [&](LIBMTP_mtpdevice_t& device)
        {
            made.object =
                ::LIBMTP_Create_Folder(&device, name.data(), parent.object, parent.storage);
            return made.object != 0;
        };
        const DeviceResult result = m_connection->run("Create_Folder", call);
        if (result == deviceResult::ok)
            objectId = made.text();
        return result;
    }
    DeviceResult createObjectWithData(const PropertyBag& values,
                                      std::unique_ptr<IByteStream>& stream) override
    {
        return writeObject(m_connection, values, stream);
    }
    bool canRename(const CString& objectId) override
    {
        MtpId id;
        MtpFile file;
        bool can = false;
        const auto call = [&](LIBMTP_mtpdevice_t& device)
        {
            can = ::LIBMTP_Is_Property_Supported(
                      &device, LIBMTP_PROPERTY_ObjectFileName, file.type) == 1;
            return true;
        };
        return MtpId::parse(objectId, id) && !id.isStorage() &&
               m_connection->file(id, file) == deviceResult::ok &&
               m_connection->run("Is_Property_Supported", call) == deviceResult::ok && can;
    }
    DeviceResult rename(const CString& objectId, const CString& name) override
    {
        MtpId id;
        return MtpId::parse(objectId, id) && !id.isStorage() ? m_connection->rename(id, name)
                                                             : deviceResult::notFound;
    }
    DeviceResult remove(const std::vector<CString>& objectIds) override
    {
        for (const CString& each : objectIds)
        {
            MtpId id;
            if (!MtpId::parse(each, id) || id.isStorage())
                return deviceResult::notFound;
            const DeviceResult result =
                m_connection->run("Delete_Object",
                                  [&](LIBMTP_mtpdevice_t& device)
                                  { return ::LIBMTP_Delete_Object(&device, id.object) == 0; });
            if (result != deviceResult::ok)
                return result;
        }
        return deviceResult::ok;
    }

private:
    DeviceResult storageProperties(const MtpId& id, PropertyBag& values)
    {
        std::map<std::uint32_t, MtpStorage> storages;
        if (const DeviceResult result = m_connection->storages(storages);
            result != deviceResult::ok)
            return result;
        const auto found = storages.find(id.storage);
        if (found == storages.end())
            return deviceResult::notFound;
        values.set(wpd::objectName, found->second.name);
        values.set(wpd::objectContentType, wpd::contentFunctional);
        values.set(wpd::functionalCategory, wpd::categoryStorage);
        values.set(wpd::storageCapacity, found->second.capacity);
        values.set(wpd::storageFree, found->second.free);
        return deviceResult::ok;
    }
    DeviceResult objectProperties(const MtpId& id, PropertySet wanted, PropertyBag& values)
    {
        MtpFile file;
        if (const DeviceResult result = m_connection->file(id, file); result != deviceResult::ok)
            return result;
        const bool isFolder = file.type == LIBMTP_FILETYPE_FOLDER;
        values.set(wpd::objectName, file.name);
        values.set(wpd::objectOriginalName, file.name);
        values.set(wpd::objectContentType,
                   isFolder                              ? wpd::contentFolder
                   : LIBMTP_FILETYPE_IS_AUDIO(file.type) ? wpd::contentAudio
                                                         : wpd::contentDocument);
        values.set(wpd::objectSize, isFolder ? 0 : file.size);
        values.set(wpd::objectCreated, timeOfSeconds(file.modified));
        const auto setTime = [&] { values.set(wpd::objectModified, timeOfSeconds(file.modified)); };
        if (wanted != PropertySet::all || !LIBMTP_FILETYPE_IS_TRACK(file.type))
        {
            setTime();
            return deviceResult::ok;
        }
        const auto call = [&](LIBMTP_mtpdevice_t& device)
        {
            const std::unique_ptr<LIBMTP_track_t, decltype(&::LIBMTP_destroy_track_t)> track(
                ::LIBMTP_Get_Trackmetadata(&device, id.object), &::LIBMTP_destroy_track_t);
            if (track)
            {
                addTrack(*track, values);
                setTime();
            }
            // A file of which it says nothing is still there. With a time its record would count
            // as read for good.
            return true;
        };
        return m_connection->run("Get_Trackmetadata", call);
    }

    const std::shared_ptr<MtpConnection> m_connection;
};

CString idOf(const LIBMTP_raw_device_t& raw, const UsbNode& node)
{
    char numbers[16];
    std::snprintf(numbers,
                  sizeof(numbers),
                  "%04" PRIx16 "-%04" PRIx16,
                  raw.device_entry.vendor_id,
                  raw.device_entry.product_id);
    CString id = deviceLine(fromUtf8(numbers + ("-" + node.serial)));
    id.MakeLower();
    return id;
}

std::string nameOf(const LIBMTP_raw_device_t& raw, const UsbNode& node)
{
    if (!node.product.empty())
        return node.product;
    return raw.device_entry.product ? raw.device_entry.product : "portable device";
}
} // namespace

MtpDevices::MtpDevices(std::function<void(const std::string&)> note, std::string root)
    : m_note(std::move(note)), m_root(std::move(root))
{
}

MtpDevices::~MtpDevices() = default;

void MtpDevices::note(Known& known, const std::string& sentence)
{
    if (m_note && !std::exchange(known.wasNoted, true))
        m_note("the device " + known.name + " " + sentence);
}

/// Of two devices with one id the first counts. A connection stays with its device.
DeviceResult MtpDevices::detect()
{
    static std::once_flag isReady;
    std::call_once(isReady, ::LIBMTP_Init);
    LIBMTP_raw_device_t* list = nullptr;
    int count = 0;
    LIBMTP_error_number_t error = LIBMTP_ERROR_NONE;
    {
        const SilentOutput silence;
        error = ::LIBMTP_Detect_Raw_Devices(&list, &count);
    }
    const std::unique_ptr<LIBMTP_raw_device_t, decltype(&::free)> owner(list, &::free);
    if (error != LIBMTP_ERROR_NONE && error != LIBMTP_ERROR_NO_DEVICE_ATTACHED)
        return deviceResult::failed;
    std::map<CString, Known> now;
    for (int i = 0; error == LIBMTP_ERROR_NONE && i < count; ++i)
    {
        const UsbNode node = UsbNode::find(list[i].bus_location, list[i].devnum, m_root);
        // Two of one kind could not be told apart, and one would be taken for the other.
        if (node.serial.empty())
            continue;
        const CString id = idOf(list[i], node);
        const auto before = m_known.find(id);
        const bool isSame = before != m_known.end() && before->second.node.path == node.path;
        now.emplace(id, isSame ? before->second : Known{list[i], node, nameOf(list[i], node), {}});
    }
    m_known = std::move(now);
    return deviceResult::ok;
}

DeviceResult MtpDevices::devices(std::vector<CString>& ids)
{
    const std::lock_guard lock(m_mutex);
    const DeviceResult result = detect();
    for (const auto& [id, known] : m_known)
        ids.push_back(id);
    return result;
}

DeviceResult MtpDevices::connect(const CString& id, std::shared_ptr<MtpConnection>& connection)
{
    const std::lock_guard lock(m_mutex);
    auto found = m_known.find(id);
    if (found == m_known.end() || (found->second.connection && found->second.connection->isGone()))
    {
        if (found != m_known.end())
            m_known.erase(found);
        if (const DeviceResult result = detect(); result != deviceResult::ok)
            return result;
        found = m_known.find(id);
    }
    if (found == m_known.end())
        return deviceResult::notConnected;
    Known& known = found->second;
    if (!known.connection)
    {
        LIBMTP_mtpdevice_t* handle = nullptr;
        {
            const SilentOutput silence;
            handle = ::LIBMTP_Open_Raw_Device_Uncached(&known.raw);
        }
        if (!handle)
        {
            note(known,
                 "cannot be opened: " +
                     holderWords(holdersOf([&](const std::string& path)
                                           { return path == known.node.path; })));
            return deviceResult::accessDenied;
        }
        known.connection = std::make_shared<MtpConnection>(handle, known.node);
    }
    connection = known.connection;
    return deviceResult::ok;
}

DeviceResult MtpDevices::friendlyName(const CString& id, CString& name)
{
    std::shared_ptr<MtpConnection> connection;
    const DeviceResult result = connect(id, connection);
    if (result == deviceResult::ok)
        name = connection->name();
    const std::lock_guard lock(m_mutex);
    const auto known = m_known.find(id);
    if (name.IsEmpty() && known != m_known.end())
        name = fromUtf8(known->second.name);
    return result;
}

DeviceResult
MtpDevices::open(const CString& id, bool readOnly, std::unique_ptr<IPortableDevice>& device)
{
    std::shared_ptr<MtpConnection> connection;
    DeviceResult result = connect(id, connection);
    std::map<std::uint32_t, MtpStorage> storages;
    if (result == deviceResult::ok)
        result = connection->storages(storages);
    if (result != deviceResult::ok)
        return result;
    if (storages.empty())
    {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_known.find(id); known != m_known.end())
            note(known->second, "shows no storage: unlock it, and let it transfer files");
    }
    bool isWritable = storages.empty();
    for (const auto& [number, storage] : storages)
        isWritable = isWritable || storage.isWritable;
    if (!readOnly && !isWritable)
        return deviceResult::accessDenied;
    device = std::make_unique<MtpDevice>(connection);
    return deviceResult::ok;
}

DeviceResult MtpDevices::watch(IPortableWatcher*)
{
    return deviceResult::notImplemented;
}
} // namespace qo::host
