#pragma once

#include "core/runs/MoveProgress.h"

#include <string>

namespace qo::host
{
/// What it takes to undo a run, from a progress that agrees with the disk: see MoveRecovery. Files
/// that are gone, that have changed since or whose first place is taken stay where they are, and so
/// do those whose first place such a file keeps. Files that an earlier undo brought back are done.
class MoveUndo
{
public:
    static MoveProgress::Start startFor(const MoveProgress& progress, const std::string& runId);
};
} // namespace qo::host
