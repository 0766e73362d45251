#pragma once

#include "types/Export.h"

#include <cstdint>

namespace qo
{
/// Adds the time between construction and destruction, and one call, to the counter of that name.
/// The name must outlive the timer. Inactive timers, and all of them while profiling is switched
/// off, cost nothing.
class QO_API ProfileTimer
{
public:
    explicit ProfileTimer(const char16_t* name, bool active = true);
    ~ProfileTimer();
    ProfileTimer(const ProfileTimer&) = delete;
    ProfileTimer& operator=(const ProfileTimer&) = delete;

private:
    const char16_t* m_name; ///< null while inactive
    std::int64_t m_start = 0;
};
} // namespace qo
