#include "core/watch/FolderWatch.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Inside.h>

#include <linux/magic.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <map>
#include <unordered_map>

namespace qo::host
{
namespace
{
using Time = EventSettler::Time;
using Clock = EventSettler::Clock;

constexpr std::uint32_t watchMask = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM |
                                    IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                                    IN_EXCL_UNLINK;
/// The two halves of a rename come right after each other. A move to or from an unwatched folder
/// has only one.
constexpr std::chrono::milliseconds pairingTime(200);

struct RemoteRow
{
    std::uint32_t type;
    const char* name;
};
// Some of these the system's headers do not name.
constexpr RemoteRow remoteRows[] = {{NFS_SUPER_MAGIC, "NFS"},
                                    {SMB_SUPER_MAGIC, "SMB"},
                                    {0xFE534D42, "SMB"},
                                    {0xFF534D42, "SMB"},
                                    {0x65735546, "FUSE"},
                                    {V9FS_MAGIC, "9P"},
                                    {AFS_SUPER_MAGIC, "AFS"},
                                    {0x6B414653, "AFS"},
                                    {CODA_SUPER_MAGIC, "Coda"},
                                    {0x00C36400, "Ceph"},
                                    {0x786F4256, "VirtualBox"},
                                    {0x0BD00BD0, "Lustre"},
                                    {0x47504653, "GPFS"},
                                    {0x01161970, "GFS2"},
                                    {0x7461636F, "OCFS2"}};

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

EventSettler::Stamp look(const std::string& path)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return {};
    return {st.st_size, st.st_mtim.tv_sec * 1'000'000'000 + st.st_mtim.tv_nsec};
}

std::string childOf(const std::string& folder, const std::string& name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}
} // namespace

std::string remoteKind(const std::string& folder)
{
    struct statfs found;
    if (::statfs(folder.c_str(), &found) != 0)
        return {};
    const auto type = static_cast<std::uint32_t>(found.f_type);
    for (const RemoteRow& row : remoteRows)
    {
        if (row.type == type)
            return row.name;
    }
    return {};
}

struct FolderWatch::State
{
    struct Leaving ///< one half of a rename
    {
        std::uint32_t cookie = 0;
        std::string path;
        Time since;
    };

    State(std::vector<std::string> folders, std::chrono::milliseconds settle)
        : roots(std::move(folders)), settler(settle, look)
    {
        for (const CString& own : specialFolders().ownFolders())
            ownFolders.push_back(toSystemPath(own));
    }

    void addTrees(const std::vector<std::string>& tops, bool tellFiles);
    bool addWatch(const std::string& folder);
    bool isOwn(const std::string& folder) const;
    void noteUnwatched(const std::string& folder, const std::string& reason);
    void dropTree(const std::string& folder);
    void dropWatch(int watch);
    void renameTree(const std::string& from, const std::string& to);
    void drain();
    void handle(const inotify_event& event);
    void handleEntry(const inotify_event& event, const std::string& path);
    void handleFolderItself(const inotify_event& event, const std::string& folder);
    void appear(const std::string& path);
    void arrive(const inotify_event& event, const std::string& path);
    void disappear(const std::string& path);
    void expirePairs();
    int sleepTime(std::optional<Time> end) const;

