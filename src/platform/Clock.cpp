#include "platform/Clock.h"

#include "types/String.h"

namespace qo
{
IClock::~IClock() = default;

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
