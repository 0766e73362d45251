#pragma once

#include "Database/src/DbFacade/SQLiteDB.h"
#include "types/Export.h"
#include "types/String.h"

/// How a file that is not a readable database makes room for a new one.
namespace qo
{
struct FileInfo;

/// A lock between processes: only its holder may replace an unreadable database, since a second
/// process could otherwise rename the one that the first has just made. It is an SQLite lock on the
/// empty file "<path>.creation-lock" and ends with the process. That file stays, since removing it
/// would let two processes hold the lock.
class CreationLock
{
public:
    /// Waits for up to a minute, then throws CSQLiteException*.
    explicit CreationLock(const CString& path);

private:
    CSQLiteDB m_db;
};

/// Renames the file, and first the files that SQLite keeps beside it, to the first free name of
/// "<path>.unreadable-<date>_<time>", "..._1" and so on. Nothing is overwritten. False, with all
/// names unchanged, if the path no longer names the examined file. Throws CSQLiteException*, also
/// with all names unchanged, if the file cannot be renamed. No connection of this process may have
/// it open.
QO_API bool setAside(const CString& path, const FileInfo& examined);
} // namespace qo
