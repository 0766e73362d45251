#pragma once

#include "core/watch/EventSettler.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// The kind of file system, as "NFS" or "SMB", if the system does not report changes of the folder
/// because they are made on another machine or by a program; "" for a folder on a disk of this
/// machine.
std::string remoteKind(const std::string& folder);

/// Watches folders with all folders below them. A new folder is watched before it is listed, so
/// that nothing in it is missed. When one of the watched folders itself goes away, a rescan is
/// asked for, and watching it again needs a new FolderWatch. The program's own folders are skipped,
/// as by a scan. Starts no thread and needs no kernel; one thread waits, any thread may stop it.
class FolderWatch
{
public:
    struct Unwatched
    {
        std::string folder;
        std::string reason;
    };

    /// Starts to watch at once. Paths are absolute system paths. A path is reported when it has
    /// been quiet for the settling time. Throws HostError when nothing can be watched at all.
    explicit FolderWatch(std::vector<std::string> folders,
                         std::chrono::milliseconds settle = std::chrono::seconds(2));
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// Sleeps until there are events to report. Empty when the time is over or stop() was called.
    std::vector<FolderEvent> wait(std::optional<std::chrono::milliseconds> atMost = {});
    /// Ends this and every later wait(). From any thread and from a signal handler.
    void stop() noexcept;

    /// Folders that only a rescan keeps current: those on other machines, and those for which the
    /// system had no watch left. Each of the latter is also reported by a demand for a rescan.
    const std::vector<Unwatched>& unwatched() const;
    int watchedFolders() const;
    /// Whether a root folder went away, or a disk below one: what comes back there is not watched.
    bool hasLostFolders() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo::host
