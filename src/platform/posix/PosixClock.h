#pragma once

#include "platform/Clock.h"

namespace qo
{
/// The clocks of POSIX, and ids from the system's random numbers.
class PosixClock final : public IClock
{
public:
    FILETIME now() const override;
    CalendarTime localTime() const override;
    std::uint32_t tickCount() const override;
    unsigned threadId() const override;
    unsigned processId() const override;
    GUID newGuid() const override;
    std::uint64_t threadWaits() const override;
};
} // namespace qo
