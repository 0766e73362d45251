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
    }
    catch (const HostError&)
    {
        dropDraft();
        throw;
    }
    putInPlace();
    return fileSystem().exists(kept) ? kept : CString();
}

void DatabaseSwap::putInPlace() const
{
    if (const int error = fileSystem().moveFile(draft(), pending()))
    {
        dropDraft();
        need(error, shownPath(draft()) + " cannot be renamed, so nothing was changed");
    }
    finish();
    dropDraft();
}

void DatabaseSwap::finish() const
{
    if (fileSystem().exists(pending()))
        finishReplacement();
    keepBackup();
}

void DatabaseSwap::finishReplacement() const
{
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

/// The copy of the former database outlasts the draft that was made from it. A draft that still
/// stands was not finished, and is made anew.
void DatabaseSwap::keepBackup() const
{
    const CString copy = draft() + u".bak";
    if (!fileSystem().exists(copy) || fileSystem().exists(draft()))
        return;
    const CString target = m_database + u".bak";
    for (const char16_t* const side : databaseSideFiles)
        (void)removeIfThere(target + side);
    (void)removeIfThere(draft() + u".creation-lock");
    if (const int error = fileSystem().moveFile(copy, target))
        qo::log(qo::level::warning, u"%s: %s", target, errorText(error));
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
    for (const char16_t* const part : {u"", u".bak", u".bak.new"})
    {
        (void)removeIfThere(draft() + part);
        for (const char16_t* const side : databaseSideFiles)
            (void)removeIfThere(draft() + part + side);
    }
    (void)removeIfThere(draft() + u".creation-lock");
}
} // namespace qo::host
