#include "devices/usb/Eject.h"

#include "core/base/HostError.h"
#include "core/base/SystemPath.h"
#include "devices/base/Holders.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <memory>

namespace qo::host
{
namespace
{
constexpr const char* service = "org.freedesktop.UDisks2";
constexpr const char* managerPath = "/org/freedesktop/UDisks2/Manager";
constexpr const char* managerFace = "org.freedesktop.UDisks2.Manager";
constexpr const char* blockFace = "org.freedesktop.UDisks2.Block";
constexpr const char* volumeFace = "org.freedesktop.UDisks2.Filesystem";
constexpr const char* cryptFace = "org.freedesktop.UDisks2.Encrypted";
constexpr const char* driveFace = "org.freedesktop.UDisks2.Drive";
constexpr std::string_view busyError = "org.freedesktop.UDisks2.Error.DeviceBusy";
/// A stick with much to write is not done within the usual half minute.
constexpr std::uint64_t longestCall = std::chrono::microseconds(std::chrono::minutes(10)).count();

/// A call that failed; name is that of the error on the bus.
struct BusFailure
{
    std::string name;
    std::string message;
};

/// The system's bus. Its calls throw BusFailure.
class SystemBus
{
public:
    SystemBus()
    {
        if (const int error = ::sd_bus_open_system(&m_bus); error < 0)
            throw BusFailure{"", std::strerror(-error)}; // NOLINT(concurrency-mt-unsafe)
        ::sd_bus_set_method_call_timeout(m_bus, longestCall);
        ::sd_bus_set_allow_interactive_authorization(m_bus, 1);
    }
    ~SystemBus() { ::sd_bus_flush_close_unref(m_bus); }
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;

    /// The object of a device node; "" for none.
    std::string objectOf(const std::string& node)
    {
        Reply reply;
        Error error;
        const int result = ::sd_bus_call_method(m_bus,
                                                service,
                                                managerPath,
                                                managerFace,
                                                "ResolveDevice",
                                                &error.error,
                                                &reply.message,
                                                "a{sv}a{sv}",
                                                1,
                                                "path",
                                                "s",
                                                node.c_str(),
                                                0);
        error.check(result);
        const char* object = nullptr;
        if (::sd_bus_message_enter_container(reply.message, 'a', "o") < 0 ||
            ::sd_bus_message_read(reply.message, "o", &object) <= 0)
            return {};
        return object;
    }
    /// A method without arguments but for an empty map of options.
    void call(const std::string& object, const char* face, const char* method)
    {
        Reply reply;
        Error error;
        error.check(::sd_bus_call_method(m_bus,
                                         service,
                                         object.c_str(),
                                         face,
                                         method,
                                         &error.error,
                                         &reply.message,
                                         "a{sv}",
                                         0));
    }
    /// A property that is the path of an object; "" for "/", which stands for none.
    std::string link(const std::string& object, const char* face, const char* property)
    {
        Reply reply;
        Error error;
        error.check(::sd_bus_get_property(
            m_bus, service, object.c_str(), face, property, &error.error, &reply.message, "o"));
        const char* path = nullptr;
        const bool isLink =
            ::sd_bus_message_read(reply.message, "o", &path) > 0 && std::strcmp(path, "/") != 0;
        return isLink ? path : "";
    }
    bool flag(const std::string& object, const char* face, const char* property)
    {
        int value = 0;
        Error error;
        error.check(::sd_bus_get_property_trivial(
            m_bus, service, object.c_str(), face, property, &error.error, 'b', &value));
        return value != 0;
    }

private:
    struct Reply
    {
        ~Reply() { ::sd_bus_message_unref(message); }
        sd_bus_message* message = nullptr;
    };
    struct Error
    {
        ~Error() { ::sd_bus_error_free(&error); }
        void check(int result) const
        {
            if (result >= 0)
                return;
            throw BusFailure{error.name ? error.name : "",
                             error.message ? error.message : std::strerror(-result)}; // NOLINT
        }
        sd_bus_error error = SD_BUS_ERROR_NULL;
    };

    sd_bus* m_bus = nullptr;
};

/// Gives the drive of a volume that is unmounted no more power. Why it has some still.
std::string switchOff(SystemBus& bus, std::string block)
{
    try
    {
        if (const std::string behind = bus.link(block, blockFace, "CryptoBackingDevice");
            !behind.empty())
        {
            bus.call(behind, cryptFace, "Lock");
            block = behind;
        }
        const std::string drive = bus.link(block, blockFace, "Drive");
        if (drive.empty())
            return "the system knows no drive of it";
        if (bus.flag(drive, driveFace, "CanPowerOff"))
            bus.call(drive, driveFace, "PowerOff");
        else if (bus.flag(drive, driveFace, "Ejectable"))
            bus.call(drive, driveFace, "Eject");
        else
            return "its drive cannot be switched off";
        return {};
    }
    catch (const BusFailure& failure)
    {
        return failure.message;
    }
}
} // namespace

std::string ejectDisk(const Device& device)
{
    const std::string what = "the device " + device.name + " cannot be ejected: ";
    try
    {
        SystemBus bus;
        const std::string block = bus.objectOf(device.source);
        if (block.empty())
            throw HostError(ExitCode::failed,
                            what + "UDisks2 does not know " + device.source + "; \"umount " +
                                device.place + "\" makes it safe to take out");
        // This process itself may have been started in a folder of it.
        if (::chdir("/") != 0)
            throw HostError(ExitCode::failed, what + "this program cannot leave its folder");
        bus.call(block, volumeFace, "Unmount");
        return switchOff(bus, block);
    }
    catch (const BusFailure& failure)
    {
        if (failure.name == busyError)
            throw HostError(ExitCode::busy,
                            what + holderWords(holdersOf([&](const std::string& path)
                                                         { return isBelow(path, device.place); })));
        const bool isAbsent = failure.name.empty() ||
                              failure.name == SD_BUS_ERROR_SERVICE_UNKNOWN ||
                              failure.name == SD_BUS_ERROR_NAME_HAS_NO_OWNER;
        throw HostError(ExitCode::failed,
                        what + (isAbsent ? "UDisks2 does not run here; \"umount " + device.place +
                                               "\" makes it safe to take out"
                                         : failure.message));
    }
}
} // namespace qo::host
