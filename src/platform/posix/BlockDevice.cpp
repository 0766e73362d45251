#include "platform/posix/BlockDevice.h"

#include "platform/DriveMap.h"

#include <algorithm>
#include <fstream>

// sysfs has a folder for each block device: that of a partition has a file "partition" and lies in
// that of its disk; that of an encrypted or otherwise mapped volume names in "slaves" what it lies
// on. udev keeps a file for each device, b8:17, with lines such as "E:ID_BUS=usb".

namespace fs = std::filesystem;

namespace qo
{
namespace
{
constexpr int deepestMapping = 8;

/// The first line of a file; "" if it cannot be read.
std::string firstLineOf(const fs::path& file)
{
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

fs::path canonicalOrEmpty(const fs::path& path)
{
    std::error_code error;
    fs::path found = fs::canonical(path, error);
    return error ? fs::path() : found;
}

/// What a mapped volume lies on, through all layers; itself for any other. Empty for a volume over
/// several disks.
fs::path lowest(fs::path device)
{
    for (int depth = 0; depth < deepestMapping; ++depth)
    {
        std::error_code error;
        const fs::directory_iterator slaves(device / "slaves", error);
        if (error || slaves == fs::directory_iterator())
            return device;
        const fs::path slave = slaves->path();
        if (std::distance(begin(slaves), end(slaves)) != 1)
            return {};
        device = canonicalOrEmpty(slave);
    }
    return {};
}

/// Adds what udev knows of the device; what is there already stays.
void addProperties(const std::string& udev,
                   const fs::path& device,
                   std::map<std::string, std::string>& properties)
{
    std::ifstream in(udev + "/b" + firstLineOf(device / "dev"));
    for (std::string line; std::getline(in, line);)
    {
        const std::size_t equals = line.find('=');
        if (line.compare(0, 2, "E:") == 0 && equals != std::string::npos)
            properties.emplace(line.substr(2, equals - 2), line.substr(equals + 1));
    }
}

/// "My\x20Stick" becomes "My Stick".
std::string unescapeHex(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isEscape = text.compare(i, 2, "\\x") == 0 && i + 3 < text.size() &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0 &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 3])) != 0;
        plain +=
            isEscape ? static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)) : text[i];
        i += isEscape ? 3 : 0;
    }
    return plain;
}
} // namespace

BlockDevice::BlockDevice(const std::string& sys,
                         const std::string& udev,
                         const std::string& number,
                         const std::string& source)
{
    fs::path device = canonicalOrEmpty(fs::path(sys) / "dev/block" / number);
    if (device.empty() && source.starts_with("/dev/"))
    {
        // "/dev/mapper/stick" is a link to "/dev/dm-0", and sysfs knows the latter name.
        const fs::path node = canonicalOrEmpty(source);
        device = canonicalOrEmpty(fs::path(sys) / "class/block" /
                                  (node.empty() ? fs::path(source) : node).filename());
    }
    if (device.empty())
        return;
    addProperties(udev, device, m_properties);
    device = lowest(device);
    if (device.empty())
        return;
    addProperties(udev, device, m_properties);
    std::error_code error;
    m_disk = fs::exists(device / "partition", error) ? device.parent_path() : device;
    addProperties(udev, m_disk, m_properties);
}

std::string BlockDevice::valueOf(const char* key) const
{
    const auto found = m_properties.find(key);
    return found == m_properties.end() ? std::string() : found->second;
}

DriveInfo BlockDevice::info() const
{
    DriveInfo info;
    const std::string diskName = m_disk.filename().string();
    const bool isOptical = valueOf("ID_CDROM") == "1" || diskName.starts_with("sr");
    const bool isFloppy = valueOf("ID_DRIVE_FLOPPY") == "1" || diskName.starts_with("fd");
    const bool isRemovable = firstLineOf(m_disk / "removable") == "1";
    using Kind = DriveInfo::Kind;
    using Medium = DriveInfo::Medium;
    info.kind = isOptical ? Kind::optical : isRemovable ? Kind::removable : Kind::fixed;
    info.medium = isFloppy ? Medium::floppy : isRemovable ? Medium::removable : Medium::other;
    info.bus = valueOf("ID_BUS") == "usb" ? DriveInfo::Bus::usb : DriveInfo::Bus::other;
    std::string id = valueOf("ID_SERIAL");
    const std::string partition = valueOf("ID_PART_ENTRY_UUID");
    const std::string part = partition.empty() ? valueOf("ID_FS_UUID") : partition;
    if (!id.empty() && !part.empty())
        id += '-';
    info.id = DriveMap::nameFromSystem(id + part);
    info.name = nameOf();
    info.label = labelOf();
    return info;
}

/// udev writes an underline for each blank.
CString BlockDevice::nameOf() const
{
    std::string name = valueOf("ID_VENDOR") + ' ' + valueOf("ID_MODEL");
    std::replace(name.begin(), name.end(), '_', ' ');
    CString text = DriveMap::nameFromSystem(name);
    text.Trim();
    return text;
}

CString BlockDevice::labelOf() const
{
    const std::string encoded = unescapeHex(valueOf("ID_FS_LABEL_ENC"));
    return DriveMap::nameFromSystem(encoded.empty() ? valueOf("ID_FS_LABEL") : encoded);
}
} // namespace qo
