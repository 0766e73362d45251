#pragma once

#include "cli/shown/Colors.h"
#include "cli/shown/Pager.h"
#include "cli/shown/Window.h"

#include <string>
#include <string_view>

namespace qo::cli
{
/// The data that a command writes to standard output. Buffered: a hundred thousand lines cost a few
/// writes. If the reader closes the pipe, the rest is dropped silently; any other failure is thrown
/// as HostError. Texts from outside are passed through harmless() before.
class Output
{
public:
    Output();
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view text);
    void line(std::string_view text);
    /// Where a pager shows the output, this waits until its user has quit.
    void flush();
    /// The same where another failure counts more than that this cannot be written.
    void end() noexcept;

    /// Has a pager show what follows when it is longer than the window. No effect where no person
    /// looks, or where the pager cannot be started.
    void usePager();

    /// Whether a person may be looking.
    bool isTerminal() const { return m_isTerminal; }
    /// The columns that a line of a table may take; 0 where nothing is to be cut: elsewhere than on
    /// a terminal.
    std::size_t columns() const { return m_isTerminal ? m_window.columns : 0; }
    /// The output has no reader any more; long output may stop.
    bool isClosed() const { return m_isClosed; }
    /// It was a pipe that has lost its reader, and not a pager that the user has quit.
    bool isBrokenPipe() const { return m_isClosed && !m_wasPaged; }
    /// A path or name from outside that stands in a row with `taken` other columns: harmless, and
    /// on a terminal so short that it is not broken.
    std::string fitted(const std::string& path, std::size_t taken) const;
    /// In the colour of its style, where there are colours.
    static std::string styled(Style style, std::string_view text);

private:
    void send();
    void countRows();

    std::string m_buffer;
    bool m_isTerminal;
    WindowSize m_window;
    bool m_isClosed = false;
    bool m_mayPage = false;
    bool m_wasPaged = false;
    std::size_t m_rows = 0;    ///< of the window, that the counted part of the buffer takes
    std::size_t m_counted = 0; ///< bytes of the buffer
    Pager m_pager;
};

/// A text from outside as it may be written: control characters as "\x1b" and the like, so that a
/// name breaks no line and sends nothing to a terminal.
std::string harmless(std::string_view text);
} // namespace qo::cli
