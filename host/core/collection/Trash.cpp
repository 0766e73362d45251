#include "core/collection/Trash.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>

namespace qo::host
{
/// A trash that can take what lies on one file system.
struct Trash::Place
{
    std::string folder;
    std::string top; ///< paths are told relative to it; "" for the home trash, which tells them all
};

namespace
{
constexpr mode_t ownerFolder = 0700;
constexpr mode_t ownerFile = 0600;
constexpr std::size_t longestName = 255;
constexpr std::string_view infoEnd = ".trashinfo";

[[noreturn]] void refuse(const std::string& path, const std::string& cause)
{
    throw HostError(ExitCode::failed,
                    path + " cannot be put into the trash: " + cause + "; it is where it was");
}

/// Tells file systems apart, and two mounts of one: nothing can be renamed from one to the other.
/// Never 0 for what exists.
std::uint64_t mountOf(const std::string& path)
{
    struct statx found;
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_MNT_ID, &found) != 0)
        return 0;
    return (found.stx_mask & STATX_MNT_ID) != 0
               ? found.stx_mnt_id
               : ::makedev(found.stx_dev_major, found.stx_dev_minor) + 1;
}

/// The nearest folder on the way up that is there.
std::string nearestFolder(std::string path)
{
    struct stat st;
    while (path != "/" && ::stat(path.c_str(), &st) != 0)
        path = parentOf(path);
    return path;
}

/// The highest folder above that lies on the same mount.
std::string topOf(const std::string& path)
{
    const std::uint64_t mount = mountOf(parentOf(path));
    std::string top = parentOf(path);
    while (top != "/" && mountOf(parentOf(top)) == mount)
        top = parentOf(top);
    return top;
}

/// Makes a folder that is the user's own, or finds it so: what others can put a link in the place
/// of must not be trusted. An error number, 0 for success.
int makeOwnFolder(const std::string& folder)
{
    if (::mkdir(folder.c_str(), ownerFolder) != 0 && errno != EEXIST)
        return errno;
    struct stat st;
    if (::lstat(folder.c_str(), &st) != 0)
        return errno;
    if (!S_ISDIR(st.st_mode))
        return ENOTDIR;
    return st.st_uid == ::geteuid() ? 0 : EPERM;
}

/// The administrator's common trash counts only if nobody can remove what is another's in it.
bool isSharedTrash(const std::string& folder)
{
    struct stat st;
    return ::lstat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && (st.st_mode & S_ISVTX) != 0;
}

std::string percentEncoded(const std::string& path)
{
    static constexpr std::string_view plain = "-_.!~*'()/";
    std::string text;
    for (const char c : path)
    {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || plain.find(c) != std::string_view::npos;
        char escaped[4] = {c, 0, 0, 0};
        if (!isPlain)
            std::snprintf(escaped, sizeof(escaped), "%%%02X", static_cast<unsigned char>(c));
        text += escaped;
    }
    return text;
}

std::string infoText(const std::string& path, const std::string& top)
{
    const std::string told = top.empty() ? path : path.substr(top == "/" ? 1 : top.size() + 1);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char date[32];
    std::strftime(date, sizeof(date), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(told) + "\nDeletionDate=" + date + "\n";
}

/// "song.mp3", "song.2.mp3", ...: cut so that the name of the note about it fits as well.
std::string numbered(const std::string& name, int number)
{
    const std::size_t dot = name.rfind('.');
    const bool hasEnd = dot != std::string::npos && dot > 0 && name.size() - dot <= 16;
    const std::string end = (number == 1 ? std::string() : "." + std::to_string(number)) +
                            (hasEnd ? name.substr(dot) : std::string());
    std::string stem = hasEnd ? name.substr(0, dot) : name;
    std::size_t length = std::min(stem.size(), longestName - infoEnd.size() - end.size());
    while (length < stem.size() && length > 1 && (stem[length] & 0xC0) == 0x80)
        --length;
    return stem.substr(0, length) + end;
}

/// A new file with that content on the disk; an error number, 0 for success.
int writeNew(const std::string& path, const std::string& text)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerFile);
    if (file < 0)
        return errno;
    std::size_t done = 0;
    int error = 0;
    while (done < text.size() && error == 0)
    {
        const ssize_t wrote = ::write(file, text.data() + done, text.size() - done);
        done += wrote > 0 ? static_cast<std::size_t>(wrote) : 0;
        error = wrote < 0 && errno != EINTR ? errno : 0;
    }
    if (error == 0 && ::fsync(file) != 0)
        error = errno;
    ::close(file);
    if (error != 0)
        ::unlink(path.c_str());
    return error;
}

