#pragma once

#include <microhttpd.h>

#include <chrono>
#include <map>
#include <mutex>
#include <vector>

namespace qo::host
{
/// Keeps the connections of a server that would wait for ever: those that bring a request byte by
/// byte are cut off, and those that gave a wrong share id are answered late. From any thread.
class ConnectionWatch
{
public:
    using Clock = std::chrono::steady_clock;

    void came(MHD_Connection* connection);
    void left(MHD_Connection* connection);
    /// A request is whole, or has been answered: the time for the next one begins.
    void setBusy(MHD_Connection* connection, bool isBusy);
    /// Cuts off connections that are not busy for longer than that, or than a fifth of it while
    /// there are more connections than so many: a crowd of silent ones keeps nobody out for long.
    void cutOff(std::chrono::milliseconds longest, std::size_t crowd);

    /// Has the connection wait until then. False when as many wait already.
    bool suspend(MHD_Connection* connection, Clock::time_point until, std::size_t most);
    /// Lets those go on whose time has come.
    void resume(Clock::time_point now);
    /// Lets all go on, and nobody waits from now on: a server that stops must have none that does.
    void resumeAll();

private:
    struct State
    {
        int socket = -1;
        Clock::time_point since;
        bool isBusy = false;
    };

    std::mutex m_lock; ///< guards the others
    std::map<MHD_Connection*, State> m_connections;
    std::multimap<Clock::time_point, MHD_Connection*> m_waiting;
    bool m_isEnding = false;
};
} // namespace qo::host
