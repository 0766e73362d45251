#include "cli/shown/Output.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace qo::cli
{
namespace
{
constexpr std::size_t bufferSize = 1U << 16;
}

Output::Output() : m_isTerminal(::isatty(STDOUT_FILENO) == 1)
{
    m_buffer.reserve(bufferSize + 4096);
}

Output::~Output()
{
    try
    {
        flush();
    }
    catch (const host::HostError&)
    {
        // The end of a command flushes before this. Here another failure is on its way and counts
        // more.
        m_isClosed = true;
    }
}

void Output::write(std::string_view text)
{
    m_buffer += text;
    if (m_buffer.size() >= bufferSize)
        flush();
}

void Output::line(std::string_view text)
{
    m_buffer += text;
    write("\n");
}

void Output::flush()
{
    std::size_t done = 0;
    while (done < m_buffer.size() && !m_isClosed)
    {
        const ssize_t count =
            ::write(STDOUT_FILENO, m_buffer.data() + done, m_buffer.size() - done);
        if (count >= 0)
            done += static_cast<std::size_t>(count);
        else if (errno == EPIPE)
            m_isClosed = true;
        else if (errno != EINTR)
        {
            const int error = errno;
            m_isClosed = true;
            m_buffer.clear();
            throw host::HostError(host::ExitCode::failed,
                                  "the output cannot be written: " + host::errorWords(error));
        }
    }
    m_buffer.clear();
}

std::string Output::foreign(const std::string& text) const
{
    return m_isTerminal ? harmless(text) : text;
}

std::string harmless(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        // C1 controls in UTF-8 are C2 80 to C2 9F.
        const bool isC1 =
            c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c >= 0x20 && c != 0x7F && !isC1)
        {
            shown += text[i];
            continue;
        }
        char code[8];
        std::snprintf(
            code, sizeof(code), "\\x%02x", isC1 ? static_cast<unsigned char>(text[++i]) : c);
        shown += code;
    }
    return shown;
}
} // namespace qo::cli
