#pragma once

#include <sys/stat.h>

namespace qo
{
/// Copies owner, group, mode, access list and extended attributes from one open file (whose state
/// is st) to another, and removes those that only the other one has. False if any of this fails.
bool copyAttributes(int from, const struct stat& st, int to);
} // namespace qo
