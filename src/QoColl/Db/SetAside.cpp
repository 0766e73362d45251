#include "QoColl/Db/SetAside.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "common/Log.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <cerrno>
#include <iterator>
#include <memory>

namespace qo
{
namespace
{
/// What is renamed, in this order: if the file went first, a new one could pick up the log of the
/// old one.
constexpr const char16_t* parts[] = {u"-wal", u"-shm", u"-journal", u""};

/// Whether the path still names the file that was examined, by device and inode.
bool isStill(const CString& path, const FileInfo& examined)
{
    FileInfo now;
    return fileSystem().info(path, Spelling::exact, now) == 0 && now.device == examined.device &&
           now.inode == examined.inode;
}

/// Whether the name is free for all parts: a side file of that name would become one of the renamed
/// file.
bool isFree(const CString& name)
{
    FileInfo info;
    for (const char16_t* part : parts)
        if (fileSystem().info(name + part, Spelling::exact, info) != ENOENT)
            return false;
    return true;
}

/// Renames all parts. ESTALE if the path no longer names the examined file. After a failure all
/// names are as before.
int moveAll(const CString& from, const CString& to, const FileInfo& examined)
{
    bool moved[std::size(parts)] = {};
    for (std::size_t i = 0; i < std::size(parts); ++i)
    {
        const bool isSideFile = *parts[i] != 0;
        int error = isStill(from, examined) ? 0 : ESTALE;
        if (error == 0)
            error = fileSystem().moveFileNoReplace(from + parts[i], to + parts[i]);
        moved[i] = error == 0;
        if (error == 0 || (isSideFile && error == ENOENT))
            continue;
        while (i-- > 0)
            if (moved[i])
                (void)fileSystem().moveFileNoReplace(to + parts[i], from + parts[i]);
        return error;
    }
    return 0;
}
} // namespace

CreationLock::CreationLock(const CString& path) : m_db(path + u".creation-lock")
{
    m_db.Open();
    // Without a journal file the lock leaves nothing but its own empty file.
    (void)m_db.CompileStatement(u"PRAGMA journal_mode = MEMORY").ExecuteQuery();
    m_db.Execute(u"BEGIN EXCLUSIVE");
}

bool setAside(const CString& path, const FileInfo& examined)
{
    const CString wanted = path + u".unreadable-" + timeStamp(systemClock().localTime());
    CString target = wanted;
    int error = EEXIST;
    for (int i = 1; error == EEXIST; ++i)
    {
        if (isFree(target))
            error = moveAll(path, target, examined);
        if (error == EEXIST)
            target.Format(u"%s_%d", wanted, i);
    }
    if (error == ESTALE)
        return false;
    if (error != 0)
        throwDatabaseError(u"The unreadable database " + path + u" cannot be renamed: " +
                           errorText(error));
    log(level::error, u"%s is no sound database, it was renamed to %s", path, target);
    return true;
}
} // namespace qo
