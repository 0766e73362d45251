#pragma once

#include "types/Export.h"
#include "types/FileTime.h"
#include "types/Guid.h"
#include "types/String.h"

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace qo
{
/// What a call to a portable device gave: 0 for success, else a code for the log. Codes of a
/// backend that are not among these are welcome.
using DeviceResult = std::uint32_t;
namespace deviceResult
{
constexpr DeviceResult ok = 0;
constexpr DeviceResult notImplemented = 0x80004001;
constexpr DeviceResult failed = 0x80004005;
constexpr DeviceResult notFound = 0x80070002;
constexpr DeviceResult accessDenied = 0x80070005;
constexpr DeviceResult notConnected = 0x8007048F;
constexpr DeviceResult noMemory = 0x8007000E;
/// An error number of the system.
constexpr DeviceResult fromError(int error) noexcept
{
    return 0x80070000U | (static_cast<unsigned>(error) & 0xFFFFU);
}
} // namespace deviceResult

/// A property of an object on a portable device: a family and a number in it.
struct PropertyKey
{
    GUID format;
    std::uint32_t id = 0;

    bool operator==(const PropertyKey&) const noexcept = default;
};

/// The values that properties have. Times are in the device's own, mostly local, time.
using PropertyValue = std::variant<CString, GUID, std::int32_t, std::int64_t, FILETIME>;

/// Properties of one object, few enough for a search one by one. A key occurs once.
class QO_API PropertyBag
{
public:
    /// The value, or null; valid until the next set().
    const PropertyValue* find(const PropertyKey& key) const;
    void set(const PropertyKey& key, const PropertyValue& value);
    const std::vector<std::pair<PropertyKey, PropertyValue>>& all() const { return m_values; }

private:
    std::vector<std::pair<PropertyKey, PropertyValue>> m_values;
};

/// Bytes from or to a device or a local file. One that was opened for reading cannot be written.
class QO_API IByteStream
{
public:
    virtual ~IByteStream();
    /// done is 0 at the end.
    virtual DeviceResult read(void* buffer, std::size_t size, std::size_t& done) = 0;
    virtual DeviceResult write(const void* data, std::size_t size, std::size_t& done) = 0;
    /// Makes what was written an object of the device. Without it the stream leaves nothing there.
    virtual DeviceResult commit() = 0;
    virtual std::int64_t size() const = 0; ///< in bytes, when it was opened to read; else 0
};

/// Which properties of an object are asked for.
enum class PropertySet : std::uint8_t
{
    listing, ///< names, kind, size and times, which a device says when it lists a folder
    all      ///< those of the music too, which may cost a request for each object
};

/// The root of a device, whose children are its storages.
inline constexpr const char16_t* deviceRootId = u"DEVICE";

/// An open device. Objects are known by ids, which the device gives out anew with each open; what
/// it says of them may be wrong in every way. Calls may come from any thread, several at once: an
/// implementation over a library that cannot do that takes one lock for each device, and never
/// holds it while it calls back. Every call may fail with deviceResult::notConnected from one
/// moment to the next.
class QO_API IPortableDevice
{
public:
    virtual ~IPortableDevice();
    virtual DeviceResult functionalCategories(std::vector<GUID>& categories) = 0;
    /// In the device's order.
    virtual DeviceResult children(const CString& objectId, std::vector<CString>& ids) = 0;
    /// Keys as in QoColl/Devices/WPDKeys.h; what the device does not know is left out.
    virtual DeviceResult
    properties(const CString& objectId, PropertySet wanted, PropertyBag& values) = 0;
    virtual DeviceResult read(const CString& objectId, std::unique_ptr<IByteStream>& stream) = 0;
    /// An object without content, such as a folder.
    virtual DeviceResult createObject(const PropertyBag& values, CString& objectId) = 0;
    /// An object that is there after the commit() of the stream.
    virtual DeviceResult createObjectWithData(const PropertyBag& values,
                                              std::unique_ptr<IByteStream>& stream) = 0;
    /// Whether rename() can be expected to work for that file.
    virtual bool canRename(const CString& objectId) = 0;
    /// Gives a file another name in its folder.
    virtual DeviceResult rename(const CString& objectId, const CString& name) = 0;
    /// Removes objects that have no children.
    virtual DeviceResult remove(const std::vector<CString>& objectIds) = 0;
};

/// A portable device came or went.
struct PortableEvent
{
    enum EEvent : int
    {
        arrival = 0x8000,
        removal = 0x8004
    };
    static constexpr int interfaceType = 5;

    int deviceType = interfaceType; ///< others are ignored
    GUID interfaceClass;            ///< only portableDeviceClass counts
    CString name;                   ///< the id of the device
};
/// The class of portable devices.
inline constexpr GUID portableDeviceClass = {
    0x6AC27878, 0xA6FA, 0x4155, {0xBA, 0x85, 0xF9, 0x8F, 0x49, 0x1D, 0x4F, 0x33}};

/// Hears of portable devices; who hands one over says on which thread it may be called.
class QO_API IPortableWatcher
{
public:
    virtual ~IPortableWatcher();
    /// event: a PortableEvent::EEvent.
    virtual void portableChanged(int event, const PortableEvent& broadcast) = 0;
};

/// The portable devices of the system, as an interface behind which a test or a library for such
/// devices stands. Ids are in lower case, without line feeds, and the same at each connection.
class QO_API IPortableDevices
{
public:
    virtual ~IPortableDevices();
    virtual DeviceResult devices(std::vector<CString>& ids) = 0;
    virtual DeviceResult friendlyName(const CString& id, CString& name) = 0;
    virtual DeviceResult
    open(const CString& id, bool readOnly, std::unique_ptr<IPortableDevice>& device) = 0;
    /// Reports to the watcher from now on; null ends that.
    virtual DeviceResult watch(IPortableWatcher* watcher) = 0;
};
} // namespace qo
