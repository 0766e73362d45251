#include "common/Profiler.h"

#include "common/LogLevel.h"
#include "common/ProfileTimer.h"
#include "common/TraceLog.h"
#include "types/CriticalSection.h"

#include <atomic>
#include <chrono>
#include <map>

namespace qo
{
namespace
{
/// The sum of one name.
struct Counter
{
    std::int64_t nanoseconds = 0;
    int calls = 0;
};

struct Counters
{
    CCriticalSection lock;
    std::map<CString, Counter> byName;
};

std::atomic<bool> active{false};

/// Never destroyed: timers may end in destructors of static objects.
Counters& counters()
{
    static auto* const only = new Counters();
    return *only;
}

std::int64_t nanosecondsNow()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

/// "h:mm:ss.mmm", where parts before the milliseconds appear only if the time is long enough.
CString timeText(std::int64_t milliseconds)
{
    CString text;
    text.Format(u"%03d", milliseconds % 1000);
    std::int64_t rest = milliseconds / 1000;
    const char16_t* const formats[] = {u"%02I64d.", u"%02I64d:"};
    for (const char16_t* format : formats)
    {
        if (rest == 0)
            return text;
        CString part;
        part.Format(format, rest % 60);
        text = part + text;
        rest /= 60;
    }
    if (rest > 0)
    {
        CString hours;
        hours.Format(u"%I64d:", rest);
        text = hours + text;
    }
    return text;
}
} // namespace

void Profiler::activate(const char16_t* module, unsigned long mask)
{
    if (CString(u"QoKernel") == module)
        active = mask != 0;
}

bool Profiler::isActive() noexcept
{
    return active;
}

void Profiler::add(const char16_t* name, std::int64_t nanoseconds)
{
    const Guard guard(counters().lock);
    Counter& counter = counters().byName[CString(name)];
    counter.nanoseconds += nanoseconds;
    ++counter.calls;
}

void Profiler::reset()
{
    const Guard guard(counters().lock);
    counters().byName.clear();
}

void Profiler::dump()
{
    const Guard guard(counters().lock);
    for (const auto& [name, counter] : counters().byName)
    {
        const CString time = timeText(counter.nanoseconds / 1'000'000);
        TraceLog::trace(level::timing, u"%s :    %s ms | %d times", name, time, counter.calls);
    }
}

ProfileTimer::ProfileTimer(const char16_t* name, bool isActive)
    : m_name(isActive && Profiler::isActive() ? name : nullptr)
{
    if (m_name)
        m_start = nanosecondsNow();
}

ProfileTimer::~ProfileTimer()
{
    if (m_name)
        Profiler::add(m_name, nanosecondsNow() - m_start);
}
} // namespace qo

void traceQoKernelProfiler()
{
    qo::Profiler::dump();
}
