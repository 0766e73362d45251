#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <vector>

namespace qo
{
/// The names of at most that many entries of a folder, in the system's own order and without "."
/// and "..", for questions that a whole listing would be too dear for. The path is taken as it is
/// spelled and in collection form. The system's error number, 0 for success. Safe from any thread.
QO_API int firstNames(const CString& folder, std::size_t most, std::vector<CString>& names);

/// Whether a folder of that name there is one that the user's trash is kept in, so that a walk for
/// the user's files passes it over. Safe from any thread.
QO_API bool isTrashFolder(const CString& folder, const CString& name);

/// Whether a walk for the user's files passes over a folder of that name there: one that a trash is
/// kept in, or one of those given. The folder above has its closing backslash. Safe from any
/// thread.
QO_API bool
isPassedOver(const std::vector<CString>& ownFolders, const CString& folder, const CString& name);
} // namespace qo
