#include "platform/posix/CopyContent.h"
#include "platform/posix/FileAttributes.h"
#include "platform/posix/PosixFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>

namespace qo
{
namespace
{
constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerOnly = 0600;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

int resultOf(int result)
{
    return result == 0 ? 0 : errno;
}

std::string folderAboveOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::unique_ptr<PosixFile> openName(const std::string& path, int flags)
{
    const int descriptor =
        ::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, ownerOnly);
    return descriptor < 0 ? nullptr : std::make_unique<PosixFile>(descriptor);
}

int access(const std::string& path, int rights)
{
    return path.empty() ? ENOENT
                        : resultOf(::faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS));
}

int syncBy(const std::string& path, int (*sync)(int))
{
    const auto file = openName(path, O_RDONLY);
    return file ? resultOf(sync(file->descriptor())) : errno;
}

void giveFileTimes(const std::string& path, const struct stat& st)
{
    const timespec times[] = {st.st_atim, st.st_mtim};
    ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

int copyLink(const std::string& from, const struct stat& st, const std::string& to)
{
    std::string text(static_cast<std::size_t>(st.st_size) + 1, '\0');
    const ssize_t length = ::readlink(from.c_str(), text.data(), text.size());
    if (length < 0)
        return errno;
    text.resize(static_cast<std::size_t>(length));
    if (::symlink(text.c_str(), to.c_str()) != 0)
        return errno;
    giveFileTimes(to, st);
    return 0;
}

int fillCopy(PosixFile& in,
             const struct stat& st,
             const std::string& to,
             PosixFile& out,
             const std::function<bool()>& stop)
{
    if (const int error = copyContent(in, out, stop))
        return error;
    // What another file system cannot hold is not worth losing the copy for.
    (void)copyAttributes(in.descriptor(), st, out.descriptor());
    giveFileTimes(to, st);
    if (const int error = out.sync())
        return error;
    // Only what comes from the disk proves that the disk has it.
    (void)::posix_fadvise(out.descriptor(), 0, 0, POSIX_FADV_DONTNEED);
    if (!in.seek(0) || !out.seek(0))
        return EIO;
    return compareContent(in, out, stop);
}

int lookBy(int flags, const std::string& path, NameInfo& info)
{
    struct statx st;
    constexpr unsigned wanted = STATX_BASIC_STATS | STATX_MNT_ID;
    if (path.empty())
        return ENOENT;
    if (::statx(AT_FDCWD, path.c_str(), flags | AT_NO_AUTOMOUNT, wanted, &st) != 0)
        return errno;
    info.kind = S_ISREG(st.stx_mode)   ? NameInfo::Kind::regular
                : S_ISDIR(st.stx_mode) ? NameInfo::Kind::directory
                : S_ISLNK(st.stx_mode) ? NameInfo::Kind::link
                                       : NameInfo::Kind::other;
    info.device = ::makedev(st.stx_dev_major, st.stx_dev_minor);
    info.inode = st.stx_ino;
    info.mount = (st.stx_mask & STATX_MNT_ID) != 0 ? st.stx_mnt_id : info.device;
    info.links = st.stx_nlink;
    info.size = static_cast<std::int64_t>(st.stx_size);
    info.modified = st.stx_mtime.tv_sec * nanosecondsPerSecond + st.stx_mtime.tv_nsec;
    info.mode = st.stx_mode & permissionBits;
    info.owner = st.stx_uid;
    info.group = st.stx_gid;
    return 0;
}

int copyRegular(const std::string& from,
                const struct stat& st,
                const std::string& to,
                const std::function<bool()>& stop)
{
    const auto in = openName(from, O_RDONLY);
    if (!in)
        return errno;
    const auto out = openName(to, O_RDWR | O_CREAT | O_EXCL);
    if (!out)
        return errno;
    const int error = fillCopy(*in, st, to, *out, stop);
    if (error != 0)
        ::unlink(to.c_str());
    return error;
}
} // namespace

