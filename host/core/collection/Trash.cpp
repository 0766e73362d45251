#include "core/collection/Trash.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace qo::host
{
/// A trash that can take what lies on one file system.
struct Trash::Place
{
    std::string folder;
    std::string top; ///< notes name paths from here; "" for the home trash, whose are absolute
};

namespace
{
constexpr std::size_t longestName = 255;
constexpr std::string_view infoEnd = ".trashinfo";
constexpr std::size_t roomToWrite = 4; ///< a note is written under a longer name first

[[noreturn]] void refuse(const std::string& path, const std::string& cause)
{
    throw HostError(ExitCode::failed,
                    path + " cannot be put into the trash: " + cause + "; it is where it was");
}

/// Tells file systems apart, and two mounts of one. 0 for what is not there.
std::uint64_t mountOf(const std::string& path)
{
    NameInfo info;
    return disk::look(path, info) == 0 ? info.mount : 0;
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
    const int made = disk::makeFolder(folder);
    NameInfo info;
    if (made != 0 && made != EEXIST)
        return made;
    if (const int error = disk::look(folder, info))
        return error;
    if (info.kind != NameInfo::Kind::directory)
        return ENOTDIR;
    return info.owner == ::geteuid() ? 0 : EPERM;
}

/// The administrator's common trash counts only if nobody can remove what is another's in it.
bool isSharedTrash(const std::string& folder)
{
    constexpr std::uint32_t sticky = 01000;
    NameInfo info;
    return disk::look(folder, info) == 0 && info.kind == NameInfo::Kind::directory &&
           (info.mode & sticky) != 0;
}

std::string infoText(const std::string& path, const std::string& top)
{
    const std::string original = top.empty() ? path : path.substr(top == "/" ? 1 : top.size() + 1);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char date[32];
    std::strftime(date, sizeof(date), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(original, "-_.!~*'()/") +
           "\nDeletionDate=" + date + "\n";
}

/// "song.mp3", "song.2.mp3", ...: cut so that the name of the note about it fits as well.
std::string numbered(const std::string& name, int number)
{
    const std::size_t dot = name.rfind('.');
    const bool hasEnd = dot != std::string::npos && dot > 0 && name.size() - dot <= 16;
    const std::string end = (number == 1 ? std::string() : "." + std::to_string(number)) +
                            (hasEnd ? name.substr(dot) : std::string());
    std::string stem = hasEnd ? name.substr(0, dot) : name;
    std::size_t length =
        std::min(stem.size(), longestName - infoEnd.size() - roomToWrite - end.size());
    while (length < stem.size() && length > 1 && (stem[length] & 0xC0) == 0x80)
        --length;
    return stem.substr(0, length) + end;
}

} // namespace

Trash::Trash(std::string homeTrash) : m_homeTrash(std::move(homeTrash)) {}

Trash Trash::onTrial()
{
    Trash trash;
    trash.m_isTrial = true;
    return trash;
}

/// Has the folder be there and be the user's own. An error number, 0 for success.
int Trash::needFolder(const std::string& folder) const
{
    if (m_isTrial && disk::isNothingAt(folder))
        return fileSystem().mayChange(fromSystemPath(disk::nearestFolder(folder)));
    return makeOwnFolder(folder);
}

std::string Trash::ofThisUser()
{
    // An entry that is no absolute path does not count.
    const char* const data = std::getenv("XDG_DATA_HOME"); // NOLINT(concurrency-mt-unsafe)
    if (data && data[0] == '/')
        return std::string(data) + "/Trash";
    return toSystemPath(specialFolders().home()) + "/.local/share/Trash";
}

std::string Trash::homeFolderOn(std::uint64_t mount, const std::string& path) const
{
    NameInfo info;
    if (disk::look(m_homeTrash, info) != 0 || info.kind != NameInfo::Kind::link)
        return m_homeTrash;
    const std::string real = resolvedPath(m_homeTrash);
    if (real.empty() || disk::lookAtFolder(real, info) != 0 || info.owner != ::geteuid() ||
        info.mount != mount)
        refuse(path,
               "the trash " + m_homeTrash +
                   " is a symbolic link to what is no folder of yours on the same file system");
    return real;
}

Trash::Place Trash::trashFor(const std::string& path) const
{
    const std::uint64_t mount = mountOf(path);
    if (mountOf(disk::nearestFolder(m_homeTrash)) == mount)
    {
        const std::string above = parentOf(m_homeTrash);
        if (const int error =
                m_isTrial ? fileSystem().mayChange(fromSystemPath(disk::nearestFolder(above)))
                          : fileSystem().makeDirectories(fromSystemPath(above)))
            refuse(path, above + " cannot be made: " + errorWords(error));
        return {homeFolderOn(mount, path), {}};
    }
    const std::string top = topOf(path);
    const std::string base = top == "/" ? std::string() : top;
    const std::string user = std::to_string(::geteuid());
    const std::string shared = base + "/.Trash";
    if (isSharedTrash(shared) && needFolder(shared + "/" + user) == 0)
        return {shared + "/" + user, top};
    return {shared + "-" + user, top};
}

Trash::Item Trash::placeFor(const std::string& path, const std::set<std::string>& takenNotes) const
{
    NameInfo info;
    if (const int error = disk::look(path, info))
        refuse(path, errorWords(error));
    if (info.kind == NameInfo::Kind::directory && info.mount != mountOf(parentOf(path)))
        refuse(path, "it is a mount point");
    const Place place = trashFor(path);
    for (const char* part : {"", "/files", "/info"})
    {
        if (const int error = needFolder(place.folder + part))
            refuse(path,
                   "the trash " + place.folder + part + " cannot be used: " + errorWords(error));
    }
    constexpr int tries = 100'000;
    const std::string name = path.substr(path.rfind('/') + 1);
    for (int i = 1; i <= tries; ++i)
    {
        const std::string file = place.folder + "/files/" + numbered(name, i);
        const std::string note = noteOf(file);
        if (!takenNotes.contains(note) && disk::isNothingAt(note) && disk::isNothingAt(file))
            return {file, note, infoText(path, place.top)};
    }
    refuse(path, errorWords(EEXIST));
}

Trash::Item Trash::put(const std::string& path) const
{
    const Item item = placeFor(path);
    if (const int error = disk::writeNew(item.note, item.text))
        refuse(path, item.note + ": " + errorWords(error));
    const int error = disk::moveNoReplace(path, item.file);
    if (error == 0)
        return item;
    (void)disk::removeFile(item.note);
    refuse(path, errorWords(error));
}

std::string Trash::noteOf(const std::string& file)
{
    return parentOf(parentOf(file)) + "/info/" + file.substr(file.rfind('/') + 1) +
           std::string(infoEnd);
}

bool Trash::canHold(const std::string& file) const
{
    const std::string files = parentOf(file);
    const std::string folder = parentOf(files);
    const std::string user = std::to_string(::geteuid());
    const std::string name = folder.substr(folder.rfind('/') + 1);
    return files.ends_with("/files") &&
           (folder == m_homeTrash || folder == resolvedPath(m_homeTrash) ||
            name == ".Trash-" + user || folder.ends_with("/.Trash/" + user));
}
} // namespace qo::host
