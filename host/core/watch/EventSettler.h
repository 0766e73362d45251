#pragma once

#include "core/watch/FolderEvent.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace qo::host
{
/// Makes few events of many. What happens to a path is held back until the path has been quiet for
/// the settling time, and is then reported as one event. Example: a file that is created, written
/// to five times and renamed is reported once, as added under its last name. Moves are reported
/// before all other events, and what waits for a path that moves then waits for the new path. The
/// caller says what time it is. Not for several threads at once.
class EventSettler
{
public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    /// By what a file that is still being written is known.
    struct Stamp
    {
        std::int64_t size = -1; ///< -1: there is no such file
        std::int64_t modified = 0;
        bool operator==(const Stamp&) const = default;
    };
    using Look = std::function<Stamp(const std::string& path)>;

    EventSettler(std::chrono::milliseconds settle, Look look);

    void added(const std::string& path, Time now);
    void changed(const std::string& path, Time now);
    void removed(const std::string& path, Time now);
    void moved(const std::string& from, const std::string& to, Time now);
    /// Drops everything that waits: the rescan that follows finds it as well.
    void needRescan(const std::string& reason, Time now);

    /// The earliest time at which take() may return something.
    std::optional<Time> nextDue() const;
    /// The events that are due: moves first, in their order, then the others by path.
    std::vector<FolderEvent> take(Time now);

private:
    struct Pending
    {
        FolderEvent::Kind kind = FolderEvent::Kind::added;
        Time last;
        Stamp seen;
    };

    void note(const std::string& path, FolderEvent::Kind kind, Time now);
    void dropBelow(const std::string& folder);
    void renamePending(const std::string& from, const std::string& to);
    void queueMove(const std::string& from, const std::string& to);
    bool isQuiet(const std::string& path, Pending& pending, Time now) const;
    void wakeBy(Time time);

    std::chrono::milliseconds m_settle;
    Look m_look;
    std::map<std::string, Pending> m_pending;
    std::vector<FolderEvent> m_ready; ///< moves and demands for a rescan
    std::optional<Time> m_wake;
};
} // namespace qo::host