    std::vector<std::string> roots;
    std::vector<std::string> ownFolders; ///< the program's, which a scan passes over too
    EventSettler settler;
    Descriptor inotify{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    Descriptor wake{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    std::unordered_map<int, std::string> folderOf; ///< by watch
    std::map<std::string, int> watchOf;
    std::deque<Leaving> leaving;
    std::vector<Unwatched> unwatched;
    bool isFull = false; ///< the system has no watch left: trying on would only cost time
    bool hasLost = false;
    Time now = Clock::now();
};

void FolderWatch::State::noteUnwatched(const std::string& folder, const std::string& reason)
{
    const auto known = std::find_if(unwatched.begin(),
                                    unwatched.end(),
                                    [&](const Unwatched& item) { return item.folder == folder; });
    if (known == unwatched.end())
        unwatched.push_back({folder, reason});
}

bool FolderWatch::State::isOwn(const std::string& folder) const
{
    return std::find(ownFolders.begin(), ownFolders.end(), folder) != ownFolders.end();
}

/// False when the folder is gone, is watched under another path already or cannot be watched.
bool FolderWatch::State::addWatch(const std::string& folder)
{
    const int watch = ::inotify_add_watch(inotify.get(), folder.c_str(), watchMask);
    if (watch < 0)
    {
        // A scan would not find it either: it is gone, or this user may not read it.
        if (errno == ENOENT || errno == ENOTDIR || errno == EACCES)
            return false;
        isFull = errno == ENOSPC;
        const std::string reason = isFull ? "the system's limit of watched folders is reached "
                                            "(fs.inotify.max_user_watches), also for what follows"
                                          : errorWords(errno);
        noteUnwatched(folder, reason);
        settler.needRescan(folder + " cannot be watched: " + reason, now);
        return false;
    }
    const auto [known, isNew] = folderOf.try_emplace(watch, folder);
    if (!isNew && known->second != folder)
    {
        const auto before = watchOf.find(known->second);
        if (look(known->second).size >= 0)
            return false; // a second way to a folder, as a scan passes over it
        if (before != watchOf.end())
            watchOf.erase(before);
        known->second = folder;
    }
    watchOf[folder] = watch;
    return true;
}

/// Breadth first, and links last, like a scan: if several paths lead to a folder, watch and scan
/// then use the same one.
void FolderWatch::State::addTrees(const std::vector<std::string>& tops, bool tellFiles)
{
    std::deque<std::pair<std::string, std::uint64_t>> folders;
    for (const std::string& top : tops)
        folders.emplace_back(top, 0);
    std::deque<std::pair<std::string, std::uint64_t>> links;
    for (; (!folders.empty() || !links.empty()) && !isFull; folders.pop_front())
    {
        if (folders.empty())
        {
            folders.push_back(links.front());
            links.pop_front();
        }
        const auto& [folder, deviceAbove] = folders.front();
        FileInfo info;
        if (isOwn(folder) || fileSystem().info(fromSystemPath(folder), Spelling::exact, info) != 0)
            continue;
        const std::string remote = info.device == deviceAbove ? std::string() : remoteKind(folder);
        if (!remote.empty())
            noteUnwatched(folder, "it is on a mount of type " + remote);
        std::vector<DirEntry> entries;
        if (!remote.empty() || !addWatch(folder) ||
            fileSystem().list(fromSystemPath(folder), entries) != 0)
            continue;
        for (const DirEntry& entry : entries)
        {
            const std::string path =
                toSystemPath(addBackslash(fromSystemPath(folder)) + entry.name);
            if (entry.info.kind == FileKind::directory &&
                isTrashFolder(fromSystemPath(folder), entry.name))
                continue;
            if (entry.info.kind == FileKind::directory)
                (entry.info.isLink ? links : folders).emplace_back(path, info.device);
            else if (tellFiles && entry.info.kind == FileKind::regular)
                settler.added(path, now);
        }
    }
}

void FolderWatch::State::dropWatch(int watch)
{
    const auto known = folderOf.find(watch);
    if (known == folderOf.end())
        return;
    // Another folder may have taken the path since.
    const auto place = watchOf.find(known->second);
    if (place != watchOf.end() && place->second == watch)
        watchOf.erase(place);
    folderOf.erase(known);
}

void FolderWatch::State::dropTree(const std::string& folder)
{
    std::vector<int> watches;
    if (const auto self = watchOf.find(folder); self != watchOf.end())
        watches.push_back(self->second);
    for (auto place = watchOf.lower_bound(folder + "/");
         place != watchOf.end() && isBelow(place->first, folder);
         ++place)
        watches.push_back(place->second);
    for (const int watch : watches)
    {
        ::inotify_rm_watch(inotify.get(), watch);
        dropWatch(watch);
    }
}

void FolderWatch::State::renameTree(const std::string& from, const std::string& to)
{
    std::vector<std::pair<std::string, int>> moving;
    if (const auto self = watchOf.find(from); self != watchOf.end())
        moving.emplace_back(*self);
    for (auto place = watchOf.lower_bound(from + "/");
         place != watchOf.end() && isBelow(place->first, from);
         ++place)
        moving.emplace_back(*place);
    for (const auto& [path, watch] : moving)
        watchOf.erase(path);
    for (const auto& [path, watch] : moving)
    {
        const std::string renamed = to + path.substr(from.size());
        watchOf[renamed] = watch;
        folderOf[watch] = renamed;
    }
}

void FolderWatch::State::drain()
{
    alignas(inotify_event) char buffer[65536];
    for (;;)
    {
        const ssize_t got = ::read(inotify.get(), buffer, sizeof(buffer));
        if (got <= 0)
            return;
        now = Clock::now();
        for (const char* at = buffer; at < buffer + got;)
        {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            handle(event);
            at += sizeof(inotify_event) + event.len;
        }
    }
}

void FolderWatch::State::handle(const inotify_event& event)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0)
    {
        leaving.clear();
        isFull = false;
        addTrees(roots, false);
        return settler.needRescan("more changed at once than the system could tell", now);
    }
    if ((event.mask & IN_IGNORED) != 0)
        return dropWatch(event.wd);
    const auto known = folderOf.find(event.wd);
    if (known == folderOf.end())
        return;
    const std::string folder = known->second;
    if (event.len == 0)
        return handleFolderItself(event, folder);
    handleEntry(event, childOf(folder, event.name));
}

void FolderWatch::State::handleFolderItself(const inotify_event& event, const std::string& folder)
{
    const bool isRoot = std::find(roots.begin(), roots.end(), folder) != roots.end();
    // All others are reported by the folder above, except one that is reached through a link.
    if (!isRoot && (event.mask & IN_UNMOUNT) == 0)
        return;
    dropTree(folder);
    hasLost = true;
    settler.needRescan("the folder " + folder + " is no longer there", now);
}

void FolderWatch::State::handleEntry(const inotify_event& event, const std::string& path)
{
    if ((event.mask & IN_CREATE) != 0)
        appear(path);
    else if ((event.mask & IN_CLOSE_WRITE) != 0)
        settler.changed(path, now);
    else if ((event.mask & IN_DELETE) != 0)
        disappear(path);
    else if ((event.mask & IN_MOVED_FROM) != 0)
        leaving.push_back({event.cookie, path, now});
    else if ((event.mask & IN_MOVED_TO) != 0)
        arrive(event, path);
}

void FolderWatch::State::appear(const std::string& path)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return;
    if (S_ISDIR(st.st_mode))
        addTrees({path}, true);
    else if (S_ISREG(st.st_mode))
        settler.added(path, now);
}

