#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <vector>

namespace qo
{
/// Up to that many names in a folder, in the system's own order and without "." and "..": for
/// questions for which a whole listing costs too much. The path must be exact and in collection
/// form. Returns the system's error number, 0 for success. May be called from any thread.
QO_API int firstNames(const CString& folder, std::size_t most, std::vector<CString>& names);

/// Whether a folder of that name in that folder contains the user's trash, so that a walk skips it.
/// May be called from any thread.
QO_API bool isTrashFolder(const CString& folder, const CString& name);

/// Whether a walk for the user's files skips a folder of that name in that folder: a trash, or one
/// of ownFolders. folder must have a closing backslash. May be called from any thread.
QO_API bool
isPassedOver(const std::vector<CString>& ownFolders, const CString& folder, const CString& name);
} // namespace qo
