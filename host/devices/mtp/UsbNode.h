#pragma once

#include <string>

namespace qo::host
{
/// What the system says of a device on the USB bus.
struct UsbNode
{
    std::string path; ///< "/dev/bus/usb/001/004", through which programs speak to it
    std::string serial;
    std::string maker;
    std::string product;

    /// By the numbers of the bus and of the device on it; texts are "" where it says nothing. root
    /// is what "/sys" and "/dev" stand below.
    static UsbNode find(unsigned bus, unsigned device, const std::string& root);
};
} // namespace qo::host
