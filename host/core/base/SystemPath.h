#pragma once

#include <string>

/// Questions about absolute system paths that are answered without looking at the disk.
namespace qo::host
{
/// Whether a path is absolute and says each folder once: no ".", "..", doubled or closing slash.
bool isPlainPath(const std::string& path);

/// Whether the path lies in the folder, at any depth. Both plain.
bool isBelow(const std::string& path, const std::string& folder);

/// The folder that holds it; "/" for what stands at the top, and for "/".
std::string parentOf(const std::string& path);

/// The path of a name in a folder.
std::string inFolder(const std::string& folder, const std::string& name);
} // namespace qo::host
