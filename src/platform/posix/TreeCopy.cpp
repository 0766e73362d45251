#include "platform/TreeCopy.h"

#include "platform/FileSystem.h"
#include "platform/TemporaryNames.h"
#include "platform/posix/FileAttributes.h"
#include "platform/posix/PosixFile.h"
#include "platform/posix/Rename.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

// The source is listed completely before anything is copied, parents before their content, and each
// entry remembers the source and later its copy. So removing the source or the copy can check,
// entry by entry, that it is still what was copied.

namespace qo
{
namespace
{
constexpr std::size_t blockSize = std::size_t(256) << 10;
constexpr mode_t ownerFolder = 0700;
constexpr mode_t ownerFile = 0600;

/// A file, link or folder of the source.
struct Entry
{
    std::string name; ///< relative to the root of the copy: "" or "/a/b"
    struct stat st;
    struct stat copied; ///< the copy's state when it was complete
};

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

/// Whether nothing has changed: the same inode and mode and, for files and links, size and write
/// time.
bool isSame(const struct stat& a, const struct stat& b)
{
    const bool isSameFile = a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_mode == b.st_mode;
    return isSameFile &&
           (S_ISDIR(a.st_mode) || (a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
                                   a.st_mtim.tv_nsec == b.st_mtim.tv_nsec));
}

/// The names in a folder, without "." and "..".
int listNames(const std::string& folder, std::vector<std::string>& names)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
    if (!dir)
        return errno;
    for (;;)
    {
        errno = 0;
        const dirent* entry = ::readdir(dir.get());
        if (!entry)
            return errno;
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
}

/// Opens a file or folder without following a link at its end; null, with errno, on failure.
std::unique_ptr<PosixFile> openFile(const std::string& path, int flags)
{
    const int descriptor =
        ::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, ownerFile);
    return descriptor < 0 ? nullptr : std::make_unique<PosixFile>(descriptor);
}

/// Flushes a file or folder.
int syncPath(const std::string& path)
{
    const auto file = openFile(path, O_RDONLY);
    return file ? file->sync() : errno;
}

/// Sets access and write time, for links those of the link. Failures are ignored.
void giveTimes(const std::string& path, const struct stat& st)
{
    const timespec times[] = {st.st_atim, st.st_mtim};
    ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

/// Removes one file, link or empty folder; success if it is gone already.
int removeEntry(const std::string& path, const struct stat& st)
{
    const int result = S_ISDIR(st.st_mode) ? ::rmdir(path.c_str()) : ::unlink(path.c_str());
    return result == 0 || errno == ENOENT ? 0 : errno;
}
} // namespace

/// Everything a copy knows about itself, and its steps.
struct TreeCopy::State
{
    std::string from;
    std::string to;
    std::string stagingName; ///< "" for a random one
    std::string holder;      ///< the staging folder while it exists, else ""
    std::string staged;
    std::string failed;
    std::vector<Entry> entries; ///< folders before their content
    std::function<bool()> stop;
    std::unique_ptr<char[]> block{new char[blockSize]};
    std::unique_ptr<char[]> otherBlock{new char[blockSize]};

    // Remembers the path of a failure and returns its number.
    int fail(const std::string& path, int error)
    {
        failed = path;
        return error;
    }
    bool isStopped() const { return stop && stop(); }

    // Fills entries from the source.
    int list();
    int addEntry(const std::string& name);
    int copyAll(const std::string& target);
    int copyEntry(const Entry& entry, const std::string& target);
    int copyLink(const Entry& entry, const std::string& target) const;
    int copyFile(const Entry& entry, const std::string& target);
    int compare(const std::string& source, const std::string& target);
    int finishFolders(const std::string& target);
    int removeAll(const std::string& root);
    int noteCopies(const std::string& root);
    int removeCopies();
    int makeHolder();
    void dropHolder();
};

/// Adds one entry of the source. Refuses what cannot be copied, and anything on another file
/// system: that is mounted there.
int TreeCopy::State::addEntry(const std::string& name)
{
    Entry entry{name, {}, {}};
    const std::string path = from + name;
    if (::lstat(path.c_str(), &entry.st) != 0)
        return fail(path, errno);
    const mode_t mode = entry.st.st_mode;
    if (!S_ISREG(mode) && !S_ISLNK(mode) && !S_ISDIR(mode))
        return fail(path, EINVAL);
    if (!entries.empty() && entry.st.st_dev != entries.front().st.st_dev)
        return fail(path, EBUSY);
    entries.push_back(std::move(entry));
    return 0;
}

/// Breadth first: the list grows while it is walked, so no recursion is needed.
int TreeCopy::State::list()
{
    entries.clear();
    if (const int error = addEntry({}))
        return error;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        if (!S_ISDIR(entries[i].st.st_mode))
            continue;
        const std::string folder = entries[i].name;
        std::vector<std::string> names;
        if (const int error = listNames(from + folder, names))
            return fail(from + folder, error);
        for (const std::string& name : names)
        {
            if (const int error = isStopped() ? ECANCELED : addEntry(folder + "/" + name))
                return error;
        }
    }
    return 0;
}

