#include "devices/usb/Eject.h"

#include "bus/Bus.h"
#include "core/base/HostError.h"
#include "core/base/SystemPath.h"
#include "devices/base/Holders.h"

#include <unistd.h>

#include <chrono>

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

/// The system's bus as UDisks2 is asked over it.
class Disks
{
public:
    /// The object of a device node; "" for none.
    std::string objectOf(const std::string& node)
    {
        BusReply reply = m_bus.call(service,
                                    managerPath,
                                    managerFace,
                                    "ResolveDevice",
                                    "a{sv}a{sv}",
                                    1,
                                    "path",
                                    "s",
                                    node.c_str(),
                                    0);
        reply.enter('a', "o");
        const char* const object = reply.nextObject();
        return object ? object : "";
    }
    /// A method without arguments but for an empty map of options.
    void call(const std::string& object, const char* face, const char* method)
    {
        m_bus.call(service, object, face, method, "a{sv}", 0);
    }
    /// A property that is the path of an object; "" for "/", which stands for none.
    std::string link(const std::string& object, const char* face, const char* property)
    {
        const std::string path = m_bus.object(service, object, face, property);
        return path == "/" ? "" : path;
    }
    bool flag(const std::string& object, const char* face, const char* property)
    {
        return m_bus.flag(service, object, face, property);
    }

private:
    Bus m_bus{Bus::Kind::system, longestCall};
};

/// Gives the drive of a volume that is unmounted no more power. Why it has some still.
std::string switchOff(Disks& disks, std::string block)
{
    try
    {
        if (const std::string behind = disks.link(block, blockFace, "CryptoBackingDevice");
            !behind.empty())
        {
            disks.call(behind, cryptFace, "Lock");
            block = behind;
        }
        const std::string drive = disks.link(block, blockFace, "Drive");
        if (drive.empty())
            return "the system knows no drive of it";
        if (disks.flag(drive, driveFace, "CanPowerOff"))
            disks.call(drive, driveFace, "PowerOff");
        else if (disks.flag(drive, driveFace, "Ejectable"))
            disks.call(drive, driveFace, "Eject");
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
        Disks disks;
        const std::string block = disks.objectOf(device.source);
        if (block.empty())
            throw HostError(ExitCode::failed,
                            what + "UDisks2 does not know " + device.source + "; \"umount " +
                                device.place + "\" makes it safe to take out");
        // This process itself may have been started in a folder of it.
        if (::chdir("/") != 0)
            throw HostError(ExitCode::failed, what + "this program cannot leave its folder");
        disks.call(block, volumeFace, "Unmount");
        return switchOff(disks, block);
    }
    catch (const BusFailure& failure)
    {
        if (failure.name == busyError)
            throw HostError(ExitCode::busy,
                            what + holderWords(holdersOf([&](const std::string& path)
                                                         { return isBelow(path, device.place); })));
        throw HostError(ExitCode::failed,
                        what + (failure.isAbsent()
                                    ? "UDisks2 does not run here; \"umount " + device.place +
                                          "\" makes it safe to take out"
                                    : failure.message));
    }
}
} // namespace qo::host
