#include "platform/posix/Rename.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace qo
{
namespace
{
/// The file has both names for a moment.
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

/// Somebody may come in between, which nothing can prevent where the system offers no more.
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
    // The file system does not know the flag; folders, and all files of some, have no second name.
    const int error = linkAndUnlink(from, to);
    return error == EPERM ? lookAndRename(from, to) : error;
}
} // namespace qo
