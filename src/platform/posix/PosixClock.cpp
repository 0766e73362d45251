#include "platform/posix/PosixClock.h"

#include <sys/random.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

// UTC and local time from the real-time clock, tick counts from the monotonic one, which does not
// jump when somebody sets the time.

namespace qo
{
FILETIME PosixClock::now() const
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return fromUnixTime(time.tv_sec, time.tv_nsec);
}

CalendarTime PosixClock::localTime() const
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    tm local{};
    ::localtime_r(&time.tv_sec, &local);
    return {local.tm_year + 1900,
            local.tm_mon + 1,
            local.tm_mday,
            local.tm_hour,
            local.tm_min,
            local.tm_sec,
            static_cast<int>(time.tv_nsec / 1'000'000)};
}

std::uint32_t PosixClock::tickCount() const
{
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint32_t>(std::uint64_t(time.tv_sec) * 1000 +
                                      std::uint64_t(time.tv_nsec) / 1'000'000);
}

unsigned PosixClock::threadId() const
{
    static thread_local const auto id = static_cast<unsigned>(::gettid());
    return id;
}

unsigned PosixClock::processId() const
{
    return static_cast<unsigned>(::getpid());
}

std::uint64_t PosixClock::threadWaits() const
{
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    return static_cast<std::uint64_t>(usage.ru_nvcsw);
}

GUID PosixClock::newGuid() const
{
    GUID id;
    static_assert(sizeof(id) == 16);
    if (::getentropy(&id, sizeof(id)) != 0)
    {
        // Without entropy, as early in a boot, time and process make ids differ.
        const FILETIME time = now();
        id.Data1 = time.dwLowDateTime ^ processId();
        std::memcpy(id.Data4, &time, sizeof(time));
    }
    id.Data3 = static_cast<std::uint16_t>((id.Data3 & 0x0FFF) | 0x4000);
    id.Data4[0] = static_cast<std::uint8_t>((id.Data4[0] & 0x3F) | 0x80);
    return id;
}
} // namespace qo
