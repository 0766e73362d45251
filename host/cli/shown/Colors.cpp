#include "cli/shown/Colors.h"

#include "cli/shown/Window.h"

#include <atomic>
#include <cstdlib>

namespace qo::cli
{
namespace
{
std::atomic<ColorMode> colorMode{ColorMode::automatic};

bool hasColors(int descriptor)
{
    if (colorMode != ColorMode::automatic)
        return colorMode == ColorMode::always;
    const char* const noColor = std::getenv("NO_COLOR"); // NOLINT(concurrency-mt-unsafe)
    return (!noColor || *noColor == '\0') && isCapableTerminal(descriptor);
}

const char* codeOf(Style style)
{
    switch (style)
    {
    case Style::heading:
        return "\x1b[1m"; // bold
    case Style::mark:
        return "\x1b[32m"; // green
    case Style::error:
        return "\x1b[31m"; // red
    default:
        return "\x1b[33m"; // yellow
    }
}
} // namespace

void chooseColors(ColorMode mode)
{
    colorMode = mode;
}

std::string painted(int descriptor, Style style, std::string_view text)
{
    if (text.empty() || !hasColors(descriptor))
        return std::string(text);
    return codeOf(style) + std::string(text) + "\x1b[0m";
}
} // namespace qo::cli
