#include "platform/posix/PosixFileSystem.h"

#include "platform/DriveMap.h"
#include "platform/TemporaryNames.h"
#include "platform/posix/CopyContent.h"
#include "platform/posix/OpenFolder.h"
#include "platform/posix/PosixFile.h"
#include "platform/posix/Rename.h"
#include "types/CharClass.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

// info() and list() convert what statx says; readPath() finds a name in another case; open()
// protects against devices and pipes; Temporary is the file beside a target that copyFile() and
// replaceFile() rename.

namespace qo
{
namespace
{
constexpr unsigned statMask = STATX_BASIC_STATS | STATX_BTIME;
constexpr mode_t ownerFile = 0600;
constexpr mode_t ownerFolder = 0700;

/// The error number of a system call.
int answer(int result)
{
    return result == 0 ? 0 : errno;
}

/// Ticks of 100 ns; what is finer is cut off.
FILETIME toFileTime(const struct statx_timestamp& time)
{
    return fromUnixTime(time.tv_sec, time.tv_nsec);
}

/// Fills FileInfo from what statx reported. A name that begins with a point is hidden.
void convert(const struct statx& st, const char* name, FileInfo& info)
{
    info.kind = S_ISREG(st.stx_mode)
                    ? FileKind::regular
                    : (S_ISDIR(st.stx_mode) ? FileKind::directory : FileKind::other);
    info.attributes = (info.kind == FileKind::directory ? attribute::directory : 0) |
                      (st.stx_mode & S_IWUSR ? 0 : attribute::readOnly) |
                      (name[0] == '.' ? attribute::hidden : 0);
    if (info.attributes == 0)
        info.attributes = attribute::normal;
    info.size = static_cast<std::int64_t>(st.stx_size);
    info.modified = toFileTime(st.stx_mtime);
    info.accessed = toFileTime(st.stx_atime);
    // Without a birth time the earlier of the two other times is closest to it.
    const FILETIME changed = toFileTime(st.stx_ctime);
    if (st.stx_mask & STATX_BTIME)
        info.created = toFileTime(st.stx_btime);
    else
        info.created = toTicks(changed) < toTicks(info.modified) ? changed : info.modified;
    info.device = std::uint64_t(st.stx_dev_major) << 32 | st.stx_dev_minor;
    info.inode = st.stx_ino;
    info.links = st.stx_nlink;
}

/// The properties of a file whose name is relative to an open folder. Does not mount anything.
int statAt(int dir, const char* path, const char* name, FileInfo& info)
{
    struct statx st;
    if (::statx(dir, path, AT_STATX_SYNC_AS_STAT | AT_NO_AUTOMOUNT, statMask, &st) != 0)
        return errno;
    convert(st, name, info);
    return 0;
}

/// The last name of a path, by which a file is hidden or not.
const char* lastName(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return path.c_str() + (slash == std::string::npos ? 0 : slash + 1);
}

/// The devices of /proc, /sys and /dev, which belong to the running system and contain no media.
/// One of these that is not mounted separately is left out.
const std::vector<std::uint64_t>& systemDevices()
{
    static const std::vector<std::uint64_t> devices = []
    {
        std::vector<std::uint64_t> found;
        FileInfo root;
        FileInfo folder;
        statAt(AT_FDCWD, "/", "", root);
        for (const char* path : {"/proc", "/sys", "/dev"})
        {
            if (statAt(AT_FDCWD, path, "", folder) == 0 && folder.device != root.device)
                found.push_back(folder.device);
        }
        return found;
    }();
    return devices;
}

/// Whether a folder belongs to these, by its device or by its place.
bool leadsIntoSystem(const std::string& folder, const char* name, const FileInfo& info)
{
    const std::vector<std::uint64_t>& devices = systemDevices();
    if (std::find(devices.begin(), devices.end(), info.device) != devices.end())
        return true;
    const std::string_view plain = name;
    return folder == "/" && (plain == "proc" || plain == "sys" || plain == "dev");
}

/// Whether the name is a link, without following it.
bool isLinkAt(int dir, const char* name)
{
    struct stat st;
    return ::fstatat(dir, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode);
}

bool isDots(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

/// The only name in the folder that differs from this one in case alone; "" if there is none, or
/// more than one.
std::string onlyMatch(const std::string& folder, const CString& name)
{
    const OpenFolder dir(::opendir(folder.empty() ? "/" : folder.c_str()));
    std::string found;
    int hits = 0;
    while (const dirent* entry = dir ? ::readdir(dir.get()) : nullptr)
    {
        if (DriveMap::nameFromSystem(entry->d_name).CompareNoCase(name) == 0)
        {
            found = entry->d_name;
            ++hits;
        }
    }
    return hits == 1 ? found : std::string();
}

/// Follows the path from the root; for each name that does not exist it takes the only match
/// without regard to case. "" if there is none.
std::string matchAnyCase(const std::string& path)
{
    std::string real;
    std::size_t begin = 1;
    while (begin < path.size())
    {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        const std::string exact = real + "/" + name;
        if (::access(exact.c_str(), F_OK) == 0)
            real = exact;
        else
        {
            const std::string match = onlyMatch(real, DriveMap::nameFromSystem(name));
            if (match.empty())
                return {};
            real += "/" + match;
        }
        begin = end + 1;
    }
    return real.empty() ? "/" : real;
}

/// O_NONBLOCK keeps open() from waiting for the other end of a pipe.
int flagsOf(OpenMode mode)
{
    switch (mode)
    {
    case OpenMode::read:
        return O_RDONLY | O_NONBLOCK;
    case OpenMode::createAlways:
        return O_RDWR | O_CREAT | O_TRUNC;
    case OpenMode::append:
        return O_RDWR | O_CREAT | O_APPEND;
    case OpenMode::update:
        return O_RDWR;
    }
    return O_RDONLY;
}

/// Flushes the folder of a file, so that a rename in it lasts.
int syncFolderOf(const std::string& path)
{
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    PosixFile file(descriptor);
    return file.sync();
}

/// A file under a free name beside the target; it is removed unless it is put in place.
class Temporary
{
public:
    explicit Temporary(const std::string& target)
        : m_target(target), m_name(temporaryBeside(target))
    {
        const int descriptor = ::mkostemp(m_name.data(), O_CLOEXEC);
        m_error = descriptor < 0 ? errno : 0;
        if (descriptor >= 0)
            m_file = std::make_unique<PosixFile>(descriptor);
    }
    ~Temporary()
    {
        if (m_file)
            ::unlink(m_name.c_str());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    PosixFile* file() { return m_file.get(); }
    int error() const { return m_error; }

    // Renames the file over the target; durable flushes the content before and the folder after it.
    int putInPlace(Durability durability)
    {
        const bool durable = durability == Durability::durable;
        int error = durable ? m_file->sync() : 0;
        if (error == 0)
            error = answer(::rename(m_name.c_str(), m_target.c_str()));
        if (error != 0)
            return error;
        m_file.reset();
        return durable ? syncFolderOf(m_target) : 0;
    }

private:
    std::string m_target;
    std::string m_name;
    std::unique_ptr<PosixFile> m_file;
    int m_error = 0;
};
} // namespace

std::string PosixFileSystem::readPath(const CString& path)
{
    std::string real = toSystemPath(path);
    if (!real.empty() && ::access(real.c_str(), F_OK) != 0 && errno == ENOENT)
    {
        std::string match = matchAnyCase(real);
        if (!match.empty())
            return match;
    }
    return real;
}

int PosixFileSystem::info(const CString& path, Spelling spelling, FileInfo& info)
{
    const std::string real = toSystemPath(path);
    if (real.empty())
        return ENOENT;
    const int error = statAt(AT_FDCWD, real.c_str(), lastName(real), info);
    if (error != ENOENT || spelling == Spelling::exact)
        return error;
    const std::string match = matchAnyCase(real);
    return match.empty() ? ENOENT : statAt(AT_FDCWD, match.c_str(), lastName(match), info);
}

int PosixFileSystem::list(const CString& folder, std::vector<DirEntry>& entries)
{
    entries.clear();
    const std::string real = readPath(folder);
    if (real.empty())
        return ENOENT;
    const OpenFolder dir(::opendir(real.c_str()));
    if (!dir)
        return errno;
    const int descriptor = ::dirfd(dir.get());
    int error = 0;
    int partError = 0;
    for (;;)
    {
        errno = 0;
        const dirent* found = ::readdir(dir.get());
        if (!found)
        {
            error = errno;
            break;
        }
        const char* name = found->d_name;
        if (isDots(name) || isTemporaryName(name))
            continue;
        DirEntry entry;
        // Some file systems do not report the kind of an entry.
        const bool isLink =
            found->d_type == DT_LNK || (found->d_type == DT_UNKNOWN && isLinkAt(descriptor, name));
        if (const int unknown = statAt(descriptor, name, name, entry.info); unknown && !isLink)
        {
            partError = unknown != ENOENT ? unknown : partError;
            continue;
        }
        entry.info.isLink = isLink;
        if (entry.info.kind == FileKind::directory && leadsIntoSystem(real, name, entry.info))
            continue;
        entry.name = DriveMap::nameFromSystem(name);
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(),
              entries.end(),
              [](const DirEntry& a, const DirEntry& b)
              {
                  const int order = a.name.CompareNoCase(b.name);
                  return order != 0 ? order < 0 : a.name < b.name;
              });
    return error != 0 ? error : partError;
}

std::unique_ptr<IFile> PosixFileSystem::open(const CString& path, OpenMode mode, int& error)
{
    std::string real = toSystemPath(path);
    error = ENOENT;
    if (real.empty())
        return nullptr;
    // The check before opening avoids touching devices; the check after it covers a change in
    // between.
    FileInfo found;
    int missing = statAt(AT_FDCWD, real.c_str(), lastName(real), found);
    if (missing == ENOENT && mode == OpenMode::read)
    {
        real = readPath(path);
        missing = statAt(AT_FDCWD, real.c_str(), lastName(real), found);
    }
    // An existing file must be regular in every mode; a missing one is an error unless the mode
    // creates.
    const bool mayCreate = mode == OpenMode::createAlways || mode == OpenMode::append;
    if (missing == 0 ? found.kind != FileKind::regular : !mayCreate)
    {
        error = missing != 0 ? missing : (found.kind == FileKind::directory ? EISDIR : EINVAL);
        return nullptr;
    }
    const int descriptor = ::open(real.c_str(), flagsOf(mode) | O_CLOEXEC | O_NOCTTY, ownerFile);
    if (descriptor < 0)
    {
        error = errno;
        return nullptr;
    }
    struct stat st;
    const bool isRegular = ::fstat(descriptor, &st) == 0 && S_ISREG(st.st_mode);
    auto file = std::make_unique<PosixFile>(descriptor, isRegular ? st.st_size : 0);
    if (!isRegular)
    {
        error = EINVAL;
        return nullptr;
    }
    if (mode == OpenMode::append)
        file->seekToEnd();
    error = 0;
    return file;
}

int PosixFileSystem::makeDirectory(const CString& path)
{
    const std::string real = toSystemPath(path);
    return real.empty() ? ENOENT : answer(::mkdir(real.c_str(), ownerFolder));
}

int PosixFileSystem::makeDirectories(const CString& path)
{
    const std::string real = toSystemPath(path);
    if (real.empty())
        return ENOENT;
    // Mostly the folder exists, which one call shows.
    FileInfo known;
    if (statAt(AT_FDCWD, real.c_str(), lastName(real), known) == 0 &&
        known.kind == FileKind::directory)
        return 0;
    for (std::size_t slash = real.find('/', 1);; slash = real.find('/', slash + 1))
    {
        const std::string part = real.substr(0, slash);
        struct stat st;
        if (::mkdir(part.c_str(), ownerFolder) != 0)
        {
            const int error = errno;
            if (::stat(part.c_str(), &st) != 0)
                return error;
            if (!S_ISDIR(st.st_mode))
                return ENOTDIR;
        }
        if (slash == std::string::npos)
            return 0;
    }
}

int PosixFileSystem::removeFile(const CString& path)
{
    const std::string real = toSystemPath(path);
    return real.empty() ? ENOENT : answer(::unlink(real.c_str()));
}

int PosixFileSystem::removeDirectory(const CString& path)
{
    const std::string real = toSystemPath(path);
    return real.empty() ? ENOENT : answer(::rmdir(real.c_str()));
}

int PosixFileSystem::moveFile(const CString& from, const CString& to)
{
    const std::string source = toSystemPath(from);
    const std::string target = toSystemPath(to);
    return source.empty() || target.empty() ? ENOENT
                                            : answer(::rename(source.c_str(), target.c_str()));
}

int PosixFileSystem::moveFileNoReplace(const CString& from, const CString& to)
{
    const std::string source = toSystemPath(from);
    const std::string target = toSystemPath(to);
    return source.empty() || target.empty() ? ENOENT : renameNoReplace(source, target);
}

/// Writes to a temporary file beside the target, so the target is complete or as before.
int PosixFileSystem::copyFile(const CString& from, const CString& to)
{
    int error = 0;
    const std::unique_ptr<IFile> source = open(from, OpenMode::read, error);
    if (!source)
        return error;
    const std::string target = toSystemPath(to);
    if (target.empty())
        return ENOENT;
    auto& in = static_cast<PosixFile&>(*source);
    struct stat st;
    if (::fstat(in.descriptor(), &st) != 0)
        return errno;
    Temporary copy(target);
    if (!copy.file())
        return copy.error();
    error = copyContent(in, *copy.file());
    if (error != 0)
        return error;
    const timespec times[] = {st.st_atim, st.st_mtim};
    if (::futimens(copy.file()->descriptor(), times) != 0)
        return errno;
    return copy.putInPlace(Durability::durable);
}

int PosixFileSystem::replaceFile(const CString& path,
                                 const void* data,
                                 std::size_t size,
                                 Durability durability)
{
    const std::string target = toSystemPath(path);
    if (target.empty())
        return ENOENT;
    Temporary fresh(target);
    if (!fresh.file())
        return fresh.error();
    if (!fresh.file()->write(data, size))
        return fresh.file()->error();
    return fresh.putInPlace(durability);
}

int PosixFileSystem::makeWritable(const CString& path)
{
    const std::string real = toSystemPath(path);
    struct stat st;
    if (real.empty())
        return ENOENT;
    if (::stat(real.c_str(), &st) != 0)
        return errno;
    return st.st_mode & S_IWUSR ? 0 : answer(::chmod(real.c_str(), (st.st_mode & 07777) | S_IWUSR));
}

bool PosixFileSystem::isLink(const CString& path)
{
    const std::string real = toSystemPath(path);
    return !real.empty() && isLinkAt(AT_FDCWD, real.c_str());
}
} // namespace qo
