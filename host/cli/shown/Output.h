#pragma once

#include <string>
#include <string_view>

namespace qo::cli
{
/// What a command puts out as data. Buffered: a hundred thousand lines cost a few writes. A reader
/// that has gone away ends the output silently; any other failure is thrown as HostError.
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
    /// Nobody reads any more; long output may stop.
    bool isClosed() const { return m_isClosed; }
    /// A text from outside as it may be written: as it is, or made harmless for a terminal.
    std::string foreign(const std::string& text) const;

private:
    std::string m_buffer;
    bool m_isTerminal;
    bool m_isClosed = false;
};

/// Control characters as "\x1b" and the like.
std::string harmless(std::string_view text);
} // namespace qo::cli
