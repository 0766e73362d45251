#include "core/load/DatabaseSwap.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseGuard.h"

#include <QoKernel/Inside.h>

#include <cerrno>

namespace qo::host
{
namespace
{
void need(int error, const std::string& what)
{
    if (error != 0)
        throw HostError(ExitCode::failed, what + ": " + errorWords(error));
}

int removeIfThere(const CString& path)
{
    const int error = fileSystem().removeFile(path);
    return error == ENOENT ? 0 : error;
}

/// Copies the file if it is there.
void copyIfThere(const CString& from, const CString& to)
{
    FileInfo info;
    if (fileSystem().info(from, Spelling::exact, info) == ENOENT)
        return;
    need(fileSystem().copyFile(from, to),
         shownPath(from) + " cannot be kept as " + shownPath(to) + ", so nothing was changed");
}
} // namespace

void DatabaseSwap::draftFrom(const CString& source) const
{
    dropDraft();
    backupDatabase(source, draft());
}

CString DatabaseSwap::replace(const char16_t* word) const
{
    const CString kept =
        freeName(m_database + u"." + CString(word) + u"-" + CString(timeStampOfNow()));
    try
    {
        // The side files first: a copy of the database is complete once it has its own name.
        copyIfThere(m_database + u"-wal", kept + u"-wal");
        copyIfThere(m_database + u"-journal", kept + u"-journal");
        copyIfThere(m_database, kept);
        need(fileSystem().moveFile(draft(), pending()),
             shownPath(draft()) + " cannot be renamed, so nothing was changed");
    }
    catch (const HostError&)
    {
        dropDraft();
        throw;
    }
    finish();
    return fileSystem().exists(kept) ? kept : CString();
}

void DatabaseSwap::finish() const
{
    if (!fileSystem().exists(pending()))
        return;
    const std::string damage = DatabaseGuard(pending()).findDamage();
    if (!damage.empty())
        throw HostError(ExitCode::failed,
                        shownPath(pending()) + " is damaged (" + damage +
                            ") and was not put in the place of " + shownPath(m_database) +
                            ": move it away");
    const std::string what =
        shownPath(pending()) + " cannot take the place of " + shownPath(m_database);
    // A log of the former database would spoil the new one.
    for (const char16_t* const side : databaseSideFiles)
        need(removeIfThere(m_database + side), what);
    need(fileSystem().moveFile(pending(), m_database), what);
}

void DatabaseSwap::refuseUnfinished() const
{
    if (fileSystem().exists(pending()))
        throw HostError(
            ExitCode::busy,
            "the database " + shownPath(m_database) +
                " is being replaced; where that was cut short, the next command that changes "
                "something finishes it");
}

void DatabaseSwap::dropDraft() const
{
    (void)removeIfThere(draft());
    for (const char16_t* const side : databaseSideFiles)
        (void)removeIfThere(draft() + side);
}
} // namespace qo::host
