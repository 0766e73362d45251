#pragma once

#include "types/Export.h"

#include <cstdint>

namespace qo
{
/// Counters of named stretches of work, filled by ProfileTimer. Safe from any thread.
class QO_API Profiler
{
public:
    /// A mask of 0 switches the counters of the module off, any other on. "QoKernel" is the only
    /// module there is; other names change nothing.
    static void activate(const char16_t* module, unsigned long mask);
    static bool isActive() noexcept;
    static void add(const char16_t* name, std::int64_t nanoseconds);
    static void reset();
    /// One trace line for each counter, ordered by name.
    static void dump();
};
} // namespace qo

/// Writes the profiling counters to the trace log.
QO_API void traceQoKernelProfiler();
