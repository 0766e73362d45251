#pragma once

#include "types/Export.h"
#include "types/Forward.h"

namespace qo
{
/// Copies a database, with everything in its write-ahead log, to a file. The source is only read,
/// and others may go on using it. The target is complete or, after a failure, as before, and
/// readable by its owner only. Paths are in collection form. Every failure is a thrown
/// CSQLiteException*.
QO_API void backupDatabase(const CString& from, const CString& to);
} // namespace qo
