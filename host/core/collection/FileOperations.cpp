#include "core/collection/FileOperations.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/collection/UnfinishedMove.h"
#include "core/load/CollectionLoader.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootLister.h"
#include "core/session/Session.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Physical.h>

#include <sys/stat.h>

#include <set>

namespace qo::host
{
namespace
{
/// The name itself, not what a link leads to.
bool isSameName(const CString& a, const CString& b)
{
    struct stat first;
    struct stat second;
    return ::lstat(toSystemPath(a).c_str(), &first) == 0 &&
           ::lstat(toSystemPath(b).c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

/// Whether the record's file is the asked one or lies below it on the disk. The collection takes
/// folders whose names differ in case alone for one, the disk need not.
bool isBelow(const CString& record, const CString& asked)
{
    if (record == asked || (record.GetLength() > asked.GetLength() &&
                            record.Left(asked.GetLength() + 1) == asked + u"\\"))
        return true;
    CQoCollPath above(record);
    while (above.getCount() > CQoCollPath(asked).getCount())
        above = above.getParent();
    const CString spelled = above.toString();
    return nameExists(spelled) ? isSameName(spelled, asked)
                               : nameExists(rebased(record, asked, asked));
}

/// The records of the file, or of the files below the folder of exactly that name.
std::vector<QoFileDbItemPtr> recordsOf(const CString& path)
{
    std::vector<QoFileDbItemPtr> records = CollectionChanges::recordsAt(path);
    std::erase_if(records,
                  [&](const QoFileDbItemPtr& record) { return !isBelow(record->path, path); });
    return records;
}

/// Every regular file there, as a scan would find them.
std::vector<CString> filesAt(const CString& path)
{
    FileInfo info;
    if (fileSystem().info(path, Spelling::exact, info) != 0)
        return {};
    if (info.kind == FileKind::regular)
        return {path};
    std::vector<CString> files;
    RootLister(RootFolders().folders(), IgnoreRules::defaultNames)
        .forEachFile(path,
                     [&files](const CString& file, const FileInfo&)
                     {
                         files.push_back(file);
                         return true;
                     });
    return files;
}
} // namespace

FileOperations::FileOperations(Session& session, Trash trash, Run run)
    : m_session(session), m_trash(std::move(trash)), m_run(run)
{
}

FileOperations::Result
FileOperations::move(const CString& from, const CString& to, ProgressReporter& progress)
{
    check::source(from, "moved");
    check::notProtected(from, "moved", m_trash);
    check::inCollection(from, "moved");
    return transfer(from, targetOf(from, to), DiskMove::Mode::move, recordsOf(from), progress);
}

FileOperations::Result FileOperations::add(const CString& from,
                                           const CString& to,
                                           DiskMove::Mode mode,
                                           ProgressReporter& progress)
{
    if (mode == DiskMove::Mode::move && ownCollection().isDirInCollection(CQoCollPath(from)))
        return move(from, to, progress);
    check::source(from, mode == DiskMove::Mode::move ? "moved" : "copied");
    const CString target = targetOf(from, to);
    if (mode == DiskMove::Mode::move)
    {
        check::notProtected(from, "moved", m_trash);
        return transfer(from, target, mode, {}, progress);
    }
    // What is wanted of a link is the music behind it.
    const std::string real = resolvedPath(toSystemPath(from));
    return transfer(real.empty() ? from : fromSystemPath(real), target, mode, {}, progress);
}

int FileOperations::collect(const CString& from,
                            const CString& to,
                            DiskMove::Mode mode,
                            const Records& records,
                            CollectionChanges& changes)
{
    std::set<CString> known;
    for (const QoFileDbItemPtr& record : records)
    {
        const CString target = rebased(record->path, from, to);
        // A file that was gone before has not moved.
        if (!nameExists(target))
            continue;
        const QoFileDbItemPtr former = CollectionChanges::recordOf(target);
        if (former && former != record)
        {
            log(level::flow, u"FileOperations : the file of %s is gone, its record goes", target);
            changes.remove(target);
        }
        changes.move(record->path, target, true);
        known.insert(target);
    }
    for (const CString& file : filesAt(to))
    {
        if (!known.insert(file).second)
            continue;
        if (CollectionChanges::recordOf(file))
            changes.remove(file);
        changes.arrive(file, mode == DiskMove::Mode::move ? rebased(file, to, from) : CString());
    }
    return static_cast<int>(known.size());
}

FileOperations::Result FileOperations::transfer(const CString& from,
                                                const CString& to,
                                                DiskMove::Mode mode,
                                                const Records& records,
                                                ProgressReporter& progress)
{
    check::freeTarget(from, to);
    DiskMove disk(from, to, mode);
    disk.check();
    if (m_run == Run::trial)
        return {to, static_cast<int>(filesAt(from).size()), {}};
    UnfinishedMove note(Session::folder());
    note.begin(from, to, DiskMove::stagingName());
    disk.perform([&progress] { return progress.isCanceled(); });
    CollectionChanges changes(m_session);
    const int files = collect(from, to, mode, records, changes);
    const std::string deed = mode == DiskMove::Mode::move ? "moved" : "copied";
    applyOrUndo(
        changes,
        progress,
        shownPath(from) + " was not " + deed + " to " + shownPath(to),
        [&disk] { return disk.undo(); },
        shownPath(to));
    std::string left = disk.finish();
    if (!left.empty() && CQoCollection::m_ownCollection.isFilePathInCollection(CQoCollPath(from)))
        left += "; what is left of it counts as new to a scan";
    return {to, files, left};
}

bool FileOperations::wasCutShort()
{
    return UnfinishedMove::wasLeft(Session::folder());
}

void FileOperations::takeUp(Session& session)
{
    UnfinishedMove::Left left;
    if (!UnfinishedMove::read(Session::folder(), left))
        return UnfinishedMove::forget(Session::folder());
    FileMark mark;
    const bool isThere = markOf(toSystemPath(left.to), mark) == 0;
    const bool isAtFirst = nameExists(left.from);
    // Its disk is away.
    if (!isThere && !isAtFirst)
        return;
    TreeCopy(left.from, left.to, left.staging).removeStaged();
    // A disk may have another number by now.
    const bool isSame = mark.inode == left.mark.inode &&
                        (mark.device == left.mark.device || mark.isAlike(left.mark));
    if (isThere && isSame && !isAtFirst)
    {
        CollectionChanges changes(session);
        collect(left.from, left.to, DiskMove::Mode::move, recordsOf(left.from), changes);
        ProgressReporter silent([](const ProgressEvent&) {});
        changes.apply(silent);
    }
    else if (isThere && isAtFirst)
        session.note(CollectionChanges::recordsAt(left.to).empty()
                         ? "the program ended while it copied " + shownPath(left.from) +
                               ", which is in its place; " + shownPath(left.to) +
                               " may have come of it"
                         : shownPath(left.from) + " was moved to " + shownPath(left.to) +
                               ", but the program ended before all of the old one was removed");
    UnfinishedMove::forget(Session::folder());
}

FileOperations::Result FileOperations::remove(const CString& path, ProgressReporter& progress)
{
    check::source(path, "put into the trash");
    check::notProtected(path, "put into the trash", m_trash);
    check::inCollection(path, "put into the trash");
    const Records records = recordsOf(path);
    const int count = static_cast<int>(records.size());
    if (m_run == Run::trial)
        return {path, count, {}};
    const FoldersAbove folders(toSystemPath(path));
    const Trash::Item item = m_trash.put(toSystemPath(path));
    CollectionChanges changes(m_session);
    for (const QoFileDbItemPtr& record : records)
        changes.remove(record->path);
    applyOrUndo(
        changes,
        progress,
        shownPath(path) + " was not put into the trash",
        [&]
        {
            const int error = folders.makeAgain();
            return error != 0 ? error : Trash::putBack(item);
        },
        item.file);
    return {fromSystemPath(item.file), count, {}};
}

void FileOperations::applyOrUndo(CollectionChanges& changes,
                                 ProgressReporter& progress,
                                 const std::string& deed,
                                 const std::function<int()>& undo,
                                 const std::string& stays)
{
    if (changes.isEmpty())
        return;
    std::string text = deed + ": ";
    ExitCode code = ExitCode::failed;
    try
    {
        return changes.apply(progress);
    }
    catch (const HostError& error)
    {
        text += error.what();
        code = error.code();
    }
    const int error = undo();
    text += error == 0 ? "; the disk is as it was before"
                       : "; the collection is as it was before, but it lies at " + stays +
                             " and could not be put back: " + errorWords(error);
    throw HostError(code, text + loadAgain());
}

/// What a save that failed left in memory must not reach the next one. An addition to the
/// sentence, mostly empty.
std::string FileOperations::loadAgain()
{
    try
    {
        ProgressReporter silent([](const ProgressEvent&) {});
        loadCollection(m_session, {}, silent);
        return {};
    }
    catch (const HostError& error)
    {
        ownCollection().clearCollection(nullptr);
        return std::string("; the collection could not be read again: ") + error.what();
    }
}
} // namespace qo::host
