#include "cli/shown/Output.h"

#include "cli/shown/Text.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace qo::cli
{
namespace
{
constexpr std::size_t bufferSize = 1U << 16;
}

Output::Output() : m_isTerminal(::isatty(STDOUT_FILENO) == 1), m_window(windowOf(STDOUT_FILENO))
{
    m_buffer.reserve(bufferSize + 4096);
}

Output::~Output()
{
    end();
}

void Output::usePager()
{
    m_mayPage = m_window.rows > 0 && isCapableTerminal(STDOUT_FILENO);
}

void Output::write(std::string_view text)
{
    m_buffer += text;
    if (m_mayPage)
        countRows();
    if (m_buffer.size() >= bufferSize)
        send();
}

void Output::line(std::string_view text)
{
    m_buffer += text;
    write("\n");
}

/// Starts the pager when the whole lines of the buffer need more rows than the window has. One row
/// is for the prompt that follows.
void Output::countRows()
{
    std::size_t end = 0;
    while ((end = m_buffer.find('\n', m_counted)) != std::string::npos)
    {
        const std::size_t width =
            textWidth(std::string_view(m_buffer).substr(m_counted, end - m_counted));
        m_rows += width == 0 ? 1 : (width + m_window.columns - 1) / m_window.columns;
        m_counted = end + 1;
    }
    if (m_rows < m_window.rows)
        return;
    m_mayPage = false;
    m_wasPaged = m_pager.start(Pager::command());
}

void Output::send()
{
    const int descriptor = m_pager.isRunning() ? m_pager.input() : STDOUT_FILENO;
    std::size_t done = 0;
    while (done < m_buffer.size() && !m_isClosed)
    {
        const ssize_t count = ::write(descriptor, m_buffer.data() + done, m_buffer.size() - done);
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
    m_counted = 0;
}

void Output::flush()
{
    send();
    m_mayPage = false;
    m_pager.finish();
}

void Output::end() noexcept
{
    try
    {
        flush();
    }
    catch (const host::HostError&)
    {
        m_pager.finish();
    }
}

std::string Output::fitted(const std::string& path, std::size_t taken) const
{
    constexpr std::size_t least = 16;
    if (!m_isTerminal)
        return harmless(path);
    return shortenedPath(harmless(path), std::max(m_window.columns, taken + least) - taken);
}

std::string Output::styled(Style style, std::string_view text)
{
    return painted(STDOUT_FILENO, style, text);
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
