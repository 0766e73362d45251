#include "core/session/InstanceLock.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

namespace qo::host
{
namespace
{
constexpr std::chrono::milliseconds pauseBetweenTries{20};
constexpr std::size_t longestHolder = 200;

/// Who holds the lock, as the file says in a line of its process id and what it does; the holder
/// may not have written it yet, and anybody may have written anything.
std::string holder(int fd)
{
    char text[longestHolder] = {};
    const ssize_t got = ::pread(fd, text, sizeof(text) - 1, 0);
    char* end = text;
    const long pid = got > 0 ? std::strtol(text, &end, 10) : 0;
    if (pid <= 0)
        return "another process";
    std::string doing(end);
    doing.resize(std::min(doing.find('\n'), doing.size()));
    std::erase_if(doing, [](unsigned char c) { return c < 0x20 || c > 0x7E; });
    doing.erase(0, doing.find_first_not_of(' '));
    return "process " + std::to_string(pid) + (doing.empty() ? "" : " (" + doing + ")");
}

/// 0 once the lock is taken, EWOULDBLOCK if it still is another's when the patience ends.
int takeLock(int fd, std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0)
    {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end)
            return errno;
        std::this_thread::sleep_for(pauseBetweenTries);
    }
    return 0;
}
} // namespace

InstanceLock::InstanceLock(const std::string& file,
                           const std::string& doing,
                           std::chrono::milliseconds patience)
    : m_fd(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600))
{
    if (m_fd < 0)
        throw HostError(ExitCode::failed,
                        "the lock " + file + " cannot be opened: " + errorWords(errno));
    if (const int error = takeLock(m_fd, patience))
    {
        const std::string who = holder(m_fd);
        ::close(m_fd);
        if (error != EWOULDBLOCK)
            throw HostError(ExitCode::failed,
                            "the lock " + file + " cannot be taken: " + errorWords(error));
        throw HostError(ExitCode::busy,
                        "the collection is in use by " + who + " (lock " + file +
                            "); try again when it is done");
    }
    const std::string text = std::to_string(::getpid()) + " " + doing + "\n";
    // Only a hint for the message above: the lock holds without it.
    if (::ftruncate(m_fd, 0) == 0)
        (void)!::pwrite(m_fd, text.data(), text.size(), 0);
}

InstanceLock::~InstanceLock()
{
    if (::ftruncate(m_fd, 0) != 0)
        errno = 0;
    ::close(m_fd);
}
} // namespace qo::host