void FolderWatch::State::arrive(const inotify_event& event, const std::string& path)
{
    const auto from =
        std::find_if(leaving.begin(),
                     leaving.end(),
                     [&](const Leaving& half) { return half.cookie == event.cookie; });
    if (from == leaving.end())
        return appear(path);
    const std::string before = from->path;
    leaving.erase(from);
    renameTree(before, path);
    settler.moved(before, path, now);
}

void FolderWatch::State::disappear(const std::string& path)
{
    dropTree(path);
    settler.removed(path, now);
}

void FolderWatch::State::expirePairs()
{
    while (!leaving.empty() && now - leaving.front().since >= pairingTime)
    {
        const std::string path = leaving.front().path;
        leaving.pop_front();
        disappear(path);
    }
}

/// Milliseconds for poll(), rounded up so that it does not wake too early; -1 for ever.
int FolderWatch::State::sleepTime(std::optional<Time> end) const
{
    std::optional<Time> until = end;
    const auto sooner = [&until](Time time) { until = until ? std::min(*until, time) : time; };
    if (const auto due = settler.nextDue())
        sooner(*due);
    if (!leaving.empty())
        sooner(leaving.front().since + pairingTime);
    if (!until)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - now);
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3'600'000));
}

FolderWatch::FolderWatch(std::vector<std::string> folders, std::chrono::milliseconds settle)
    : m_state(std::make_unique<State>(std::move(folders), settle))
{
    if (m_state->inotify.get() < 0 || m_state->wake.get() < 0)
        throw HostError(ExitCode::failed, "folders cannot be watched: " + errorWords(errno));
    m_state->addTrees(m_state->roots, false);
}

FolderWatch::~FolderWatch() = default;

std::vector<FolderEvent> FolderWatch::wait(std::optional<std::chrono::milliseconds> atMost)
{
    State& state = *m_state;
    state.now = Clock::now();
    const std::optional<Time> end = atMost ? std::optional(state.now + *atMost) : std::nullopt;
    pollfd ready[] = {{state.wake.get(), POLLIN, 0}, {state.inotify.get(), POLLIN, 0}};
    for (;;)
    {
        state.drain();
        state.now = Clock::now();
        state.expirePairs();
        std::vector<FolderEvent> events = state.settler.take(state.now);
        if (!events.empty() || ready[0].revents != 0 || (end && state.now >= *end))
            return events;
        ::poll(ready, std::size(ready), state.sleepTime(end));
    }
}

void FolderWatch::stop() noexcept
{
    const std::uint64_t one = 1;
    const ssize_t written = ::write(m_state->wake.get(), &one, sizeof(one));
    static_cast<void>(written);
}

const std::vector<FolderWatch::Unwatched>& FolderWatch::unwatched() const
{
    return m_state->unwatched;
}

bool FolderWatch::hasLostFolders() const
{
    return m_state->hasLost;
}

int FolderWatch::watchedFolders() const
{
    return static_cast<int>(m_state->folderOf.size());
}
} // namespace qo::host
