#include "platform/posix/Rename.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

// The system's rename replaces an existing target. renameNoReplace() tries, in this order: a flag
// that forbids that, a second hard link, and looking before renaming.

namespace qo
{
namespace
{
/// By a second hard link: the file has both names for a moment.
int linkAndUnlink(const std::string& from, const std::string& to)
{
    if (::link(from.c_str(), to.c_str()) != 0)
        return errno;
    if (::unlink(from.c_str()) == 0)
        return 0;
    const int error = errno;
    ::unlink(to.c_str());
    return error;
}

/// By looking first. Another program may create the target in between, which cannot be prevented
/// where the system offers nothing better.
int lookAndRename(const std::string& from, const std::string& to)
{
    struct stat st;
    if (::lstat(to.c_str(), &st) == 0)
        return EEXIST;
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}
} // namespace

int renameNoReplace(const std::string& from, const std::string& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // The file system does not support the flag. Folders, and on some file systems files too,
    // cannot have a second link.
    const int error = linkAndUnlink(from, to);
    const bool hasNoLinks =
        error == EPERM || error == ENOSYS || error == EOPNOTSUPP || error == EMLINK;
    return hasNoLinks ? lookAndRename(from, to) : error;
}
} // namespace qo
