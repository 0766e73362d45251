#pragma once

#include "types/Export.h"
#include "types/FileTime.h"
#include "types/Forward.h"
#include "types/Guid.h"

#include <cstdint>

namespace qo
{
/// A point in time as calendar fields.
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

/// The fields of a time in UTC; those of 1601-01-01 for a null one.
QO_API CalendarTime utcTime(const FILETIME& time);

/// The reverse: fields in UTC as a time. A day that its month does not have is one of the next
/// month; null for a year before 1601 or after 9999.
QO_API FILETIME timeOf(const CalendarTime& time);

/// "YYYYMMDD_HHMMSS", such as "20240131_235959", for names that sort by time.
QO_API CString timeStamp(const CalendarTime& time);

/// The system's clock and ids, as an interface that a test can replace. May be called from any
/// thread.
class QO_API IClock
{
public:
    virtual ~IClock();
    /// The time in UTC.
    virtual FILETIME now() const = 0;
    virtual CalendarTime localTime() const = 0;
    /// Milliseconds of a clock that never goes back, modulo 2^32, so only differences have a
    /// meaning.
    virtual std::uint32_t tickCount() const = 0;
    /// The system's numbers of the calling thread and of the process.
    virtual unsigned threadId() const = 0;
    virtual unsigned processId() const = 0;
    /// A new random id (version 4).
    virtual GUID newGuid() const = 0;
    /// How often the calling thread has slept, as for a disk or a lock; this one has no idea.
    virtual std::uint64_t threadWaits() const { return 0; }
    /// Lets the calling thread rest.
    virtual void sleep(std::uint32_t milliseconds) const;
};
} // namespace qo
