#include "platform/Platform.h"

#include "platform/NoPortableDevices.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixDrives.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixSpecialFolders.h"

#include <atomic>
#include <filesystem>

// The services of the system, made when first used, and their replacements for tests.

namespace qo
{
namespace
{
/// What a test has put in place of the system's services; null for none.
std::atomic<IFileSystem*> fileSystemReplacement{nullptr};
std::atomic<IClock*> clockReplacement{nullptr};
std::atomic<IDrives*> drivesReplacement{nullptr};
std::atomic<IPortableDevices*> portableReplacement{nullptr};

/// Made when first used and never destroyed, so that static objects may use it until the end.
template <class T>
T& only()
{
    static T* const object = new T();
    return *object;
}
} // namespace

ISpecialFolders::~ISpecialFolders() = default;

IFileSystem& fileSystem()
{
    IFileSystem* replacement = fileSystemReplacement;
    return replacement ? *replacement : only<PosixFileSystem>();
}

IClock& systemClock()
{
    IClock* replacement = clockReplacement;
    return replacement ? *replacement : only<PosixClock>();
}

ISpecialFolders& specialFolders()
{
    return only<PosixSpecialFolders>();
}

IDrives& drives()
{
    IDrives* replacement = drivesReplacement;
    return replacement ? *replacement : only<PosixDrives>();
}

IPortableDevices& portableDevices()
{
    IPortableDevices* replacement = portableReplacement;
    return replacement ? *replacement : only<NoPortableDevices>();
}

CString currentFolder()
{
    std::error_code error;
    return fromSystemPath(std::filesystem::current_path(error));
}

void setFileSystem(IFileSystem* replacement)
{
    fileSystemReplacement = replacement;
}

void setSystemClock(IClock* replacement)
{
    clockReplacement = replacement;
}

void setDrives(IDrives* replacement)
{
    drivesReplacement = replacement;
}

void setPortableDevices(IPortableDevices* replacement)
{
    portableReplacement = replacement;
}
} // namespace qo
