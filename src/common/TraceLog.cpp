#include "common/TraceLog.h"

#include "common/TraceFile.h"
#include "platform/Platform.h"
#include "types/Utf.h"

#include <atomic>
#include <cstdio>
#include <thread>

namespace qo
{
namespace
{
/// A file larger than this is closed before the next line is written.
constexpr std::int64_t largestFile = 0xA00000;

/// The only trace of the process.
struct Writer
{
    TraceFile file;
    std::atomic<int> maxLevel{0};
    std::atomic<unsigned> owner{0}; ///< id of the writing thread, 0 for none
    std::atomic<bool> toDebugger{false};
    std::atomic<bool> reopen{false};
};

Writer& writer()
{
    // Never destroyed: destructors of static objects may still trace.
    static auto* const only = new Writer();
    return *only;
}

/// A spin lock by thread id: lines are short and rarely written by two threads at once.
class WriterLock
{
public:
    WriterLock()
    {
        const unsigned me = systemClock().threadId();
        unsigned nobody = 0;
        while (!writer().owner.compare_exchange_weak(nobody, me, std::memory_order_acquire))
        {
            nobody = 0;
            std::this_thread::yield();
        }
    }
    ~WriterLock() { writer().owner.store(0, std::memory_order_release); }
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;
};

bool isSameDay(const CalendarTime& a, const CalendarTime& b)
{
    return a.year == b.year && a.month == b.month && a.day == b.day;
}
} // namespace

void TraceLog::setBasePath(const CString& basePath)
{
    {
        const WriterLock lock;
        writer().file.setBasePath(basePath);
    }
    TraceFile::cleanUp(basePath, keptLogFiles);
}

void TraceLog::setMaxLevel(int level)
{
    writer().maxLevel = level < 1 ? 0 : level;
}

int TraceLog::getMaxLevel() noexcept
{
    return writer().maxLevel;
}

void TraceLog::setReopenAfterLine(bool reopen)
{
    writer().reopen = reopen;
}

void TraceLog::setDebuggerOutput(bool output)
{
    writer().toDebugger = output;
}

void TraceLog::writeText(int level, const CString& text)
{
    Writer& w = writer();
    if (w.maxLevel == 0 || level > w.maxLevel)
        return;
    const WriterLock lock;
    const CalendarTime time = systemClock().localTime();
    // A new file for each day, and when the old one is too large.
    if (!w.file.isOpen() || !isSameDay(w.file.date(), time) || w.file.size() > largestFile)
        w.file.open(time);
    w.file.writeLine(level, time, text);
    if (w.reopen)
        w.file.reopen();
    if (w.toDebugger)
        std::fprintf(stderr, "%s\n", toUtf8(text).c_str());
}
} // namespace qo
