#include "cli/places/PasswordInput.h"

#include "core/base/HostError.h"

#include <termios.h>
#include <unistd.h>

#include <cstring>
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
} // namespace

std::string readPassword(const std::string& question)
{
    std::string password;
    if (::isatty(STDIN_FILENO) == 1)
    {
        const QuietTerminal quiet;
        std::cerr << question << " " << std::flush;
        std::getline(std::cin, password);
        std::cerr << std::endl;
    }
    else
    {
        std::getline(std::cin, password);
    }
    if (password.empty())
        throw host::HostError(host::ExitCode::refused,
                              "no password was given: type it when asked, or send it as a line to "
                              "standard input");
    return password;
}

void wipe(std::string& secret)
{
    ::explicit_bzero(secret.data(), secret.size());
    secret.clear();
}
} // namespace qo::cli
