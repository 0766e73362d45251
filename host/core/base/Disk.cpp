#include "core/base/Disk.h"

#include "core/base/SystemPath.h"

#include <cerrno>

namespace qo::host::disk
{
int look(const std::string& path, NameInfo& info)
{
    return fileSystem().look(fromSystemPath(path), info);
}

bool isFolder(const std::string& path)
{
    NameInfo info;
    return look(path, info) == 0 && info.kind == NameInfo::Kind::directory;
}

bool isNothingAt(const std::string& path)
{
    NameInfo info;
    const int error = look(path, info);
    return error == ENOENT || error == ENOTDIR;
}

int lookAtFolder(const std::string& path, NameInfo& info)
{
    const int error = fileSystem().lookThrough(fromSystemPath(path), info);
    return error != 0 || info.kind == NameInfo::Kind::directory ? error : ENOTDIR;
}

bool isSameEntry(const std::string& one, const std::string& other)
{
    NameInfo a;
    NameInfo b;
    return look(one, a) == 0 && look(other, b) == 0 && a.device == b.device && a.inode == b.inode;
}

std::string nearestFolder(std::string path)
{
    NameInfo info;
    while (path != "/" && lookAtFolder(path, info) != 0)
        path = parentOf(path);
    return path;
}

int moveNoReplace(const std::string& from, const std::string& to)
{
    return fileSystem().moveFileNoReplace(fromSystemPath(from), fromSystemPath(to));
}

int removeFile(const std::string& path)
{
    return fileSystem().removeFile(fromSystemPath(path));
}

int removeFolder(const std::string& path)
{
    return fileSystem().removeDirectory(fromSystemPath(path));
}

int makeFolder(const std::string& path)
{
    return fileSystem().makeDirectory(fromSystemPath(path));
}

int writeNew(const std::string& path, const std::string& content)
{
    const std::string fresh = path + ".new";
    if (const int error = fileSystem().replaceFile(
            fromSystemPath(fresh), content.data(), content.size(), Durability::durable))
        return error;
    const int error = moveNoReplace(fresh, path);
    if (error != 0)
        (void)removeFile(fresh);
    return error;
}

int sync(const std::string& path)
{
    return fileSystem().sync(fromSystemPath(path));
}

int syncAll(const std::string& folder)
{
    return fileSystem().syncAll(fromSystemPath(folder));
}

int checkRights(const std::string& from, const std::string& to)
{
    IFileSystem& files = fileSystem();
    if (const int error = files.mayRemove(fromSystemPath(from)))
        return error;
    if (const int error = files.mayChange(fromSystemPath(nearestFolder(parentOf(to)))))
        return error;
    // A folder that gets another parent is written to: it names its parent.
    if (isFolder(from) && parentOf(from) != parentOf(to))
        return files.mayChange(fromSystemPath(from));
    return 0;
}
} // namespace qo::host::disk
