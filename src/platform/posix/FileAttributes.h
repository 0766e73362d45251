#pragma once

#include <sys/stat.h>

namespace qo
{
/// Gives an open file (to) the owner, group, mode, access list and extended attributes of another
/// (from, whose state is st), and takes away those that the other has not. False if one of them
/// cannot be given.
bool copyAttributes(int from, const struct stat& st, int to);
} // namespace qo
