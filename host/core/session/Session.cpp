#include "core/session/Session.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/PendingTags.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/RootChanges.h"
#include "core/load/RootSentinel.h"
#include "core/load/Snapshots.h"
#include "core/load/UnfinishedScan.h"
#include "core/load/WalkAhead.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootGuard.h"
#include "core/roots/StoredRoots.h"
#include "core/runs/Reorganizer.h"
#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <chrono>

namespace qo::host
{
namespace
{
class Module final : public CKVModule
{
};

/// Nothing leaves this machine unless its user says so.
void keepStatisticsHome(KeyValueConfig& settings)
{
    const char16_t* const section = u"Common";
    const char16_t* const key = CQoSettings::getName(CQoSettings::SendUsageStatistics);
    if (settings.isStored(section, key))
        return;
    KVConfig::Section* const common = settings.addSection(KVConfig::ordinarySection, section);
    settings.setValue(settings.addKey(common, key, u"0"), u"0");
}

void startKernel(KeyValueConfig& settings, CKVModule& module)
{
    initQoKernel(&settings, &module);
    CQoCollection::initGlobal();
}

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
        : goesOn ? count + " more files were kept (" + std::to_string(slices.files) + " in all)"
                 : "the " + count + " files read so far were kept";
    return kept + ", and the next scan goes on from there";
}
} // namespace

Session::Session(Options options)
    : m_options(std::move(options)), m_module(std::make_unique<Module>())
{
    openDataFolder();
    const CString settingsFile = specialFolders().data() + u"\\settings";
    if (m_options.withLock)
        m_lock.emplace(toSystemPath(folder() + u"\\lock"));
    const bool readOnly = !m_options.withLock || !m_options.saveSettings;
    m_settings = std::make_unique<KeyValueConfig>(settingsFile, readOnly);
    if (!m_settings->complaint().empty())
        note(m_settings->complaint());
    keepStatisticsHome(*m_settings);
    m_kernel.run([this] { startKernel(*m_settings, *m_module); });
    m_failures = std::make_unique<FailureMemory>();
    if (m_settings->mayLackSettings())
        restoreLostRoots();
    saveSettings();
}

Session::~Session()
{
    m_kernel.run([] { CQoCollection::cleanUpGlobal(); });
    m_failures.reset();
    m_kernel.run([this] { m_settings.reset(); });
}

void Session::note(const std::string& sentence) const
{
    if (m_options.note)
        m_options.note(sentence);
}

void Session::openDataFolder() const
{
    specialFolders().setBase(m_options.dataFolder.empty() ? CString()
                                                          : fromSystemPath(m_options.dataFolder));
    const CString wanted = specialFolders().data() + u"\\Qorganizer";
    if (const int error = fileSystem().makeDirectories(wanted))
        throw HostError(ExitCode::failed,
                        "the data folder " + shownPath(wanted) +
                            " cannot be made: " + errorWords(error));
}

void Session::restoreLostRoots()
{
    try
    {
        m_kernel.run(
            [this]
            {
                RootFolders roots;
                const std::string sentence =
                    restoreRoots(unlistedRoots(databasePath(), roots), roots);
                if (sentence.empty())
                    return;
                note(sentence);
                roots.store();
            });
    }
    catch (const HostError& error)
    {
        // Nothing is lost by going on: no load passes over a root folder that has vanished.
        note(std::string("the root folders cannot be looked up: ") + error.what());
    }
}

void Session::saveSettings()
{
    m_kernel.run([this] { m_settings->save(); });
}

CString Session::folder()
{
    return CQoPaths::getQoDataDir();
}

CString Session::databasePath()
{
    return CQoPaths::getQoDbFilePath();
}

void Session::prepareDatabase(const CString& database)
{
    for (const std::string& sentence : DatabaseGuard(database).prepare())
        note(sentence);
    if (m_options.withLock)
        prepareStore();
}

void Session::prepareStore() const
{
    for (const std::string& sentence : HostStore(folder()).prepare())
        note(sentence);
}

bool Session::wouldWalk(const CString& database)
{
    const CollInfoDbItem info = storedInfo(database);
    if (CQoCollDbUtils::IsNullFILETIME(info.scanTime))
        return true;
    CollPathArray wanted;
    CQoCollection::validateRootDirs(RootFolders().folders(), wanted);
    CollPathArray stored;
    addPaths(stored, info.rootDirs);
    CollPathArray added;
    CollPathArray removed;
    diffPathArrays(wanted, stored, added, removed);
    return !added.IsEmpty() || !removed.IsEmpty() || !info.userName.IsEmpty();
}

std::vector<RootProblem>
Session::guardRoots(const CStringArray& folders, bool allowMissingRoot, const CString& database)
{
    const std::vector<RootProblem> problems = checkRoots(folders, database);
    if (problems.empty() || allowMissingRoot)
        return problems;
    throw HostError(ExitCode::away,
                    rootSentences(problems, "is away") +
                        "nothing was changed; with --allow-missing-root a scan takes its files "
                        "out of the collection");
}

