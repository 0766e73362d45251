#pragma once

/// -1, 0 or 1: what comparisons of any size come to.
inline int sign(int value)
{
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}
