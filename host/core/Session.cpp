#include "core/Session.h"

#include "core/DatabaseGuard.h"
#include "core/HostError.h"
#include "core/HostFiles.h"
#include "core/RootFolders.h"
#include "core/RootGuard.h"
#include "core/Snapshots.h"
#include "core/StoredRoots.h"

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

bool Session::guardRoots(bool allowMissingRoot, const CString& database)
{
    const std::vector<RootProblem> problems = checkRoots(RootFolders().folders(), database);
    if (problems.empty() || allowMissingRoot)
        return !problems.empty();
    std::string text;
    for (const RootProblem& problem : problems)
        text +=
            "the root folder " + shownPath(problem.folder) + " is away: " + problem.cause + "\n";
    throw HostError(ExitCode::away,
                    text + "nothing was changed; with --allow-missing-root a scan takes its files "
                           "out of the collection");
}

void Session::throwInterrupted(bool wasNeverScanned, bool walked)
{
    if (!walked)
        throw HostError(ExitCode::interrupted, "interrupted; nothing was changed");
    throw HostError(ExitCode::interrupted,
                    wasNeverScanned ? "interrupted; nothing was kept of this first scan"
                                    : "interrupted; the collection is as it was before this scan");
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

Session::LoadReport Session::loadGuarded(const LoadOptions& options,
                                         const CString& database,
                                         ProgressReporter& progress)
{
    LoadReport report;
    RootFolders roots;
    const std::vector<StoredRoot> unlisted = unlistedRoots(database, roots);
    refuseUnnamedRoots(unlisted, roots);
    bool wasNeverScanned = false;
    report.walked = wouldWalk(database, wasNeverScanned) || options.rescan;
    const bool isRootAway = report.walked && guardRoots(options.allowMissingRoot, database);
    if ((isRootAway || !unlisted.empty()) && options.database.IsEmpty())
        note("the collection as it was is kept in " + shownPath(Snapshots(database).take()));
    CQoCollection& collection = CQoCollection::m_ownCollection;
    CQoCollection::OpResultInfo result;
    m_failures->forget();
    const auto start = std::chrono::steady_clock::now();
    const bool loaded = collection.load(
        database, u"", roots.folders(), roots.kinds(), options.rescan, &progress, &result);
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (progress.wasStopped())
        throwInterrupted(wasNeverScanned, report.walked);
    if (!loaded)
        throw HostError(ExitCode::failed,
                        "the collection " + shownPath(database) +
                            " could not be loaded: " + m_failures->lastFailure());
    if (report.walked)
        checkSaved(database, m_failures->lastFailure());
    if (roots.hasRemoved() && options.database.IsEmpty())
    {
        roots.forgetRemoved();
        roots.store();
    }
    report.files = collection.getFileCount();
    report.added = result.m_inserted;
    report.changed = result.m_updated;
    report.gone = result.m_deleted;
    return report;
}
} // namespace qo::host
