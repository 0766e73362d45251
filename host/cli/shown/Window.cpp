#include "cli/shown/Window.h"

#include <sys/ioctl.h>

namespace qo::cli
{
WindowSize windowOf(int descriptor)
{
    winsize size{};
    WindowSize window;
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return window;
    window.columns = size.ws_col;
    window.rows = size.ws_row;
    return window;
}
} // namespace qo::cli
