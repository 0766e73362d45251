#pragma once

#include <string>

namespace qo
{
/// Renames a file, link or folder; EEXIST, with both unchanged, if the target exists. Returns the
/// error number, 0 for success.
int renameNoReplace(const std::string& from, const std::string& to);
} // namespace qo
