#pragma once

#include "core/runs/MoveStep.h"

#include <string>
#include <vector>

namespace qo::host
{
/// Puts what is wanted into an order in which each step finds its place free: a file comes after
/// the one whose place it takes, a folder before what it shall hold and after the file that bore
/// its name. Where files change places in a circle one of them waits under a temporary name, and so
/// does a file whose new name differs in case or in Unicode form alone, which some disks take for
/// the old one. Folders are removed last, save those in whose place a file comes. The time is that
/// of sorting; no disk is asked.
class MoveSteps
{
public:
    /// The temporary names hold the run's id. The folders to be removed may stand in any order.
    static std::vector<MoveStep> inOrder(const std::vector<MovedFile>& files,
                                         const std::vector<MoveStep>& foldersToMake,
                                         const std::vector<MoveStep>& foldersToRemove,
                                         const std::string& runId);

    /// The name under which a file waits. It keeps the end of its own: the collection, which hears
    /// of it when a run is cut short there, takes it for the kind of file that it is.
    static std::string
    waitingName(const std::string& runId, std::size_t file, const std::string& path);
};
} // namespace qo::host
