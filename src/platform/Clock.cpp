#include "platform/Clock.h"

#include "types/String.h"

#include <chrono>
#include <thread>

namespace qo
{
IClock::~IClock() = default;

void IClock::sleep(std::uint32_t milliseconds) const
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

CalendarTime utcTime(const FILETIME& time)
{
    // Floored, so that the rest is never negative.
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, ticksPerSecond>>;
    constexpr std::chrono::sys_days start(std::chrono::year(1601) / 1 / 1);
    const Ticks ticks(toTicks(time));
    const auto days = std::chrono::floor<std::chrono::days>(ticks);
    const std::chrono::year_month_day date(start + days);
    const std::chrono::hh_mm_ss inDay(ticks - days);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(inDay.hours().count()),
            static_cast<int>(inDay.minutes().count()),
            static_cast<int>(inDay.seconds().count()),
            static_cast<int>(inDay.subseconds() / std::chrono::milliseconds(1))};
}

FILETIME timeOf(const CalendarTime& time)
{
    if (time.year < 1601 || time.year > 9999)
        return {};
    using namespace std::chrono;
    constexpr sys_days start(year(1601) / 1 / 1);
    const sys_days day(year(time.year) / month(static_cast<unsigned>(time.month)) /
                       std::chrono::day(static_cast<unsigned>(time.day)));
    const milliseconds sinceStart = (day - start) + hours(time.hour) + minutes(time.minute) +
                                    seconds(time.second) + milliseconds(time.millisecond);
    return fromTicks(sinceStart.count() * (ticksPerSecond / 1000));
}

CString timeStamp(const CalendarTime& time)
{
    CString stamp;
    stamp.Format(u"%04d%02d%02d_%02d%02d%02d",
                 time.year,
                 time.month,
                 time.day,
                 time.hour,
                 time.minute,
                 time.second);
    return stamp;
}
} // namespace qo
