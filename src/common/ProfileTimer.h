#pragma once

#include "types/Export.h"

#include <cstdint>

namespace qo
{
/// Adds its lifetime, and one call, to the counter of that name, which must outlive the timer. It
/// costs nothing if it is inactive or profiling is off.
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
