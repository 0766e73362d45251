#pragma once

#include "Database/src/DbFacade/SQLiteDB.h"
#include "types/Export.h"
#include "types/String.h"

/// How a file that is no sound database makes room for a new one.
namespace qo
{
struct FileInfo;

/// Held by the one, of all processes, that replaces an unreadable database: without it a second
/// one could rename what the first has just made. It is a lock that SQLite takes on the empty file
/// "<path>.creation-lock" and ends with the process. The file stays: removing it would let two
/// hold the lock.
class CreationLock
{
public:
    /// Waits up to a minute; throws CSQLiteException*.
    explicit CreationLock(const CString& path);

private:
    CSQLiteDB m_db;
};

/// Renames the file, and before it what SQLite keeps beside it, to the first free of
/// "<path>.unreadable-<date>_<time>", "..._1" and so on; overwrites nothing. False, with all names
/// as they were, if the path no longer names the file that was examined. Throws CSQLiteException*,
/// again with all names as they were, if the file cannot be renamed. Nobody may have it open here.
QO_API bool setAside(const CString& path, const FileInfo& examined);
} // namespace qo
