#include "platform/VolumeRules.h"

#include "platform/FileSystem.h"
#include "platform/posix/MountTable.h"

#include <climits>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <string>

// The rules follow from the type of the file system, from its limits, and from a flag of the
// folder. A folder that does not exist yet gets those of the nearest one above it.

namespace qo
{
namespace
{
// File system types; not every release of the system's headers has these numbers.
constexpr std::uint32_t fatMagic = 0x4d44;
constexpr std::uint32_t exfatMagic = 0x2011bab0;
constexpr std::uint32_t ntfsMagic = 0x5346544e;
constexpr std::uint32_t ntfs3Magic = 0x7366746e;
constexpr std::uint32_t fuseMagic = 0x65735546;
constexpr int foldsCaseFlag = 0x40000000;
constexpr int mostUnits = 255;

class Folder
{
public:
    /// Opens the nearest existing folder; descriptor() is -1 if none can be opened.
    explicit Folder(std::string path)
    {
        while (!open(path) && path.size() > 1)
            path.resize(std::max<std::size_t>(path.rfind('/'), 1));
    }
    ~Folder()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    int descriptor() const { return m_descriptor; }

private:
    bool open(const std::string& path)
    {
        m_descriptor =
            ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        return m_descriptor >= 0;
    }

    int m_descriptor = -1;
};

/// Whether a user-space driver serves a disk there, and not a network or an archive: drivers for
/// disks of other systems do.
bool isForeignDisk(int descriptor)
{
    struct stat st;
    if (::fstat(descriptor, &st) != 0)
        return false;
    const std::string device =
        std::to_string(major(st.st_dev)) + ":" + std::to_string(minor(st.st_dev));
    const std::vector<MountEntry> mounts = readMounts();
    return std::any_of(mounts.begin(),
                       mounts.end(),
                       [&](const MountEntry& mount)
                       { return mount.device == device && mount.type == "fuseblk"; });
}

/// Whether the file system has the rules of Windows for names.
bool isOfWindows(int descriptor)
{
    struct statfs fs;
    if (::fstatfs(descriptor, &fs) != 0)
        return false;
    switch (static_cast<std::uint32_t>(fs.f_type))
    {
    case fatMagic:
    case exfatMagic:
    case ntfsMagic:
    case ntfs3Magic:
        return true;
    case fuseMagic:
        return isForeignDisk(descriptor);
    default:
        return false;
    }
}

/// Some file systems compare names without case in folders with this flag.
bool foldsCase(int descriptor)
{
    int flags = 0;
    return ::ioctl(descriptor, FS_IOC_GETFLAGS, &flags) == 0 && (flags & foldsCaseFlag) != 0;
}
} // namespace

VolumeRules volumeRulesOf(const CString& folder)
{
    VolumeRules rules;
    const Folder open(toSystemPath(folder));
    if (open.descriptor() < 0)
        return rules;
    if (isOfWindows(open.descriptor()))
        return {mostUnits, VolumeRules::Length::utf16Units, true, true};
    struct statvfs fs;
    if (::fstatvfs(open.descriptor(), &fs) == 0 && fs.f_namemax > 0)
        rules.longestName = static_cast<int>(std::min<unsigned long>(fs.f_namemax, NAME_MAX));
    rules.ignoresCase = foldsCase(open.descriptor());
    return rules;
}

int longestSystemPath() noexcept
{
    return PATH_MAX - 1;
}
} // namespace qo