std::string Session::interruptedText(bool wasNeverScanned, bool walked)
{
    if (!walked)
        return "interrupted; nothing was changed";
    return wasNeverScanned ? "interrupted; nothing was kept of this first scan"
                           : "interrupted; the collection is as it was before this scan";
}

bool Session::hasUnfinishedScan()
{
    try
    {
        return UnfinishedScan(folder()).wasThere();
    }
    catch (const HostError&)
    {
        return false; // a hint for the user; what writes finds out for itself
    }
}

void Session::checkSaved(const CString& database, const std::string& cause)
{
    if (CQoCollDbUtils::FILETIMEsAreEqual(storedInfo(database).scanTime,
                                          CQoCollection::m_ownCollection.getCollInfo().scanTime))
        return;
    throw saveFailure(database, cause);
}

Session::LoadReport Session::load(const LoadOptions& options, ProgressReporter& progress)
{
    const CString database = options.database.IsEmpty() ? databasePath() : options.database;
    try
    {
        return loadGuarded(options, database, progress);
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(database);
    }
}

CQoCollection::OpResultInfo Session::loadOnce(const CString& database,
                                              const CStringArray& folders,
                                              const CQoPathsInfoMap& kinds,
                                              bool rescan,
                                              RootSentinel& sentinel,
                                              ProgressReporter& progress,
                                              const std::string& whenStopped)
{
    CQoCollection& collection = CQoCollection::m_ownCollection;
    CQoCollection::OpResultInfo result;
    std::optional<WalkAhead> ahead;
    if (rescan)
        ahead.emplace(folders);
    const bool loaded = collection.load(database, u"", folders, kinds, rescan, &sentinel, &result);
    if (sentinel.hasLost())
        sentinel.refuse();
    if (progress.wasStopped())
        throw HostError(ExitCode::interrupted, whenStopped);
    if (!loaded)
        throw HostError(ExitCode::failed,
                        "the collection " + shownPath(database) +
                            " could not be loaded: " + m_failures->lastFailure());
    return result;
}

void Session::loadStored(const CString& database,
                         RootSentinel& sentinel,
                         ProgressReporter& progress)
{
    CStringArray folders;
    CQoPathsInfoMap kinds;
    for (const StoredRoot& root : storedRoots(database))
    {
        folders.Add(root.folder);
        kinds.SetAt(root.folder, root.kind);
    }
    // With the folders as they are stored nothing is walked.
    loadOnce(database, folders, kinds, false, sentinel, progress, interruptedText(false, false));
}

void Session::followMoves(const RootFolders& roots,
                          const CString& database,
                          ProgressReporter& progress)
{
    if (storedRoots(database).empty())
        return;
    m_failures->forget();
    RootSentinel sentinel(progress, roots.folders(), database, {});
    loadStored(database, sentinel, progress);
    tellUntoldMoves(*this);
}

void Session::checkSlices(const SlicedScan::Report& slices, const UnfinishedScan& mark) const
{
    if (!slices.isStopped)
        return;
    endUnlessKept(mark, slices);
    const std::string kept = keptText(slices, mark.wasThere());
    if (!slices.isSaved)
        throw HostError(ExitCode::failed,
                        "the collection could not be saved to " + shownPath(databasePath()) + ": " +
                            m_failures->lastFailure() + "; " + kept);
    throw HostError(ExitCode::interrupted, "interrupted; " + kept);
}

void Session::followRoots(const LoadOptions& options,
                          const RootChanges& changes,
                          RootSentinel& sentinel,
                          ProgressReporter& progress,
                          LoadReport& report)
{
    const CString database = databasePath();
    loadStored(database, sentinel, progress);
    CQoCollection& collection = CQoCollection::m_ownCollection;
    if (changes.haveSomeLeft())
    {
        const int before = collection.getFileCount();
        collection.setRootDirs(changes.kept(), RootFolders().kinds(), &progress);
        if (progress.wasStopped())
            throw HostError(ExitCode::interrupted, interruptedText(false, true));
        if (hasUnsaved(collection))
            throw saveFailure(database, m_failures->lastFailure());
        forgetGone(collection);
        report.gone = before - collection.getFileCount();
    }
    if (!changes.fresh().IsEmpty())
        scanInSlices(options, changes.fresh(), sentinel, progress, report);
}

