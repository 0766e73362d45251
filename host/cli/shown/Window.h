#pragma once

#include <cstddef>

namespace qo::cli
{
/// The window that a descriptor writes to, in characters.
struct WindowSize
{
    std::size_t columns = 80;
    std::size_t rows = 0; ///< 0: it is no terminal, or one that does not say
};

/// COLUMNS of the environment counts before what the terminal says.
WindowSize windowOf(int descriptor);
/// Whether it is a terminal that understands more than text.
bool isCapableTerminal(int descriptor);
} // namespace qo::cli