/// Copies all entries below the target, which must not exist, and then completes the folders.
int TreeCopy::State::copyAll(const std::string& target)
{
    for (const Entry& entry : entries)
    {
        const int error = isStopped() ? ECANCELED : copyEntry(entry, target + entry.name);
        if (error != 0)
            return fail(failed.empty() ? from + entry.name : failed, error);
    }
    return finishFolders(target);
}

/// Folders get their final mode in finishFolders().
int TreeCopy::State::copyEntry(const Entry& entry, const std::string& target)
{
    if (S_ISDIR(entry.st.st_mode))
        return ::mkdir(target.c_str(), ownerFolder) == 0 ? 0 : errno;
    return S_ISLNK(entry.st.st_mode) ? copyLink(entry, target) : copyFile(entry, target);
}

/// Makes a link with the same text, whether or not that leads anywhere at the new place.
int TreeCopy::State::copyLink(const Entry& entry, const std::string& target) const
{
    std::string text(static_cast<std::size_t>(entry.st.st_size) + 1, '\0');
    const ssize_t length = ::readlink((from + entry.name).c_str(), text.data(), text.size());
    if (length < 0)
        return errno;
    text.resize(static_cast<std::size_t>(length));
    if (::symlink(text.c_str(), target.c_str()) != 0)
        return errno;
    giveTimes(target, entry.st);
    return 0;
}

/// Copies one file, flushes it and compares it with the source.
int TreeCopy::State::copyFile(const Entry& entry, const std::string& target)
{
    const std::string source = from + entry.name;
    const auto in = openFile(source, O_RDONLY);
    if (!in)
        return errno;
    const auto out = openFile(target, O_RDWR | O_CREAT | O_EXCL);
    if (!out)
        return errno;
    for (;;)
    {
        const std::int64_t got = isStopped() ? 0 : in->read(block.get(), blockSize);
        if (got < 0)
            return in->error();
        if (got == 0)
            break;
        if (!out->write(block.get(), static_cast<std::size_t>(got)))
            return out->error();
    }
    // What the other file system cannot store is not worth failing for.
    (void)copyAttributes(in->descriptor(), entry.st, out->descriptor());
    giveTimes(target, entry.st);
    if (const int error = out->sync())
        return error;
    // Drops the cached copy, since only what is read from the disk shows what is on it.
    (void)::posix_fadvise(out->descriptor(), 0, 0, POSIX_FADV_DONTNEED);
    return isStopped() ? ECANCELED : compare(source, target);
}

/// Compares the contents of two files; EIO if they differ.
int TreeCopy::State::compare(const std::string& source, const std::string& target)
{
    const auto a = openFile(source, O_RDONLY);
    const auto b = a ? openFile(target, O_RDONLY) : nullptr;
    if (!b)
        return errno;
    for (;;)
    {
        const std::int64_t got = a->read(block.get(), blockSize);
        const std::int64_t other = b->read(otherBlock.get(), blockSize);
        if (got < 0 || other < 0)
            return got < 0 ? a->error() : b->error();
        if (got != other ||
            std::memcmp(block.get(), otherBlock.get(), static_cast<std::size_t>(got)) != 0)
            return EIO;
        if (got == 0)
            return 0;
        if (isStopped())
            return ECANCELED;
    }
}

/// Sets times and modes of folders last: filling a folder changes its times, and may need more
/// rights than its mode gives.
int TreeCopy::State::finishFolders(const std::string& target)
{
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
    {
        if (!S_ISDIR(entry->st.st_mode))
            continue;
        const auto in = openFile(from + entry->name, O_RDONLY);
        const auto out = openFile(target + entry->name, O_RDONLY);
        if (!in || !out)
            return fail(from + entry->name, errno);
        (void)copyAttributes(in->descriptor(), entry->st, out->descriptor());
        giveTimes(target + entry->name, entry->st);
        if (const int error = out->sync())
            return fail(target + entry->name, error);
    }
    return 0;
}

/// Removes all entries below a root, content before folders. Goes on after a failure and returns
/// the first.
int TreeCopy::State::removeAll(const std::string& root)
{
    int first = 0;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
    {
        const int error = removeEntry(root + entry->name, entry->st);
        if (error != 0 && first == 0)
            first = fail(root + entry->name, error);
    }
    return first;
}

