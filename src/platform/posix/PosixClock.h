#pragma once

#include "platform/Clock.h"

namespace qo
{
class PosixClock final : public IClock
{
public:
    FILETIME now() const override;
    CalendarTime localTime() const override;
    std::uint32_t tickCount() const override;
    unsigned threadId() const override;
    unsigned processId() const override;
    GUID newGuid() const override;
};
} // namespace qo
