#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace qo::host
{
/// Keeps the library, which tells whoever is at the terminal what it finds, from writing into the
/// output of a command.
class SilentOutput
{
public:
    SilentOutput()
    {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        std::fflush(stdout);
        for (Stream& stream : m_streams)
        {
            stream.saved = nowhere < 0 ? -1 : ::fcntl(stream.number, F_DUPFD_CLOEXEC, 3);
            if (stream.saved >= 0)
                ::dup2(nowhere, stream.number);
        }
        if (nowhere >= 0)
            ::close(nowhere);
    }
    ~SilentOutput()
    {
        std::fflush(stdout);
        for (const Stream& stream : m_streams)
        {
            if (stream.saved < 0)
                continue;
            ::dup2(stream.saved, stream.number);
            ::close(stream.saved);
        }
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    struct Stream
    {
        int number;
        int saved;
    };
    Stream m_streams[2] = {{STDOUT_FILENO, -1}, {STDERR_FILENO, -1}};
};
} // namespace qo::host
