#include "platform/posix/PosixFile.h"

#include <unistd.h>

#include <cerrno>

// Reads and writes are repeated when a signal interrupts them. write() goes on until everything is
// written, since the system may write less than asked for.

namespace qo
{
PosixFile::~PosixFile()
{
    ::close(m_descriptor);
}

std::int64_t PosixFile::read(void* buffer, std::size_t size)
{
    ssize_t got = 0;
    do
        got = ::read(m_descriptor, buffer, size);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        m_error = errno;
    return got;
}

bool PosixFile::write(const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t done = ::write(m_descriptor, bytes, size);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
        {
            m_error = done < 0 ? errno : EIO;
            return false;
        }
        bytes += done;
        size -= static_cast<std::size_t>(done);
    }
    return true;
}

bool PosixFile::seek(std::int64_t position)
{
    const bool done = ::lseek(m_descriptor, position, SEEK_SET) >= 0;
    m_error = done ? m_error : errno;
    return done;
}

bool PosixFile::seekToEnd()
{
    const bool done = ::lseek(m_descriptor, 0, SEEK_END) >= 0;
    m_error = done ? m_error : errno;
    return done;
}

std::int64_t PosixFile::position() const
{
    return ::lseek(m_descriptor, 0, SEEK_CUR);
}

int PosixFile::sync()
{
    return ::fsync(m_descriptor) == 0 ? 0 : errno;
}
} // namespace qo
