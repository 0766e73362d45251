#pragma once

#include <cstdint>

namespace qo
{
/// Kept in an object for one of the lists that may hold it: the stamps within a list ascend, so
/// that the object's place is found by halving however long the list is. An object that was forced
/// into a second list bears only the stamp of that one; it is then looked for from the start.
using LinkStamp = std::uint32_t;

/// Of an object that no list has held yet.
inline constexpr LinkStamp neverLinked = UINT32_MAX;
} // namespace qo
