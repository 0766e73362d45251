#include "core/session/InstanceLock.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace qo::host
{
namespace
{
/// The process that holds the lock, as the file says; the holder may not have written its number
/// yet.
std::string holder(int fd)
{
    char text[32] = {};
    const ssize_t got = ::pread(fd, text, sizeof(text) - 1, 0);
    const long pid = got > 0 ? std::strtol(text, nullptr, 10) : 0;
    return pid > 0 ? "process " + std::to_string(pid) : "another process";
}
} // namespace

InstanceLock::InstanceLock(const std::string& file)
    : m_fd(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600))
{
    if (m_fd < 0)
        throw HostError(ExitCode::failed,
                        "the lock " + file + " cannot be opened: " + errorWords(errno));
    if (::flock(m_fd, LOCK_EX | LOCK_NB) != 0)
    {
        const int error = errno;
        const std::string who = holder(m_fd);
        ::close(m_fd);
        if (error != EWOULDBLOCK)
            throw HostError(ExitCode::failed,
                            "the lock " + file + " cannot be taken: " + errorWords(error));
        throw HostError(ExitCode::busy,
                        "the collection is in use by " + who + " (lock " + file +
                            "); try again when it is done");
    }
    const std::string pid = std::to_string(::getpid()) + "\n";
    // Only a hint for the message above: the lock holds without it.
    if (::ftruncate(m_fd, 0) == 0)
        (void)!::pwrite(m_fd, pid.data(), pid.size(), 0);
}

InstanceLock::~InstanceLock()
{
    if (::ftruncate(m_fd, 0) != 0)
        errno = 0;
    ::close(m_fd);
}
} // namespace qo::host