/// Remembers the state of each copy for removeCopies().
int TreeCopy::State::noteCopies(const std::string& root)
{
    for (Entry& entry : entries)
    {
        const std::string path = root + entry.name;
        if (::lstat(path.c_str(), &entry.copied) != 0)
            return fail(path, errno);
    }
    return 0;
}

/// Removes the copies that have not changed; anything else belongs to others.
int TreeCopy::State::removeCopies()
{
    int first = 0;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
    {
        const std::string path = to + entry->name;
        struct stat now;
        int error = 0;
        if (::lstat(path.c_str(), &now) != 0)
            error = errno == ENOENT ? 0 : errno;
        else
            error = isSame(entry->copied, now) ? removeEntry(path, now) : EBUSY;
        if (error != 0 && first == 0)
            first = fail(path, error);
    }
    return first;
}

/// Creates the staging folder beside the target, so that the final rename stays in one file system.
int TreeCopy::State::makeHolder()
{
    std::string folder = stagingName.empty() ? temporaryBeside(to) : folderOf(to) + stagingName;
    if (stagingName.empty() ? !::mkdtemp(folder.data()) : ::mkdir(folder.c_str(), ownerFolder) != 0)
        return fail(to, errno);
    holder = folder;
    staged = holder + "/copy";
    return 0;
}

/// Removes the staging folder, if it is empty.
void TreeCopy::State::dropHolder()
{
    if (!holder.empty())
        ::rmdir(holder.c_str());
    holder.clear();
}

TreeCopy::TreeCopy(const CString& from, const CString& to, const std::string& stagingName)
    : m_state(std::make_unique<State>())
{
    m_state->from = toSystemPath(from);
    m_state->to = toSystemPath(to);
    m_state->stagingName = stagingName;
}

/// A staged copy that was not put in its place is removed.
TreeCopy::~TreeCopy()
{
    if (m_state->holder.empty())
        return;
    m_state->removeAll(m_state->staged);
    m_state->dropHolder();
}

const std::string& TreeCopy::failedPath() const
{
    return m_state->failed;
}

const std::string& TreeCopy::stagedPath() const
{
    return m_state->staged;
}

int TreeCopy::copy(const std::function<bool()>& stop)
{
    const int error = stage(stop);
    return error != 0 ? error : putInPlace();
}

int TreeCopy::stage(const std::function<bool()>& stop)
{
    State& state = *m_state;
    state.failed.clear();
    state.stop = stop;
    if (state.from.empty() || state.to.empty())
        return ENOENT;
    // Everything is listed before the first byte is copied.
    if (const int error = state.list())
        return error;
    // A killed run with this name may have left its folder.
    if (!state.stagingName.empty())
    {
        if (const int error = removeStaged())
            return error;
    }
    if (const int error = state.makeHolder())
        return error;
    int error = state.copyAll(state.staged);
    if (error == 0)
        error = state.noteCopies(state.staged);
    if (error == 0)
        return 0;
    const std::string failed = state.failed.empty() ? state.to : state.failed;
    state.removeAll(state.staged);
    state.failed = failed;
    state.dropHolder();
    return error;
}

int TreeCopy::putInPlace()
{
    State& state = *m_state;
    int error = renameNoReplace(state.staged, state.to);
    // After the rename, removal goes by the remembered state, since others can see the copy now.
    const bool isInPlace = error == 0;
    if (isInPlace)
        error = syncPath(folderOf(state.to));
    if (error != 0)
    {
        const std::string failed = state.failed.empty() ? state.to : state.failed;
        isInPlace ? state.removeCopies() : state.removeAll(state.staged);
        state.failed = failed;
    }
    state.dropHolder();
    return error;
}

int TreeCopy::removeStaged()
{
    State& state = *m_state;
    if (state.stagingName.empty() || state.to.empty())
        return EINVAL;
    std::error_code error;
    const std::string folder = folderOf(state.to) + state.stagingName;
    // Does not follow a link that somebody has put there, and removes only what a copy creates.
    if (std::filesystem::symlink_status(folder, error).type() !=
        std::filesystem::file_type::directory)
        return 0;
    std::filesystem::remove_all(folder + "/copy", error);
    if (error || ::rmdir(folder.c_str()) != 0)
        return state.fail(folder, error ? error.value() : errno);
    return 0;
}

/// First everything is checked and then everything removed, so a change found late removes nothing.
int TreeCopy::removeSource()
{
    State& state = *m_state;
    for (const Entry& entry : state.entries)
    {
        struct stat now;
        if (::lstat((state.from + entry.name).c_str(), &now) != 0)
            return state.fail(state.from + entry.name, errno);
        if (!isSame(entry.st, now))
            return state.fail(state.from + entry.name, EBUSY);
    }
    return state.removeAll(state.from);
}

int TreeCopy::removeTarget()
{
    return m_state->removeCopies();
}
} // namespace qo