int PosixFileSystem::look(const CString& path, NameInfo& info)
{
    return lookBy(AT_SYMLINK_NOFOLLOW, toSystemPath(path), info);
}

int PosixFileSystem::lookThrough(const CString& path, NameInfo& info)
{
    return lookBy(0, toSystemPath(path), info);
}

int PosixFileSystem::giveRights(const CString& folder,
                                std::uint32_t mode,
                                std::uint32_t owner,
                                std::uint32_t group)
{
    const auto file = openName(toSystemPath(folder), O_RDONLY | O_DIRECTORY);
    if (!file)
        return errno;
    // Who may not give it away keeps it.
    (void)!::fchown(file->descriptor(), owner, group);
    return resultOf(::fchmod(file->descriptor(), mode));
}

int PosixFileSystem::mayChange(const CString& path)
{
    const std::string real = toSystemPath(path);
    struct stat st;
    if (real.empty() || ::stat(real.c_str(), &st) != 0)
        return real.empty() ? ENOENT : errno;
    return access(real, S_ISDIR(st.st_mode) ? W_OK | X_OK : W_OK);
}

int PosixFileSystem::mayRemove(const CString& path)
{
    const std::string real = toSystemPath(path);
    const std::string folder = folderAboveOf(real);
    struct statx st;
    struct statx above;
    if (const int error = access(folder, W_OK | X_OK))
        return error;
    if (::statx(AT_FDCWD, real.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &st) != 0 ||
        ::statx(AT_FDCWD, folder.c_str(), 0, STATX_BASIC_STATS, &above) != 0)
        return errno;
    // What its owner has made unchangeable keeps its name, also from the administrator.
    constexpr std::uint64_t fixed = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;
    if (((st.stx_attributes | above.stx_attributes) & fixed) != 0)
        return EPERM;
    const uid_t user = ::geteuid();
    const bool isOwn = user == 0 || user == st.stx_uid || user == above.stx_uid;
    return (above.stx_mode & S_ISVTX) != 0 && !isOwn ? EPERM : 0;
}

int PosixFileSystem::mayRead(const CString& path)
{
    const std::string real = toSystemPath(path);
    struct stat st;
    if (real.empty() || ::lstat(real.c_str(), &st) != 0)
        return real.empty() ? ENOENT : errno;
    return S_ISLNK(st.st_mode) ? 0 : access(real, S_ISDIR(st.st_mode) ? R_OK | X_OK : R_OK);
}

int PosixFileSystem::copyAsNew(const CString& from,
                               const CString& to,
                               const std::function<bool()>& stop)
{
    const std::string source = toSystemPath(from);
    const std::string target = toSystemPath(to);
    struct stat st;
    if (source.empty() || target.empty())
        return ENOENT;
    if (::lstat(source.c_str(), &st) != 0)
        return errno;
    if (S_ISLNK(st.st_mode))
        return copyLink(source, st, target);
    return S_ISREG(st.st_mode) ? copyRegular(source, st, target, stop) : EINVAL;
}

int PosixFileSystem::compareFiles(const CString& one,
                                  const CString& other,
                                  const std::function<bool()>& stop)
{
    const auto a = openName(toSystemPath(one), O_RDONLY);
    const auto b = a ? openName(toSystemPath(other), O_RDONLY) : nullptr;
    return b ? compareContent(*a, *b, stop) : errno;
}

int PosixFileSystem::sync(const CString& path)
{
    return syncBy(toSystemPath(path), ::fsync);
}

int PosixFileSystem::syncAll(const CString& folder)
{
    return syncBy(toSystemPath(folder), ::syncfs);
}

int PosixFileSystem::room(const CString& folder, std::uint64_t& bytes)
{
    struct statvfs disk;
    if (::statvfs(toSystemPath(folder).c_str(), &disk) != 0)
        return errno;
    bytes = std::uint64_t(disk.f_bavail) * disk.f_frsize;
    return disk.f_blocks > 0 ? 0 : ENOTSUP;
}
} // namespace qo
