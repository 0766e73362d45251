#pragma once

#include <cstdint>

/// A time as the number of ticks of 100 nanoseconds since 1601-01-01 00:00 UTC, in two halves of 32
/// bits. All zero means "no time".
struct FILETIME
{
    std::uint32_t dwLowDateTime = 0;
    std::uint32_t dwHighDateTime = 0;
};

namespace qo
{
constexpr std::int64_t ticksPerSecond = 10'000'000;
/// 1970-01-01 00:00 UTC in ticks.
constexpr std::int64_t unixEpochTicks = 116'444'736'000'000'000;

constexpr std::int64_t toTicks(const FILETIME& time) noexcept
{
    return static_cast<std::int64_t>(std::uint64_t(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

constexpr FILETIME fromTicks(std::int64_t ticks) noexcept
{
    const auto bits = static_cast<std::uint64_t>(ticks);
    return {static_cast<std::uint32_t>(bits), static_cast<std::uint32_t>(bits >> 32)};
}

/// Seconds since 1970, which may be negative, and nanoseconds (0 to 999,999,999) to be added. Less
/// than a tick is cut off.
constexpr FILETIME fromUnixTime(std::int64_t seconds, std::int64_t nanoseconds) noexcept
{
    return fromTicks(unixEpochTicks + seconds * ticksPerSecond + nanoseconds / 100);
}

/// Whole seconds since 1970, rounded down, so a time before 1970 is negative.
constexpr std::int64_t toUnixSeconds(const FILETIME& time) noexcept
{
    const std::int64_t ticks = toTicks(time) - unixEpochTicks;
    return ticks >= 0 ? ticks / ticksPerSecond : -((ticksPerSecond - 1 - ticks) / ticksPerSecond);
}
} // namespace qo
