#include "devices/mtp/UsbNode.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace qo::host
{
namespace
{
std::string lineOf(const fs::path& file)
{
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}
} // namespace

UsbNode UsbNode::find(unsigned bus, unsigned device, const std::string& root)
{
    UsbNode node;
    char path[64];
    std::snprintf(path, sizeof(path), "/dev/bus/usb/%03u/%03u", bus, device);
    node.path = root + path;
    std::error_code error;
    for (fs::directory_iterator at(root + "/sys/bus/usb/devices", error), last;
         !error && at != last;
         at.increment(error))
    {
        const fs::path folder = at->path();
        if (lineOf(folder / "busnum") != std::to_string(bus) ||
            lineOf(folder / "devnum") != std::to_string(device))
            continue;
        node.serial = lineOf(folder / "serial");
        node.maker = lineOf(folder / "manufacturer");
        node.product = lineOf(folder / "product");
    }
    return node;
}
} // namespace qo::host
