#pragma once

#include <string>
#include <string_view>

namespace qo::cli
{
/// The data that a command writes to standard output. Buffered: a hundred thousand lines cost a few
/// writes. If the reader closes the pipe, the rest is dropped silently; any other failure is thrown
/// as HostError.
class Output
{
public:
    Output();
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view text);
    void line(std::string_view text);
    void flush();

    /// Whether a person may be looking: then control characters are shown, not sent.
    bool isTerminal() const { return m_isTerminal; }
    /// The reader has closed the output; long output may stop.
    bool isClosed() const { return m_isClosed; }
    /// A text from outside as it may be written: unchanged, or for a terminal without control
    /// characters.
    std::string foreign(const std::string& text) const;

private:
    std::string m_buffer;
    bool m_isTerminal;
    bool m_isClosed = false;
};

/// Control characters as "\x1b" and the like.
std::string harmless(std::string_view text);
} // namespace qo::cli
