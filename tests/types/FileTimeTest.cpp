#include "types/FileTime.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(FileTime, UnixTimeBecomesTicksSince1601)
{
    const std::tuple<std::int64_t, std::int64_t, std::int64_t> cases[] = {
        {0, 0, 116444736000000000},
        {-11644473600, 0, 0},
        {1, 199, 116444736010000001},
        {-1, 999999999, 116444735999999999},
        {1600000000, 123456789, 132444736001234567},
        {253402300799, 0, 2650467743990000000}};
    for (const auto& [seconds, nanoseconds, ticks] : cases)
    {
        const FILETIME time = qo::fromUnixTime(seconds, nanoseconds);
        EXPECT_EQ(qo::toTicks(time), ticks);
        EXPECT_EQ(qo::toUnixSeconds(time), seconds);
        EXPECT_EQ(qo::toTicks(qo::fromTicks(ticks)), ticks);
    }
}

TEST(FileTime, TicksSpanBothHalvesSigned)
{
    const FILETIME time = qo::fromTicks(0x123456789ABCDEF0);
    EXPECT_EQ(time.dwHighDateTime, 0x12345678U);
    EXPECT_EQ(time.dwLowDateTime, 0x9ABCDEF0U);
    EXPECT_EQ(qo::toTicks(qo::fromTicks(-1)), -1);
}
