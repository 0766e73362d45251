#pragma once

#include "core/runs/MoveStep.h"

#include <string>
#include <vector>

namespace qo::host
{
/// Puts the moves of a run into an order in which each finds its place free.
///
/// Places count as one when they differ in case or in Unicode form alone (sameNameKey()): the
/// collection takes such paths for one, and so do some disks. Hence a file comes after every file
/// that leaves a place of the same key, and a folder is made after the file that bore its name.
/// Where files change places in a ring, one of them waits ("is parked") under a temporary name
/// beside its first place, and so does a file whose own name changes in case alone.
///
/// Example: s/p shall become s/Q, s/q shall become s/P, and s/x shall become s/p. The keys that are
/// left are s/p, s/q and s/x, those that are wanted s/q, s/p and s/p. The walk begins with s/p: its
/// new place has the key of s/q, so s/q comes first; but the new place of s/q has the key of s/p,
/// which is still on its way. That is a ring, and s/p is parked:
///
///     s/p -> s/.qo-ID-0        frees the key s/p
///     s/q -> s/P               frees the key s/q
///     s/.qo-ID-0 -> s/Q
///     s/x -> s/p               fails: s/P has its key, and stays. A plan refuses such pairs.
///
/// Stopped after any of these lines, no two files have places of one key, so the collection can
/// hold all their records.
///
/// Folders are removed last, save those in whose place a file comes. The time is that of sorting;
/// no disk is asked.
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
