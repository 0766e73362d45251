#include "QoColl/Collection/VelmoraId.h"

#include "common/types/CriticalSection.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace qo
{
namespace
{
struct LastId
{
    CCriticalSection lock;
    CalendarTime time;
    int counter = 0;
};

LastId& lastId()
{
    static auto* const only = new LastId();
    return *only;
}
} // namespace

CString makeVelmoraId()
{
    LastId& last = lastId();
    const Guard guard(last.lock);
    const CalendarTime time = systemClock().localTime();
    last.counter = time == last.time ? last.counter + 1 : 0;
    last.time = time;
    CString suffix;
    if (last.counter > 0)
        suffix.Format(u"_%d", last.counter);
    CString id;
    id.Format(u"%04d%02d%02d_%02d%02d%02d_%03d%s",
              time.year,
              time.month,
              time.day,
              time.hour,
              time.minute,
              time.second,
              time.millisecond,
              suffix);
    return id;
}
} // namespace qo
