#pragma once

#include "core/roots/RootFolders.h"

namespace qo::cli
{
struct CommandLine;

/// The root folder that equals the folder or holds it, "" when there is none. Throws HostError for
/// a folder that differs from a root folder only in case, since the collection cannot tell their
/// paths apart.
CString findHolder(const host::RootFolders& roots, const CString& folder);

/// Asks before a folder becomes a root folder that holds the system's own. Throws HostError if that
/// is not wanted, and for a folder of a device that was adopted.
void confirmNewRoot(const CommandLine& line, const CString& folder);
} // namespace qo::cli
