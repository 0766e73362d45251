#pragma once

#include "core/plan/ReorganizePlan.h"

namespace qo::host
{
/// Looks at the disk as the run of the plan would find it now, and changes nothing: a file that
/// cannot move any more becomes refused with its reason, one that has moved since becomes one that
/// stays.
void recheck(ReorganizePlan& plan);
} // namespace qo::host
