#include "core/base/DiskSync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace qo::host
{
namespace
{
int syncBy(const std::string& folder, int (*sync)(int))
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    const int error = sync(descriptor) == 0 ? 0 : errno;
    ::close(descriptor);
    return error;
}
} // namespace

int syncFolder(const std::string& folder)
{
    return syncBy(folder, ::fsync);
}

int syncFileSystem(const std::string& folder)
{
    return syncBy(folder, ::syncfs);
}
} // namespace qo::host
