#include "core/load/CollectionLoader.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/PendingTags.h"
#include "core/load/LossGuard.h"
#include "core/load/RootPresence.h"
#include "core/load/Snapshots.h"
#include "core/load/UnfinishedScan.h"
#include "core/load/UnreadFiles.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootGuard.h"
#include "core/roots/StoredRoots.h"
#include "core/runs/Reorganizer.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <QoKernel/Statistics.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <set>

namespace qo::host
{
namespace
{
HostError saveFailure(const CString& database, const std::string& cause)
{
    return {ExitCode::failed,
            "the collection could not be saved to " + shownPath(database) +
                ", which is as it was before: " + cause};
}

/// Without a slice there is nothing to go on from: the folders are as new as they were.
void endUnlessKept(const UnfinishedScan& mark, const SlicedScan::Report& slices)
{
    if (!slices.hasSaved && !mark.wasThere())
        mark.end();
}

std::string keptText(const SlicedScan::Report& slices, bool goesOn)
{
    if (!slices.hasSaved && !goesOn)
        return "nothing was kept yet";
    const std::string count = std::to_string(slices.added + slices.changed);
    const std::string kept =
        !slices.hasSaved ? "no more files were read"
        : count == "0"   ? "what had gone so far was taken out"
        : goesOn ? count + " more files were kept (" + std::to_string(slices.files) + " in all)"
                 : "the " + count + " files read so far were kept";
    return kept + ", and the next scan goes on from there";
}
} // namespace

CollectionLoader::CollectionLoader(Session& session,
                                   const LoadOptions& options,
                                   ProgressReporter& progress)
    : m_session(session)
    , m_options(options)
    , m_progress(progress)
    , m_database(options.database.IsEmpty() ? Session::databasePath() : options.database)
    , m_isOwn(options.database.IsEmpty())
{
}

LoadReport CollectionLoader::load()
{
    try
    {
        loadGuarded();
    }
    catch (...)
    {
        m_session.scanHost().setReadAll(false);
        KernelThread::rethrowAsHostError(m_database);
    }
    m_session.scanHost().setReadAll(false);
    return m_report;
}

void CollectionLoader::loadGuarded()
{
    RootFolders roots;
    const std::vector<StoredRoot> unlisted = unlistedRoots(storedRoots(m_database), roots);
    refuseUnnamedRoots(unlisted, roots);
    if (m_session.hasLock() && m_isOwn)
    {
        settleUnfinishedScan();
        // Before a record goes its place must be known, however the last command ended.
        PendingTags::settle(m_session);
        if (hasUnappliedMoves())
            followMoves();
    }
    const CollInfoDbItem info = storedInfo(m_database);
    m_isFirst = CQoCollDbUtils::IsNullFILETIME(info.scanTime);
    const UnfinishedScan mark(Session::folder());
    const bool hasNews = m_options.rescan || hasOtherRoots(roots);
    const CStringArray fresh = hasNews ? freshRoots(roots, mark) : CStringArray();
    const CStringArray walked = m_options.rescan ? roots.folders() : fresh;
    m_report.walked = m_options.rescan || !walked.IsEmpty();
    const std::vector<RootProblem> givenUp = guardRoots(walked);
    if (!givenUp.empty() || !unlisted.empty())
        keepSnapshot();
    m_session.scanHost().forget();
    m_session.scanHost().setReadAll(m_options.deep);
    if (m_report.walked)
    {
        const HostStore store(Session::folder());
        m_session.scanHost().setReadAgain(store.unreadFiles());
        m_session.scanHost().setReadExts(
            m_session.fileKinds().changedFrom(FileKinds(toUtf8(store.fileKinds()))));
    }
    const auto start = std::chrono::steady_clock::now();
    if (m_report.walked)
        scan(roots, walked, fresh, givenUp);
    else
        readDatabase(roots.folders(), roots.kinds());
    m_report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (hasNews)
        checkSaved();
    if (hasNews && m_isOwn)
    {
        // What is not a rescan has analysed the names of new root folders alone.
        m_options.rescan ? mark.end() : mark.endRoots();
        PendingTags::settle(m_session);
    }
    if (m_options.rescan && m_isOwn)
        rememberFileKinds();
    forgetRemovedRoots(roots);
    m_report.files = CQoCollection::m_ownCollection.getFileCount();
    if (m_session.countsUsage() && m_isOwn)
        m_report.walked ? CQoStatistics::reportNumberOfFilesAtEnd()
                        : CQoStatistics::reportNumberOfFilesAtStart();
    if (!m_options.rescan && hasUnfinishedScan())
        m_session.note("the last scan was interrupted: \"qo scan\" goes on with it");
}

/// All files were read by them now.
void CollectionLoader::rememberFileKinds() const
{
    HostStore store(Session::folder());
    const CString kinds = fromUtf8(m_session.fileKinds().text());
    if (kinds != store.fileKinds())
        store.setFileKinds(kinds);
    m_session.scanHost().setReadExts({});
}

bool CollectionLoader::hasUnfinishedScan()
{
    try
    {
        return UnfinishedScan(Session::folder()).wasThere();
    }
    catch (const HostError&)
    {
        return false; // a hint for the user; what writes finds out for itself
    }
}

/// Whether the root folders are others than at the last scan.
bool CollectionLoader::hasOtherRoots(const RootFolders& roots) const
{
    const CollInfoDbItem info = storedInfo(m_database);
    CollPathArray wanted;
    CQoCollection::validateRootDirs(roots.folders(), wanted);
    CollPathArray stored;
    addPaths(stored, info.rootDirs);
    CollPathArray added;
    CollPathArray removed;
    diffPathArrays(wanted, stored, added, removed);
    return m_isFirst || !added.IsEmpty() || !removed.IsEmpty() || !info.userName.IsEmpty();
}

/// The root folders of which not all was read and analysed yet.
CStringArray CollectionLoader::freshRoots(const RootFolders& roots,
                                          const UnfinishedScan& mark) const
{
    CollPathArray wanted;
    CQoCollection::validateRootDirs(roots.folders(), wanted);
    CollPathArray known;
    if (!m_isFirst)
        addPaths(known, storedInfo(m_database).rootDirs);
    CollPathArray unfinished;
    addPaths(unfinished, mark.rootsAtFirst());
    CStringArray fresh;
    for (const CQoCollPath& root : wanted)
    {
        if (findPath(known, root) < 0 || findPath(unfinished, root) >= 0)
            fresh.Add(root.toString());
    }
    return fresh;
}

/// Those of the root folders that are away and whose files may leave the collection.
std::vector<RootProblem> CollectionLoader::guardRoots(const CStringArray& folders) const
{
    std::vector<RootProblem> problems = checkRoots(folders, m_database);
    if (problems.empty() || m_options.allowMissingRoot)
        return problems;
    throw HostError(ExitCode::away,
                    rootSentences(problems, "is away") +
                        "nothing was changed; with --allow-missing-root a scan takes its files "
                        "out of the collection");
}

void CollectionLoader::keepSnapshot() const
{
    if (m_isOwn)
        m_session.note(Snapshots(m_database).keep());
}

/// Lets the database know where files went when a run was cut short, before anything else looks at
/// it. With the folders as they are stored nothing leaves.
void CollectionLoader::followMoves()
{
    CStringArray folders;
    CQoPathsInfoMap kinds;
    for (const StoredRoot& root : storedRoots(m_database))
    {
        folders.Add(root.folder);
        kinds.SetAt(root.folder, root.kind);
    }
    if (folders.IsEmpty())
        return;
    m_session.scanHost().forget();
    readDatabase(folders, kinds);
    applyUnfinishedMoves(m_session);
}

void CollectionLoader::readDatabase(const CStringArray& folders, const CQoPathsInfoMap& kinds)
{
    CQoCollection& collection = CQoCollection::m_ownCollection;
    CQoCollection::OpResultInfo result;
    const bool isLoaded =
        collection.load(m_database, u"", folders, kinds, false, &m_progress, &result);
    if (m_progress.wasStopped())
        throw HostError(ExitCode::interrupted, interruptedText());
    if (!isLoaded)
        throw HostError(ExitCode::failed,
                        "the collection " + shownPath(m_database) +
                            " could not be loaded: " + m_session.scanHost().lastFailure());
    if (!m_session.scanHost().lastFailure().empty())
        throw saveFailure(m_database, m_session.scanHost().lastFailure());
    m_report.gone += result.m_deleted;
}

std::string CollectionLoader::interruptedText() const
{
    if (!m_report.walked)
        return "interrupted; nothing was changed";
    return m_isFirst ? "interrupted; nothing was kept of this first scan"
                     : "interrupted; the collection is as it was before this scan";
}

/// The folders with which a scan begins, so that no record is dropped that belongs to one of the
/// wanted roots: those that are not fresh; what the database knows below a fresh one; and a fresh
/// one that has files in the database. Example: /music was scanned and gives way to /music/in, or
/// the other way round; the records of /music/in stay. They stay as well when the row that names
/// the root folders was lost with a damaged page.
CStringArray CollectionLoader::rootsBefore(const RootFolders& roots,
                                           const CStringArray& fresh) const
{
    CollPathArray freshPaths;
    addPaths(freshPaths, fresh);
    CStringArray before;
    for (const StoredRoot& stored : storedRoots(m_database))
    {
        if (isBelowAny(addBackslash(stored.folder), fresh))
            before.Add(stored.folder);
    }
    for (const CString& root : roots.folders())
    {
        if (findPath(freshPaths, CQoCollPath(root)) < 0 || countFilesBelow(m_database, root) > 0)
            before.Add(root);
    }
    return before;
}

void CollectionLoader::scan(const RootFolders& roots,
                            const CStringArray& walked,
                            const CStringArray& fresh,
                            const std::vector<RootProblem>& givenUp)
{
    CQoCollection& collection = CQoCollection::m_ownCollection;
    RootLister lister(roots.folders(), m_session.ignoredNames());
    if (m_isOwn && m_session.hasLock())
        lister.clearOnTheWay();
    RootPresence presence(walked, m_database, givenUp);
    UnreadFiles unread(collection, lister, givenUp);
    RootWalk walk(walked, lister);
    // A third thread beside the walk's and this one only makes both slower.
    m_session.scanHost().setReadsAhead(false);
    readDatabase(rootsBefore(roots, fresh), roots.kinds());
    m_session.scanHost().setReadsAhead(true);
    collection.addRootDirs(fresh, roots.kinds());
    m_progress.setStage(IQoProgress::stageScan);
    QoFileDbItemArray records;
    const std::vector<DiskChange> changes = differences(records, walk, unread, fresh);
    if (m_progress.isCanceled())
        throw HostError(ExitCode::interrupted, interruptedText());
    // Afterwards, since with a folder that goes away all in it seems to have gone.
    if (!presence.areThere())
        presence.refuse();
    guardLosses(LossGuard(records, changes));
    takeIn(walked, fresh, changes, presence);
    if (m_isOwn)
        rememberFarFolders(walked, lister);
    tell(unread);
}

/// What the walk met is let go of here, before the scan needs its memory. The records are those
/// that were compared; the walk is waited for before they are copied.
std::vector<DiskChange> CollectionLoader::differences(QoFileDbItemArray& records,
                                                      RootWalk& walk,
                                                      UnreadFiles& unread,
                                                      const CStringArray& fresh)
{
    const std::vector<FoundFile> found = walk.files(m_progress);
    CQoCollection::m_ownCollection.copyFiles(records);
    std::function<bool(const CString&)> isWalked;
    if (!m_options.rescan)
        isWalked = [&fresh](const CString& path) { return isBelowAny(path, fresh); };
    return m_progress.isCanceled()
               ? std::vector<DiskChange>()
               : DiskChanges(m_session.scanHost(), unread).between(records, found, isWalked);
}

void CollectionLoader::guardLosses(const LossGuard& guard) const
{
    const std::vector<RootProblem> away =
        m_options.allowMissingRoot ? std::vector<RootProblem>()
                                   : guard.findAway(HostStore(Session::folder()).folders());
    std::string text;
    for (const RootProblem& problem : away)
        text += "the folder " + shownPath(problem.folder) + " seems to be away: " + problem.cause +
                sentenceBreak;
    if (!away.empty())
        throw HostError(ExitCode::away,
                        text + "nothing was changed; with --allow-missing-root a scan takes its "
                               "files out of the collection");
    const std::string unreadable =
        guard.isLoss() && !m_options.allowMissingRoot ? unreadableRun() : std::string();
    if (!unreadable.empty())
        throw HostError(ExitCode::refused,
                        "files have gone that the run " + unreadable +
                            " may have moved, whose journal cannot be read; nothing was changed: "
                            "\"qo scan --find-moved\" looks for them");
    if (guard.isGreatLoss())
        keepSnapshot();
}

/// Those of the walked folders are as the walk met them; the others stay as they were.
void CollectionLoader::rememberFarFolders(const CStringArray& walked,
                                          const RootLister& lister) const
{
    HostStore store(Session::folder());
    const std::vector<FarFolder> before = store.folders();
    std::vector<FarFolder> folders = before;
    std::erase_if(folders,
                  [&walked](const FarFolder& folder) { return isBelowAny(folder.path, walked); });
    folders.insert(folders.end(), lister.farFolders().begin(), lister.farFolders().end());
    if (folders != before)
        store.setFolders(folders);
}

void CollectionLoader::takeIn(const CStringArray& walked,
                              const CStringArray& fresh,
                              const std::vector<DiskChange>& changes,
                              RootPresence& presence)
{
    CQoCollection& collection = CQoCollection::m_ownCollection;
    const UnfinishedScan mark(Session::folder());
    const bool isMarked = m_isOwn && !fresh.IsEmpty();
    if (isMarked)
        mark.begin(fresh);
    // An interrupted first scan goes on with the next scan, and not with the next start.
    if (m_isFirst)
        collection.setScanned();
    SlicedScan scan(collection,
                    m_session.scanHost(),
                    m_progress,
                    {m_options.filesInSlice, m_options.tagThreads},
                    fresh,
                    m_options.rescan ? mark.filesAtFirst() : CStringArray());
    SlicedScan::End end;
    end.foldersToAnalyze = walked;
    end.isWhole = m_options.rescan || m_isFirst;
    if (m_isOwn)
    {
        end.beforeLast = [&] { mark.beginNames(storedInfo(m_database).modifiedTime); };
        end.beforeOther = [&](const CStringArray& files) { mark.addFiles(files); };
    }
    const SlicedScan::Report slices = scan.read(changes, end);
    m_report.added = slices.added;
    m_report.changed = slices.changed;
    m_report.gone += slices.gone;
    if (m_isOwn)
        rememberUnread();
    checkSlices(slices, mark);
    m_report.vanished = scan.dropVanished([&presence] { return presence.areThere(); });
    m_report.added = std::max(0, m_report.added - m_report.vanished);
    if (presence.hasLost())
        presence.refuse();
    if (slices.hasMoved && !m_options.isLast)
    {
        const RootFolders roots;
        readDatabase(roots.folders(), roots.kinds());
    }
}

/// Files that this user may not read now have records with the size and time of the disk, so a
/// later scan would not look at them by itself.
void CollectionLoader::rememberUnread() const
{
    const ScanHost& host = m_session.scanHost();
    std::set<CString> unread = host.readAgain();
    for (const CString& file : host.unreadFiles())
        unread.insert(file);
    CStringArray files;
    for (const CString& file : unread)
    {
        const int error = fileSystem().mayRead(CQoUtils::getRealPath(file));
        if (error != 0 && error != ENOENT && CQoCollection::m_ownCollection.getFileByPath(file))
            files.Add(file);
    }
    if (!files.IsEmpty() || !host.readAgain().empty())
        HostStore(Session::folder()).setUnreadFiles(files);
}

void CollectionLoader::checkSlices(const SlicedScan::Report& slices,
                                   const UnfinishedScan& mark) const
{
    if (!slices.isStopped)
        return;
    if (m_isOwn)
        endUnlessKept(mark, slices);
    const std::string kept = keptText(slices, mark.wasThere());
    if (!slices.isSaved)
        throw HostError(ExitCode::failed,
                        "the collection could not be saved to " + shownPath(m_database) + ": " +
                            m_session.scanHost().lastFailure() + "; " + kept);
    throw HostError(ExitCode::interrupted, "interrupted; " + kept);
}

void CollectionLoader::checkSaved() const
{
    if (!CQoCollDbUtils::FILETIMEsAreEqual(storedInfo(m_database).scanTime,
                                           CQoCollection::m_ownCollection.getCollInfo().scanTime))
        throw saveFailure(m_database, m_session.scanHost().lastFailure());
}

void CollectionLoader::settleUnfinishedScan() const
{
    try
    {
        UnfinishedScan(Session::folder()).settle(storedInfo(m_database).modifiedTime);
    }
    catch (const HostError& error)
    {
        m_session.note(error.what()); // the next start tries again
    }
}

void CollectionLoader::tell(const UnreadFiles& unread) const
{
    for (const std::string& sentence : unread.sentences())
        m_session.note(sentence);
    tellOnce(unread);
    if (m_report.vanished == 1)
        m_session.note("a file vanished before it could be read");
    else if (m_report.vanished > 1)
        m_session.note(std::to_string(m_report.vanished) +
                       " files vanished before they could be read");
}

/// Names that differ in case alone stay as they are, and so does a folder of somebody else: one who
/// was told of them once need not be told at every scan.
void CollectionLoader::tellOnce(const UnreadFiles& unread) const
{
    HostStore store(Session::folder());
    const std::string said = m_isOwn ? toUtf8(store.fileRemarks()) : std::string();
    std::string lines;
    std::vector<std::string> sentences = unread.folderRemarks();
    std::ranges::move(m_session.scanHost().fileRemarks(), std::back_inserter(sentences));
    for (const std::string& sentence : sentences)
    {
        const std::string line = sentence + "\n";
        lines += line;
        if (said.find(line) == std::string::npos)
            m_session.note(sentence);
    }
    if (m_isOwn && lines != said)
        store.setFileRemarks(fromUtf8(lines));
}

/// Their files have left the collection.
void CollectionLoader::forgetRemovedRoots(RootFolders& roots) const
{
    if (!roots.hasRemoved() || !m_isOwn)
        return;
    roots.forgetRemoved();
    roots.store();
}

LoadReport loadCollection(Session& session, const LoadOptions& options, ProgressReporter& progress)
{
    return CollectionLoader(session, options, progress).load();
}
} // namespace qo::host
