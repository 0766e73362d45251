#include "core/Session.h"

#include "core/DatabaseGuard.h"
#include "core/HostError.h"
#include "core/HostFiles.h"
#include "core/Reorganizer.h"
#include "core/RootFolders.h"
#include "core/RootGuard.h"
#include "core/RootSentinel.h"
#include "core/Snapshots.h"
#include "core/StoredRoots.h"
#include "core/UnfinishedScan.h"
#include "core/WalkAhead.h"

#include <QoKernel/Collection.h>

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

CString Session::pendingTagsPath()
{
    return folder() + u"\\pending-tags.json";
}

void Session::prepareDatabase(const CString& database)
{
    for (const std::string& sentence : DatabaseGuard(database).prepare())
        note(sentence);
}

bool Session::wouldWalk(const CString& database, bool& wasNeverScanned)
{
    CQoCollDb db(database);
    CollInfoDbItem info;
    wasNeverScanned = !db.getCollInfo(u"", info) || CQoCollDbUtils::IsNullFILETIME(info.scanTime);
    if (wasNeverScanned)
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

std::vector<RootProblem> Session::guardRoots(bool allowMissingRoot, const CString& database)
{
    const std::vector<RootProblem> problems = checkRoots(RootFolders().folders(), database);
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
    return UnfinishedScan(folder()).wasThere();
}

void Session::checkSaved(const CString& database, const std::string& cause)
{
    CQoCollDb db(database);
    CollInfoDbItem stored;
    db.getCollInfo(u"", stored);
    if (CQoCollDbUtils::FILETIMEsAreEqual(stored.scanTime,
                                          CQoCollection::m_ownCollection.getCollInfo().scanTime))
        return;
    throw HostError(ExitCode::failed,
                    "the collection could not be saved to " + shownPath(database) +
                        ", which is as it was before: " + cause);
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

CollPathArray
Session::firstScanned(const RootFolders& roots, const UnfinishedScan& mark, const CString& database)
{
    CollPathArray wanted;
    CQoCollection::validateRootDirs(roots.folders(), wanted);
    CollPathArray known;
    {
        CQoCollDb db(database);
        CollInfoDbItem info;
        if (db.getCollInfo(u"", info) && !CQoCollDbUtils::IsNullFILETIME(info.scanTime))
            addPaths(known, info.rootDirs);
    }
    CollPathArray unfinished;
    addPaths(unfinished, mark.rootsAtFirst());
    CollPathArray fresh;
    for (const CQoCollPath& root : wanted)
    {
        if (findPath(known, root) < 0 || findPath(unfinished, root) >= 0)
            fresh.Add(root);
    }
    return fresh;
}

void Session::checkSlices(const SlicedScan::Report& slices, const UnfinishedScan& mark) const
{
    if (!slices.isStopped)
        return;
    // Nothing to go on from: the folders are as new as they were.
    if (slices.added == 0 && !mark.wasThere())
        mark.end();
    const std::string count = std::to_string(slices.added);
    std::string kept = "nothing was read yet";
    if (mark.wasThere())
        kept = slices.added == 0
                   ? "no more files were read"
                   : count + " more files were kept (" + std::to_string(slices.files) + " in all)";
    else if (slices.added > 0)
        kept = "the " + count + " files read so far were kept";
    if (mark.wasThere() || slices.added > 0)
        kept += ", and the next scan goes on from there";
    if (!slices.isSaved)
        throw HostError(ExitCode::failed,
                        "the collection could not be saved to " + shownPath(databasePath()) + ": " +
                            m_failures->lastFailure() + "; " + kept);
    throw HostError(ExitCode::interrupted, "interrupted; " + kept);
}

bool Session::scanInSlices(const LoadOptions& options,
                           RootSentinel& sentinel,
                           ProgressReporter& progress,
                           LoadReport& report)
{
    const CString database = databasePath();
    const RootFolders roots;
    const UnfinishedScan mark(folder());
    const CollPathArray fresh = firstScanned(roots, mark, database);
    if (fresh.IsEmpty())
    {
        if (mark.wasThere())
            mark.end(); // its folders were removed since
        return false;
    }
    for (const StoredRoot& root : storedRoots(database))
    {
        // A folder that a new one holds, or that leaves, asks for a scan in one piece.
        if (roots.kind(root.folder) != root.kind || roots.holder(root.folder) != root.folder)
            return false;
    }
    loadStored(database, sentinel, progress);
    CStringArray added;
    for (const CQoCollPath& root : fresh)
        added.Add(root.toString());
    mark.begin(added);
    CQoCollection& collection = CQoCollection::m_ownCollection;
    collection.addRootDirs(added, roots.kinds());
    SlicedScan scan(collection,
                    progress,
                    options.filesInSlice,
                    added,
                    sentinel.unread(),
                    [&sentinel] { return sentinel.look().empty(); });
    SlicedScan::Report slices = scan.read();
    if (sentinel.hasLost())
    {
        if (!mark.wasThere())
            mark.end(); // nothing was read yet
        sentinel.refuse();
    }
    report.added = slices.added;
    report.changed = slices.changed;
    report.gone = slices.gone;
    if (!slices.isStopped)
        scan.analyze(slices);
    checkSlices(slices, mark);
    mark.end();
    if (slices.hasMoved && !options.isLast)
        loadOnce(
            database, roots.folders(), roots.kinds(), false, sentinel, progress, "interrupted");
    return true;
}

Session::LoadReport Session::loadGuarded(const LoadOptions& options,
                                         const CString& database,
                                         ProgressReporter& progress)
{
    LoadReport report;
    RootFolders roots;
    const std::vector<StoredRoot> unlisted = unlistedRoots(database, roots);
    refuseUnnamedRoots(unlisted, roots);
    if (m_options.withLock && options.database.IsEmpty() && hasUntoldMoves())
        followMoves(roots, database, progress);
    bool wasNeverScanned = false;
    report.walked = wouldWalk(database, wasNeverScanned) || options.rescan;
    std::vector<RootProblem> givenUp;
    if (report.walked)
        givenUp = guardRoots(options.allowMissingRoot, database);
    if ((!givenUp.empty() || !unlisted.empty()) && options.database.IsEmpty())
        note("the collection as it was is kept in " + shownPath(Snapshots(database).take()));
    m_failures->forget();
    RootSentinel sentinel(progress, roots.folders(), database, givenUp);
    const auto start = std::chrono::steady_clock::now();
    const bool isWhole = options.rescan && options.database.IsEmpty();
    if (!isWhole || !scanInSlices(options, sentinel, progress, report))
    {
        const CQoCollection::OpResultInfo result =
            loadOnce(database,
                     roots.folders(),
                     roots.kinds(),
                     options.rescan,
                     sentinel,
                     progress,
                     interruptedText(wasNeverScanned, report.walked));
        report.added = result.m_inserted;
        report.changed = result.m_updated;
        report.gone = result.m_deleted;
    }
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const std::string& sentence : sentinel.unread().sentences())
        note(sentence);
    if (report.walked)
        checkSaved(database, m_failures->lastFailure());
    if (roots.hasRemoved() && options.database.IsEmpty())
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
