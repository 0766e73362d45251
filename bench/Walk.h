#pragma once

#include "Floor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace bench
{
/// Calls visit(path, stat) for every regular file below the folder; returns how many there are.
/// Links are not followed.
template <class Visit>
long walk(const std::string& folder, const Visit& visit)
{
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const listing = handle < 0 ? nullptr : ::fdopendir(handle);
    if (!listing)
        fail(folder.c_str(), std::strerror(errno));
    long files = 0;
    while (const dirent* entry = ::readdir(listing))
    {
        const char* const name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat info;
        if (::fstatat(handle, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISDIR(info.st_mode))
            files += walk(folder + "/" + name, visit);
        else if (S_ISREG(info.st_mode))
        {
            visit(folder + "/" + name, info);
            ++files;
        }
    }
    ::closedir(listing);
    return files;
}
} // namespace bench
