#pragma once

#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// A collection of files that lie elsewhere, on a device, in a service or with a friend, beside the
/// user's own one in the database.
struct FarCollection
{
    std::string name; ///< as users call the place
    CString id;       ///< in the database
    CStringArray folders;
    CQoPathsInfoMap kinds;    ///< of the folders
    CStringArray diskFolders; ///< those that a walk of disks lists, by their present letters
};

/// What a scan of such a collection found.
struct FarScanReport
{
    int files = 0;
    int added = 0;
    int changed = 0;
    int gone = 0;
    double seconds = 0;
    std::vector<std::string> remarks; ///< sentences about what could not be read
};

/// Looks through the folders of the collection and saves what changed. Records below what cannot be
/// listed stay, and so do all when the place goes away in the middle. Nothing of the collection is
/// loaded afterwards. Throws HostError: interrupted, or failed when it cannot be loaded or saved,
/// or a friend's list cannot be had.
FarScanReport scanFar(Session& session,
                      const FarCollection& collection,
                      const CString& database,
                      bool isDeep,
                      ProgressReporter& progress);

/// Takes the files of the collection out of the database. Throws HostError.
void dropFar(const CString& collectionId);
/// How many files of it the database has; nothing when it was never scanned. Throws what the
/// database layer throws.
std::optional<std::int64_t> countFar(const CString& database, const CString& collectionId);
} // namespace qo::host
