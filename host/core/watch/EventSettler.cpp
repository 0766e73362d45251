#include "core/watch/EventSettler.h"

#include "core/base/SystemPath.h"

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
using Kind = FolderEvent::Kind;

/// Joins two events of one path. A removal is never dropped: the collection may have known the path
/// before something was renamed to it.
Kind merged(Kind before, Kind now)
{
    if (now == Kind::removed)
        return Kind::removed;
    if (before == Kind::removed)
        return Kind::changed;
    return before == Kind::added ? Kind::added : now;
}
} // namespace

EventSettler::EventSettler(std::chrono::milliseconds settle, Look look)
    : m_settle(settle), m_look(std::move(look))
{
}

void EventSettler::added(const std::string& path, Time now)
{
    note(path, Kind::added, now);
}

void EventSettler::changed(const std::string& path, Time now)
{
    note(path, Kind::changed, now);
}

void EventSettler::removed(const std::string& path, Time now)
{
    dropBelow(path);
    note(path, Kind::removed, now);
}

void EventSettler::note(const std::string& path, Kind kind, Time now)
{
    const auto [place, isNew] = m_pending.try_emplace(path);
    Pending& pending = place->second;
    pending.kind = isNew ? kind : merged(pending.kind, kind);
    pending.last = now;
    pending.seen = kind == Kind::removed ? Stamp() : m_look(path);
    wakeBy(now + m_settle);
}

void EventSettler::moved(const std::string& from, const std::string& to, Time now)
{
    // Earlier events at the target are about a file that has been replaced.
    dropBelow(to);
    m_pending.erase(to);
    const auto waiting = m_pending.find(from);
    const bool isUnknown = waiting != m_pending.end() && waiting->second.kind == Kind::added;
    renamePending(from, to);
    if (isUnknown)
        return note(to, Kind::added, now);
    queueMove(from, to);
    wakeBy(now + m_settle);
}

/// Moves are applied after all of them have happened, so each must say where its file is in the
/// end. Example: a -> b and then b -> c is reported as a -> c. After the folder d -> e, the move
/// e/1 -> f is put before it as d/1 -> f.
void EventSettler::queueMove(const std::string& from, const std::string& to)
{
    std::size_t place = m_ready.size();
    std::string source = from;
    bool isContinued = false;
    for (std::size_t i = m_ready.size(); i-- > 0;)
    {
        FolderEvent& event = m_ready[i];
        if (event.newPath == from)
        {
            isContinued = true;
            event.newPath = to;
        }
        else if (isBelow(event.newPath, from))
            event.newPath = to + event.newPath.substr(from.size());
        else if (event.kind == Kind::moved && isBelow(source, event.newPath))
        {
            source = event.path + source.substr(event.newPath.size());
            place = i;
        }
    }
    if (!isContinued)
        m_ready.insert(m_ready.begin() + static_cast<std::ptrdiff_t>(place),
                       {Kind::moved, source, to, {}});
    std::erase_if(m_ready,
                  [](const FolderEvent& event)
                  { return event.kind == Kind::moved && event.path == event.newPath; });
}

void EventSettler::renamePending(const std::string& from, const std::string& to)
{
    std::map<std::string, Pending> renamed;
    const auto take = [&](std::map<std::string, Pending>::iterator place)
    {
        renamed.emplace(to + place->first.substr(from.size()), place->second);
        return m_pending.erase(place);
    };
    if (const auto self = m_pending.find(from); self != m_pending.end())
        take(self);
    auto place = m_pending.lower_bound(from + "/");
    while (place != m_pending.end() && isBelow(place->first, from))
        place = take(place);
    m_pending.merge(renamed);
}

void EventSettler::dropBelow(const std::string& folder)
{
    const auto first = m_pending.lower_bound(folder + "/");
    auto last = first;
    while (last != m_pending.end() && isBelow(last->first, folder))
        ++last;
    m_pending.erase(first, last);
}

void EventSettler::needRescan(const std::string& reason, Time now)
{
    m_pending.clear();
    std::erase_if(m_ready, [](const FolderEvent& event) { return event.kind == Kind::moved; });
    const FolderEvent event{Kind::needRescan, {}, {}, reason};
    if (std::find(m_ready.begin(), m_ready.end(), event) == m_ready.end())
        m_ready.push_back(event);
    wakeBy(now + m_settle);
}

void EventSettler::wakeBy(Time time)
{
    m_wake = m_wake ? std::min(*m_wake, time) : time;
}

std::optional<EventSettler::Time> EventSettler::nextDue() const
{
    return m_wake;
}

/// A file that grows or is written to is not quiet, whether or not the system says so.
bool EventSettler::isQuiet(const std::string& path, Pending& pending, Time now) const
{
    if (now < pending.last + m_settle)
        return false;
    const Stamp stamp = pending.kind == Kind::removed ? Stamp() : m_look(path);
    if (stamp == pending.seen)
        return true;
    pending.seen = stamp;
    pending.last = now;
    return false;
}

std::vector<FolderEvent> EventSettler::take(Time now)
{
    if (!m_wake || now < *m_wake)
        return {};
    m_wake.reset();
    std::vector<FolderEvent> due = std::exchange(m_ready, {});
    for (auto place = m_pending.begin(); place != m_pending.end();)
    {
        if (isQuiet(place->first, place->second, now))
        {
            due.push_back({place->second.kind, place->first, {}, {}});
            place = m_pending.erase(place);
            continue;
        }
        wakeBy(place->second.last + m_settle);
        ++place;
    }
    return due;
}
} // namespace qo::host
