#pragma once

#include <string>

namespace qo::host
{
/// Waits until the disk has the names in that folder. The error number, 0 for success.
int syncFolder(const std::string& folder);

/// Waits until the disk has all that was changed on the folder's file system.
int syncFileSystem(const std::string& folder);
} // namespace qo::host
