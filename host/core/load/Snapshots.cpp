#include "core/load/Snapshots.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseSwap.h"
#include "core/session/KernelThread.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <algorithm>
#include <regex>
#include <vector>

namespace qo::host
{
namespace
{
constexpr const char16_t* namePrefix = u"qodb-";
constexpr const char* copyPattern = "qodb-\\d{8}_\\d{6}(_\\d+)?";
constexpr const char* unfinishedPattern = "qodb-\\d{8}_\\d{6}(_\\d+)?\\.unfinished(-[a-z]+)?";

/// The regular files of the folder whose whole name fits.
std::vector<DirEntry> findFiles(const CString& folder, const char* pattern)
{
    std::vector<DirEntry> entries;
    if (fileSystem().list(folder, entries) != 0)
        return {};
    const std::regex wanted(pattern);
    std::erase_if(entries,
                  [&wanted](const DirEntry& entry) {
                      return entry.info.kind != FileKind::regular ||
                             !std::regex_match(toUtf8(entry.name), wanted);
                  });
    return entries;
}

bool isNewer(const DirEntry& a, const DirEntry& b)
{
    const std::int64_t first = toTicks(a.info.modified);
    const std::int64_t second = toTicks(b.info.modified);
    return first != second ? first > second : b.name < a.name;
}
} // namespace

Snapshots::Snapshots(const CString& database)
    : m_database(database), m_folder(CQoCollPath(database).getParent().toString() + u"\\snapshots")
{
}

CString Snapshots::take()
{
    const CString copy = add();
    removeOld(copy);
    return copy;
}

CString Snapshots::add()
{
    try
    {
        if (const int error = fileSystem().makeDirectories(m_folder))
            throw HostError(ExitCode::failed, shownPath(m_folder) + ": " + errorWords(error));
        const CString copy = freeName(m_folder + u"\\" + namePrefix + timeStampOfNow());
        try
        {
            backupDatabase(m_database, copy);
        }
        catch (...)
        {
            KernelThread::rethrowAsHostError(m_database);
        }
        sweepUnfinished();
        if (!fileSystem().exists(copy))
            throw HostError(ExitCode::failed, shownPath(copy) + " has vanished");
        return copy;
    }
    catch (const HostError& error)
    {
        throw HostError(error.code(),
                        "no snapshot of " + shownPath(m_database) +
                            " can be taken: " + error.what());
    }
}

void Snapshots::copyTo(const CString& target) const
{
    FileInfo database;
    FileInfo there;
    (void)fileSystem().info(m_database, Spelling::exact, database);
    const bool isThere = fileSystem().info(target, Spelling::exact, there) == 0;
    if (isThere && there.device == database.device && there.inode == database.inode)
        throw HostError(ExitCode::usage, shownPath(target) + " is the database itself");
    if (isThere && there.kind != FileKind::regular)
        throw HostError(ExitCode::failed, shownPath(target) + " is no regular file");
    // They would be taken for changes to the copy.
    for (const char16_t* const side : databaseSideFiles)
    {
        if (fileSystem().exists(target + side))
            throw HostError(ExitCode::failed,
                            shownPath(target + side) + " belongs to another database of that name");
    }
    try
    {
        backupDatabase(m_database, target);
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(target);
    }
}

std::string Snapshots::keep()
{
    return "the collection as it was is kept in " + shownPath(take());
}

CStringArray Snapshots::list() const
{
    std::vector<DirEntry> entries = findFiles(m_folder, copyPattern);
    std::sort(entries.begin(), entries.end(), isNewer);
    CStringArray copies;
    for (const DirEntry& entry : entries)
        copies.Add(m_folder + u"\\" + entry.name);
    return copies;
}

bool Snapshots::isOfToday() const
{
    const CStringArray copies = list();
    const CString today = namePrefix + CString(timeStampOfNow()).Left(8);
    return !copies.IsEmpty() && CQoCollPath(copies[0]).getLast().Left(today.GetLength()) == today;
}

bool Snapshots::isNewerThanDatabase() const
{
    const CStringArray copies = list();
    FileInfo copy;
    if (copies.IsEmpty() || fileSystem().info(copies[0], Spelling::exact, copy) != 0)
        return false;
    for (const char16_t* const part : {u"", u"-wal"})
    {
        FileInfo info;
        const int error = fileSystem().info(m_database + part, Spelling::exact, info);
        if (error == 0 && toTicks(info.modified) > toTicks(copy.modified))
            return false;
    }
    return true;
}

void Snapshots::removeOld(const CString& taken) const
{
    int kept = 1;
    for (const CString& copy : list())
    {
        if (copy == taken || ++kept <= keptCount)
            continue;
        if (const int error = fileSystem().removeFile(copy))
            qo::log(qo::level::warning, u"old snapshot %s: %s", copy, errorText(error));
        for (const char16_t* side : databaseSideFiles)
            (void)fileSystem().removeFile(copy + side);
    }
}

void Snapshots::sweepUnfinished() const
{
    for (const DirEntry& entry : findFiles(m_folder, unfinishedPattern))
        (void)fileSystem().removeFile(m_folder + u"\\" + entry.name);
}
} // namespace qo::host
