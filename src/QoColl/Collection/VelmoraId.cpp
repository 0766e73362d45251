#include "QoColl/Collection/VelmoraId.h"

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/CriticalSection.h"

namespace qo
{
namespace
{
constexpr std::int64_t ticksPerMillisecond = ticksPerSecond / 1000;

/// The last id of this process, with the lock that guards it.
struct LastId
{
    CCriticalSection lock;
    std::int64_t millisecond = 0; ///< of the last id; text is valid for it
    CalendarTime time;
    CString text;
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
    const std::int64_t millisecond = toTicks(systemClock().now()) / ticksPerMillisecond;
    bool isRepeated = millisecond == last.millisecond;
    if (!isRepeated)
    {
        // The hour that is repeated in autumn may give the same local time again.
        const CalendarTime time = systemClock().localTime();
        isRepeated = time == last.time;
        last.millisecond = millisecond;
        last.time = time;
        last.text.Format(u"%04d%02d%02d_%02d%02d%02d_%03d",
                         time.year,
                         time.month,
                         time.day,
                         time.hour,
                         time.minute,
                         time.second,
                         time.millisecond);
    }
    last.counter = isRepeated ? last.counter + 1 : 0;
    if (last.counter == 0)
        return last.text;
    CString id = last.text;
    id.AppendFormat(u"_%d", last.counter);
    return CString(id.view()); // without the room in which it grew: every record keeps one
}
} // namespace qo
