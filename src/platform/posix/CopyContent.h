#pragma once

#include "platform/posix/PosixFile.h"

#include <functional>

namespace qo
{
/// The whole content from the beginning of one file to that of another, shared or copied inside the
/// system where the disk can. The error number, 0 for success, ECANCELED when stop, which is asked
/// for each block and may be empty, says so.
int copyContent(PosixFile& from, PosixFile& to, const std::function<bool()>& stop = {});

/// Whether two files, read from where they stand, have the same bytes: 0 if so, EIO if not, else an
/// error number as above.
int compareContent(PosixFile& one, PosixFile& other, const std::function<bool()>& stop = {});
} // namespace qo
