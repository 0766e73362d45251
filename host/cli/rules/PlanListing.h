#pragma once

#include "cli/CommandLine.h"
#include "core/plan/ReorganizePlan.h"

#include <string>

namespace qo::cli
{
/// Puts out what a plan has in mind: first what is refused, then what moves, with the part of the
/// rule that decided and the common folder said once; or an object for each file.
void listPlan(CommandLine& line, const host::ReorganizePlan& plan, bool withStaying);

/// "12 files would move, 1 is refused, 300 stay".
std::string planSummary(const host::ReorganizePlan& plan);
} // namespace qo::cli