int renameNoReplace(const std::string& from, const std::string& to)
{
    return fileSystem().moveFileNoReplace(fromSystemPath(from), fromSystemPath(to));
}

/// The note first: what has none cannot be found again.
int putInto(const std::string& folder,
            const std::string& path,
            const std::string& text,
            Trash::Item& item)
{
    constexpr int tries = 100'000;
    const std::string name = path.substr(path.rfind('/') + 1);
    for (int i = 1; i <= tries; ++i)
    {
        const std::string free = numbered(name, i);
        item = {path, folder + "/files/" + free, folder + "/info/" + free + std::string(infoEnd)};
        int error = writeNew(item.info, text);
        if (error == 0)
        {
            error = renameNoReplace(path, item.file);
            if (error != 0)
                ::unlink(item.info.c_str());
        }
        if (error != EEXIST)
            return error;
    }
    return EEXIST;
}
} // namespace

Trash::Trash(std::string homeTrash) : m_homeTrash(std::move(homeTrash)) {}

std::string Trash::ofThisUser()
{
    // An entry that is no absolute path does not count.
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data && data[0] == '/')
        return std::string(data) + "/Trash";
    return toSystemPath(specialFolders().home()) + "/.local/share/Trash";
}

std::string Trash::homeFolderOn(std::uint64_t mount, const std::string& path) const
{
    struct stat st;
    if (::lstat(m_homeTrash.c_str(), &st) != 0 || !S_ISLNK(st.st_mode))
        return m_homeTrash;
    const std::string real = resolvedPath(m_homeTrash);
    if (real.empty() || ::stat(real.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) ||
        st.st_uid != ::geteuid() || mountOf(real) != mount)
        refuse(path,
               "the trash " + m_homeTrash +
                   " is a symbolic link to what is no folder of yours on the same file system");
    return real;
}

Trash::Place Trash::placeFor(const std::string& path) const
{
    const std::uint64_t mount = mountOf(path);
    if (mountOf(nearestFolder(m_homeTrash)) == mount)
    {
        if (const int error = fileSystem().makeDirectories(fromSystemPath(parentOf(m_homeTrash))))
            refuse(path, parentOf(m_homeTrash) + " cannot be made: " + errorWords(error));
        return {homeFolderOn(mount, path), {}};
    }
    const std::string top = topOf(path);
    const std::string base = top == "/" ? std::string() : top;
    const std::string user = std::to_string(::geteuid());
    const std::string shared = base + "/.Trash";
    if (isSharedTrash(shared) && makeOwnFolder(shared + "/" + user) == 0)
        return {shared + "/" + user, top};
    return {shared + "-" + user, top};
}

Trash::Item Trash::put(const std::string& path) const
{
    struct stat st;
    if (::lstat(path.c_str(), &st) != 0)
        refuse(path, errorWords(errno));
    if (S_ISDIR(st.st_mode) && mountOf(path) != mountOf(parentOf(path)))
        refuse(path, "it is a mount point");
    const Place place = placeFor(path);
    for (const char* part : {"", "/files", "/info"})
    {
        if (const int error = makeOwnFolder(place.folder + part))
            refuse(path,
                   "the trash " + place.folder + part + " cannot be used: " + errorWords(error));
    }
    Item item;
    if (const int error = putInto(place.folder, path, infoText(path, place.top), item))
        refuse(path, errorWords(error));
    return item;
}

int Trash::putBack(const Item& item)
{
    if (const int error = renameNoReplace(item.file, item.original))
        return error;
    ::unlink(item.info.c_str());
    return 0;
}
} // namespace qo::host
