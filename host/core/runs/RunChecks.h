#pragma once

#include "core/collection/Trash.h"
#include "core/plan/ReorganizePlan.h"
#include "core/runs/MoveRun.h"

#include <string>
#include <vector>

/// What has to be so before a run touches the disk. For the kernel's thread, with the collection
/// loaded.
namespace qo::host::check
{
/// Those of the loaded collection, as system paths.
std::vector<std::string> rootFolders();

/// The root folders that hold these places show what they hold; all root folders, without any
/// place. Otherwise files would go under a mount point, or seem to have gone. Throws HostError
/// (away).
void rootsAreThere(const std::vector<std::string>& places);

/// A plan may come from anywhere, and it names its folders itself: nothing may lie, or go, outside
/// the root folders, be it by a link. Throws HostError.
void ownFolders(const ReorganizePlan& plan);

/// The folders that a run may use: the root folders, by the session's word and not the journal's,
/// and for what leaves the collection a trash, or comes to it the folder of it. Throws HostError
/// when a path of the run lies elsewhere.
MoveRun::Bounds boundsOf(const MoveProgress::Start& start, const Trash& trash);

/// Gives a plan what the collection knows by now: the ids of its records, the folders to be kept.
/// Refuses, and returns, files whose new place is that of another file to the collection.
std::vector<MoveRun::Failure> bringUpToDate(ReorganizePlan& plan);
} // namespace qo::host::check