void Session::scanInSlices(const LoadOptions& options,
                           const CStringArray& fresh,
                           RootSentinel& sentinel,
                           ProgressReporter& progress,
                           LoadReport& report)
{
    const RootFolders roots;
    const UnfinishedScan mark(folder());
    mark.begin(fresh);
    CQoCollection& collection = CQoCollection::m_ownCollection;
    collection.addRootDirs(fresh, roots.kinds());
    SlicedScan scan(
        collection,
        progress,
        options.filesInSlice,
        fresh,
        sentinel.unread(),
        [&sentinel] { return sentinel.look().empty(); },
        !options.rescan);
    SlicedScan::Report slices = scan.read();
    if (sentinel.hasLost())
    {
        endUnlessKept(mark, slices);
        sentinel.refuse();
    }
    report.added = slices.added;
    report.changed = slices.changed;
    report.gone += slices.gone;
    report.vanished = slices.vanished;
    if (!slices.isStopped)
    {
        mark.beginNames(fresh, storedInfo(databasePath()).modifiedTime);
        scan.analyze(slices);
    }
    checkSlices(slices, mark);
    if (slices.hasMoved && !options.isLast)
        loadOnce(databasePath(),
                 roots.folders(),
                 roots.kinds(),
                 false,
                 sentinel,
                 progress,
                 "interrupted");
}

void Session::loadInOnePiece(const CString& database,
                             RootSentinel& sentinel,
                             ProgressReporter& progress,
                             LoadReport& report)
{
    const RootFolders roots;
    const bool isFirst =
        report.walked && CQoCollDbUtils::IsNullFILETIME(storedInfo(database).scanTime);
    // Only a rescan has the names analysed.
    const CQoCollection::OpResultInfo result = loadOnce(database,
                                                        roots.folders(),
                                                        roots.kinds(),
                                                        report.walked,
                                                        sentinel,
                                                        progress,
                                                        interruptedText(isFirst, report.walked));
    report.added = result.m_inserted;
    report.changed = result.m_updated;
    report.gone = result.m_deleted;
    if (!report.walked)
        return;
    report.vanished = dropVanished(
        CQoCollection::m_ownCollection,
        [](const CString&) { return true; },
        [&sentinel] { return sentinel.look().empty(); });
    report.added = std::max(0, report.added - report.vanished);
    if (sentinel.hasLost())
        sentinel.refuse();
}

void Session::settleUnfinishedScan(const CString& database) const
{
    try
    {
        UnfinishedScan(folder()).settle(storedInfo(database).modifiedTime);
    }
    catch (const HostError& error)
    {
        note(error.what()); // the next start tries again
    }
}

void Session::tellUnread(const UnreadFiles& unread, const LoadReport& report) const
{
    for (const std::string& sentence : unread.sentences())
        note(sentence);
    for (const std::string& sentence : m_failures->fileRemarks())
        note(sentence);
    if (report.vanished == 1)
        note("a file vanished before it could be read");
    else if (report.vanished > 1)
        note(std::to_string(report.vanished) + " files vanished before they could be read");
}

Session::LoadReport Session::loadGuarded(const LoadOptions& options,
                                         const CString& database,
                                         ProgressReporter& progress)
{
    LoadReport report;
    RootFolders roots;
    const bool isOwn = options.database.IsEmpty();
    const std::vector<StoredRoot> unlisted = unlistedRoots(database, roots);
    refuseUnnamedRoots(unlisted, roots);
    if (m_options.withLock && isOwn)
    {
        settleUnfinishedScan(database);
        // Before a record goes its place must be known, however the last command ended.
        PendingTags::settle(*this);
    }
    if (m_options.withLock && isOwn && hasUntoldMoves())
        followMoves(roots, database, progress);
    const bool hasNews = options.rescan || wouldWalk(database);
    std::optional<RootChanges> changes;
    if (hasNews && isOwn)
        changes.emplace(roots, UnfinishedScan(folder()), database);
    if (changes && !changes->canBeFollowed(options.rescan))
        changes.reset();
    // What is not going to be looked through need not be there.
    CStringArray walked;
    if (hasNews)
        walked = changes && !options.rescan ? changes->fresh() : roots.folders();
    report.walked = options.rescan || !walked.IsEmpty();
    const std::vector<RootProblem> givenUp = guardRoots(walked, options.allowMissingRoot, database);
    if ((!givenUp.empty() || !unlisted.empty()) && isOwn)
        note("the collection as it was is kept in " + shownPath(Snapshots(database).take()));
    m_failures->forget();
    RootSentinel sentinel(progress, walked, database, givenUp);
    const auto start = std::chrono::steady_clock::now();
    if (changes)
        followRoots(options, *changes, sentinel, progress, report);
    else
        loadInOnePiece(database, sentinel, progress, report);
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    tellUnread(sentinel.unread(), report);
    if (hasNews)
        checkSaved(database, m_failures->lastFailure());
    if (hasNews && isOwn)
    {
        UnfinishedScan(folder()).end();
        PendingTags::settle(*this);
    }
    if (roots.hasRemoved() && isOwn)
    {
        roots.forgetRemoved();
        roots.store();
    }
    report.files = CQoCollection::m_ownCollection.getFileCount();
    if (!options.rescan && hasUnfinishedScan())
        note("the first scan was interrupted: \"qo scan\" goes on with it");
    return report;
}
} // namespace qo::host
