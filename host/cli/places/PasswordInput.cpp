#include "cli/places/PasswordInput.h"

#include "core/base/HostError.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>

namespace qo::cli
{
namespace
{
/// A terminal that does not show what is typed, for as long as this lives.
class QuietTerminal
{
public:
    QuietTerminal()
    {
        m_isChanged = ::tcgetattr(STDIN_FILENO, &m_before) == 0;
        termios quiet = m_before;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        if (m_isChanged)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~QuietTerminal()
    {
        if (m_isChanged)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    QuietTerminal(const QuietTerminal&) = delete;
    QuietTerminal& operator=(const QuietTerminal&) = delete;

private:
    termios m_before = {};
    bool m_isChanged = false;
};

/// Without a stream, whose buffer would keep the line.
host::Secret readLine()
{
    host::Secret line;
    for (char c = 0; ::read(STDIN_FILENO, &c, 1) == 1 && c != '\n';)
        line.append({&c, 1});
    return line;
}
} // namespace

host::Secret readPassword(const std::string& question)
{
    host::Secret password;
    if (::isatty(STDIN_FILENO) == 1)
    {
        const QuietTerminal quiet;
        std::cerr << question << " " << std::flush;
        password = readLine();
        std::cerr << std::endl;
    }
    else
    {
        password = readLine();
    }
    if (password.empty())
        throw host::HostError(host::ExitCode::refused,
                              "no password was given: type it when asked, or send it as a line to "
                              "standard input");
    return password;
}
} // namespace qo::cli
