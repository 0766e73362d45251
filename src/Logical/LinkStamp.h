#pragma once

#include <cstdint>

namespace qo
{
/// A number that an object keeps for one of the lists that may hold it. Stamps ascend within a
/// list, so the object is found by halving, however long the list is. An object that was put into a
/// second list has only the stamp of that one; in the first list it must be searched from the
/// start.
using LinkStamp = std::uint32_t;

/// The stamp of an object that was never in a list.
inline constexpr LinkStamp neverLinked = UINT32_MAX;
} // namespace qo
