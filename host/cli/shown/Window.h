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

WindowSize windowOf(int descriptor);
} // namespace qo::cli
