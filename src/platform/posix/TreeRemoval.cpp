#include "platform/TreeRemoval.h"

#include "platform/posix/OpenFolder.h"
#include "platform/posix/TreeRemover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace qo
{
namespace
{
constexpr int openAsFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// All names first: what a listing gives while entries go is up to the file system.
int namesIn(DIR* folder, std::vector<std::string>& names)
{
    for (;;)
    {
        errno = 0;
        const dirent* const entry = ::readdir(folder);
        if (!entry)
            return errno;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
}

bool isAmong(const std::vector<FileInfo>& kept, const struct stat& st)
{
    const std::uint64_t device = std::uint64_t(major(st.st_dev)) << 32 | minor(st.st_dev);
    return std::any_of(kept.begin(),
                       kept.end(),
                       [&](const FileInfo& one)
                       { return one.device == device && one.inode == st.st_ino; });
}
} // namespace

bool TreeRemover::failed(const std::string& path, bool isFolder, int error) const
{
    if (onFailure)
        onFailure(path, isFolder, error);
    return false;
}

bool TreeRemover::remove(int parent, const char* name, const std::string& path) const
{
    if (!empty(parent, name, path))
        return false;
    return ::unlinkat(parent, name, AT_REMOVEDIR) == 0 || failed(path, true, errno);
}

bool TreeRemover::empty(int parent, const char* name, const std::string& path) const
{
    const int descriptor = ::openat(parent, name, openAsFolder);
    const OpenFolder folder(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
    struct stat st;
    if (!folder || ::fstat(descriptor, &st) != 0)
        return failed(path, true, errno);
    if (!mayRemove(st))
        return failed(path, true, EBUSY);
    std::vector<std::string> names;
    if (const int error = namesIn(folder.get(), names))
        return failed(path, true, error);
    return std::all_of(names.begin(),
                       names.end(),
                       [&](const std::string& entry)
                       { return removeEntry(descriptor, entry, path + "/" + entry); });
}

bool TreeRemover::removeEntry(int folder, const std::string& name, const std::string& path) const
{
    struct stat st;
    if (::fstatat(folder, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT || failed(path, false, errno);
    if (S_ISDIR(st.st_mode))
    {
        // The folder above cannot go then, which shows when its own turn comes.
        (void)remove(folder, name.c_str(), path);
        return true;
    }
    return ::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT ||
           failed(path, false, errno);
}

int removeTree(const CString& folder,
               const std::vector<FileInfo>& kept,
               std::vector<TreeRemovalFailure>& failures)
{
    failures.clear();
    std::string path = toSystemPath(folder);
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    struct stat top;
    if (path.empty() || ::lstat(path.c_str(), &top) != 0 || !S_ISDIR(top.st_mode))
        return ENOTDIR;
    const auto mayRemove = [&](const struct stat& st)
    { return st.st_dev == top.st_dev && !isAmong(kept, st); };
    const auto onFailure = [&](const std::string& left, bool isFolder, int error) {
        failures.push_back({fromSystemPath(left), isFolder, error});
    };
    const TreeRemover remover{mayRemove, onFailure};
    return remover.remove(AT_FDCWD, path.c_str(), path) ? 0 : failures.back().error;
}
} // namespace qo
