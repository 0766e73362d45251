#pragma once

#include "types/Export.h"
#include "types/Forward.h"

namespace qo
{
/// Copies a database, with what stands in its write-ahead log, to a file of its own. The source is
/// only read and others may go on using it. The target is complete or, after a failure, as it was;
/// readable by its owner only. Paths in collection form; every failure is a thrown
/// CSQLiteException*.
QO_API void backupDatabase(const CString& from, const CString& to);
} // namespace qo
