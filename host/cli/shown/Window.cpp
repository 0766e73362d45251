#include "cli/shown/Window.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace qo::cli
{
namespace
{
/// COLUMNS as a number; 0 when it is not set or none that a window could have.
std::size_t typedColumns()
{
    constexpr std::size_t widest = 10000;
    const char* const text = std::getenv("COLUMNS"); // NOLINT(concurrency-mt-unsafe)
    if (!text)
        return 0;
    std::size_t columns = 0;
    const char* const end = text + std::strlen(text);
    const auto [last, error] = std::from_chars(text, end, columns);
    return error == std::errc() && last == end && columns <= widest ? columns : 0;
}
} // namespace

WindowSize windowOf(int descriptor)
{
    winsize size{};
    WindowSize window;
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0)
    {
        window.columns = size.ws_col;
        window.rows = size.ws_row;
    }
    if (const std::size_t columns = typedColumns(); columns > 0)
        window.columns = columns;
    return window;
}

bool isCapableTerminal(int descriptor)
{
    const char* const term = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe)
    return ::isatty(descriptor) == 1 && term && std::string_view(term) != "dumb";
}
} // namespace qo::cli
