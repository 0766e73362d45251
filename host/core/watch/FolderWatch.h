#pragma once

#include "core/watch/EventSettler.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// "NFS", "SMB" and the like for a folder whose changes the system cannot tell, since they are made
/// elsewhere or by a program; "" for one on a disk of this machine.
std::string remoteKind(const std::string& folder);

/// Watches folders with all that lie below them. A new folder is watched before it is listed, so
/// that nothing in it is missed. One of the folders itself that goes away asks for a rescan and is
/// not watched again: then it takes a new FolderWatch. The program's own folders are passed over,
/// as by a scan. Wants no thread and no kernel of its own; one thread waits, any may stop it.
class FolderWatch
{
public:
    struct Unwatched
    {
        std::string folder;
        std::string reason;
    };

    /// Starts to watch at once. Paths are absolute system paths. A path is told once it has been
    /// quiet for the settling time. Throws HostError when nothing can be watched at all.
    explicit FolderWatch(std::vector<std::string> folders,
                         std::chrono::milliseconds settle = std::chrono::seconds(2));
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// Sleeps until something is to be told. Empty when the time is over or stop() was called.
    std::vector<FolderEvent> wait(std::optional<std::chrono::milliseconds> atMost = {});
    /// Ends this and every later wait(). From any thread and from a signal handler.
    void stop() noexcept;

    /// Folders that only a rescan keeps current: those on other machines, and, with a demand for a
    /// rescan each time, those for which the system had no watch left.
    const std::vector<Unwatched>& unwatched() const;
    int watchedFolders() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo::host
