#include "share/ConnectionWatch.h"

#include <sys/socket.h>

namespace qo::host
{
void ConnectionWatch::came(MHD_Connection* connection)
{
    const MHD_ConnectionInfo* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    const std::lock_guard guard(m_lock);
    m_connections[connection] = {info ? info->connect_fd : -1, Clock::now(), false};
}

void ConnectionWatch::left(MHD_Connection* connection)
{
    const std::lock_guard guard(m_lock);
    m_connections.erase(connection);
}

void ConnectionWatch::setBusy(MHD_Connection* connection, bool isBusy)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_connections.find(connection);
    if (found == m_connections.end())
        return;
    found->second.isBusy = isBusy;
    found->second.since = Clock::now();
}

void ConnectionWatch::cutOff(std::chrono::milliseconds longest, std::size_t crowd)
{
    constexpr int shorterInCrowds = 5;
    const Clock::time_point now = Clock::now();
    // left() comes before the server closes the socket, so the number is that connection's own.
    const std::lock_guard guard(m_lock);
    if (m_connections.size() > crowd)
        longest /= shorterInCrowds;
    for (auto& [connection, state] : m_connections)
    {
        if (state.isBusy || now - state.since < longest || state.socket < 0)
            continue;
        ::shutdown(state.socket, SHUT_RDWR);
        state.socket = -1;
    }
}

bool ConnectionWatch::suspend(MHD_Connection* connection, Clock::time_point until, std::size_t most)
{
    const std::lock_guard guard(m_lock);
    if (m_isEnding || m_waiting.size() >= most)
        return false;
    MHD_suspend_connection(connection);
    m_waiting.emplace(until, connection);
    return true;
}

void ConnectionWatch::resumeAll()
{
    {
        const std::lock_guard guard(m_lock);
        m_isEnding = true;
    }
    resume(Clock::time_point::max());
}

void ConnectionWatch::resume(Clock::time_point now)
{
    const std::lock_guard guard(m_lock);
    while (!m_waiting.empty() && m_waiting.begin()->first <= now)
    {
        MHD_resume_connection(m_waiting.begin()->second);
        m_waiting.erase(m_waiting.begin());
    }
}
} // namespace qo::host
