#pragma once

#include "core/plan/DiskFolders.h"
#include "core/plan/ReorganizePlan.h"

#include <vector>

namespace qo::host
{
/// A file that a plan is made for, with the places in collection form.
struct PlanCandidate
{
    PlannedFile file;
    CString from;
    CString to;
    DiskFolders::Folder* folder = nullptr; ///< that it goes to
    CString name;                          ///< that it gets there
    CString track;                         ///< the music beside it that it goes by; "" for none
};

/// Refuses the moves that would get into each other's way or into that of what is on the disk: two
/// files for one name, a name that is taken by what does not itself move away, and all that counted
/// on a place that so stays taken. What lies beside a track is refused with it. Names that differ
/// in case or in Unicode form alone count as one, since the collection takes them for one.
void refuseConflicts(std::vector<PlanCandidate>& candidates, DiskFolders& folders);
} // namespace qo::host
