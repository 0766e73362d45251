#pragma once

#include "types/Export.h"
#include "types/FileTime.h"
#include "types/Forward.h"
#include "types/Guid.h"

#include <cstdint>

namespace qo
{
/// Broken-down time.
struct CalendarTime
{
    int year = 0;
    int month = 0; ///< 1 to 12
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    bool operator==(const CalendarTime&) const noexcept = default;
};

/// "YYYYMMDD_HHMMSS", for names that sort by time.
QO_API CString timeStamp(const CalendarTime& time);

/// Time and identity. Safe from any thread.
class QO_API IClock
{
public:
    virtual ~IClock();
    virtual FILETIME now() const = 0;
    virtual CalendarTime localTime() const = 0;
    /// Milliseconds of a clock that never goes back, modulo 2^32: only differences count.
    virtual std::uint32_t tickCount() const = 0;
    virtual unsigned threadId() const = 0;
    virtual unsigned processId() const = 0;
    /// A new random id (version 4).
    virtual GUID newGuid() const = 0;
};
} // namespace qo
