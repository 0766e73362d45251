#pragma once

#include "core/roots/RootFolders.h"

#include <QoKernel/Collection.h>

#include <string>
#include <vector>

namespace qo::host
{
/// A root folder as the database knows it from the last scan.
struct StoredRoot
{
    CString folder; ///< in collection form
    CQoPathInfo::EType kind = CQoPathInfo::audioIsMusic;
};

/// Whether there is a database of this version; one that is absent or empty is not made.
bool isCollection(const CString& database);

/// What the database knows of the own collection; without a scan yet its times are null. For a
/// database that is there. On the thread that calls the kernel; throws what the database layer
/// throws.
CollInfoDbItem storedInfo(const CString& database);

/// The root folders of the last scan. None without a collection of this version. On the thread that
/// calls the kernel; throws what the database layer throws.
std::vector<StoredRoot> storedRoots(const CString& database);

/// The same of a database that isCollection() or a load has found to be one.
std::vector<StoredRoot> knownStoredRoots(const CString& database);

/// Those of them that none of the list equals or holds: a load would take their
/// files out of the collection.
std::vector<StoredRoot> unlistedRoots(std::vector<StoredRoot> stored, const RootFolders& roots);

/// Throws HostError (away) when one of them is unlisted though the user did not remove it.
void refuseUnnamedRoots(const std::vector<StoredRoot>& unlisted, const RootFolders& roots);

/// Adds those that the user did not remove to the list. A line about each.
std::string restoreRoots(const std::vector<StoredRoot>& unlisted, RootFolders& roots);
} // namespace qo::host
