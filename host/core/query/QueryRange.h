#pragma once

#include "core/query/QueryField.h"

#include <cstdint>
#include <limits>
#include <string>

namespace qo::host
{
/// The numbers that a value of a query allows, both ends included: milliseconds for lengths, bytes
/// for sizes, ticks for times.
struct QueryRange
{
    std::int64_t first = std::numeric_limits<std::int64_t>::min();
    std::int64_t last = std::numeric_limits<std::int64_t>::max();

    bool holds(std::int64_t number) const { return first <= number && number <= last; }
};

/// Reads "A..B", "A..", "..B" or a single value, which stands for all that is written so: "3:51"
/// for each length of that second, "2024-05" for the whole month in local time. Times may be
/// counted back from `now` (ticks): "-7d", with h, d, w, m or y, which alone means "since then".
/// Sizes have K, M or G for units of 1024. Throws HostError that shows how to write it; typed is
/// the whole word.
QueryRange
parseRange(QueryKind kind, const std::string& value, const std::string& typed, std::int64_t now);
} // namespace qo::host
