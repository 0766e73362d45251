#pragma once

#include "types/Export.h"

#include <cstdint>

namespace qo
{
/// Counters of time and calls by name, filled by ProfileTimer. May be called from any thread.
class QO_API Profiler
{
public:
    /// A mask of 0 turns the counters of a module off, any other one on. "QoKernel" is the only
    /// module; other names have no effect.
    static void activate(const char16_t* module, unsigned long mask);
    static bool isActive() noexcept;
    /// Adds one call and its duration to the counter of that name.
    static void add(const char16_t* name, std::int64_t nanoseconds);
    static void reset();
    /// One trace line for each counter, ordered by name.
    static void dump();
};
} // namespace qo

/// Writes the profiling counters to the trace log.
QO_API void traceQoKernelProfiler();
