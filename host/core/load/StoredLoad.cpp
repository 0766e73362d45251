#include "core/load/StoredLoad.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/ScanHostUse.h"
#include "core/load/UnfinishedScan.h"
#include "core/roots/RootFolders.h"
#include "core/roots/StoredRoots.h"
#include "core/runs/Reorganizer.h"
#include "core/session/Session.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <optional>

namespace qo::host
{
namespace
{
bool holds(const CStringArray& folders, const CString& folder)
{
    return std::find(folders.begin(), folders.end(), folder) != folders.end();
}

/// Whether the settings name other root folders than the last scan looked through.
bool haveRootsChanged(const RootFolders& roots, const CString& database)
{
    const std::vector<StoredRoot> stored = knownStoredRoots(database);
    const auto isStored = [&stored](const CString& folder)
    {
        return std::any_of(stored.begin(),
                           stored.end(),
                           [&folder](const StoredRoot& root) { return root.folder == folder; });
    };
    return roots.hasRemoved() || !unlistedRoots(stored, roots).empty() ||
           !std::all_of(roots.folders().begin(), roots.folders().end(), isStored);
}

/// None when it cannot be read: the collection can be shown without it.
std::optional<UnfinishedScan> unfinishedScan(const Session& session)
{
    try
    {
        return UnfinishedScan(Session::folder());
    }
    catch (const HostError& error)
    {
        session.note(error.what());
        return {};
    }
}

void noteWhatWaits(const Session& session,
                   const RootFolders& roots,
                   const CString& database,
                   const std::optional<UnfinishedScan>& unfinished)
{
    if (hasUnappliedMoves())
        session.note("files were moved by a command that was cut short: some stand here under "
                     "their former paths until the next command that changes something");
    if (unfinished && unfinished->wasThere())
        session.note("the last scan was interrupted: \"qo scan\" goes on with it");
    else if (haveRootsChanged(roots, database))
        session.note("the root folders have changed since the last scan: \"qo scan\" follows that");
}

/// The root folders below which a scan that goes on may have stored files already.
CStringArray begunFolders(const RootFolders& roots, const UnfinishedScan& unfinished)
{
    CStringArray folders = roots.folders();
    for (const CString& begun : unfinished.rootsAtFirst())
    {
        if (!holds(folders, begun))
            folders.Add(begun);
    }
    return folders;
}
} // namespace

LoadReport loadStored(Session& session,
                      ProgressReporter& progress,
                      const CString& collectionId,
                      CQoCollection& collection)
{
    LoadReport report;
    const CString database = Session::databasePath();
    if (!session.checkDatabase())
    {
        if (const std::string back = DatabaseGuard(database).wayBack(); !back.empty())
            session.note(back);
        return report;
    }
    const RootFolders roots;
    const bool isOwn = collectionId.IsEmpty();
    const auto unfinished = isOwn ? unfinishedScan(session) : std::optional<UnfinishedScan>();
    CStringArray folders;
    if (isOwn)
        folders = unfinished ? begunFolders(roots, *unfinished) : roots.folders();
    session.scanHost().forget();
    const auto start = std::chrono::steady_clock::now();
    // It hears why a load fails. The own collection has had it since the start.
    std::optional<ScanHostUse> use;
    if (&collection != &CQoCollection::m_ownCollection)
        use.emplace(collection, session.scanHost());
    const bool isLoaded = collection.loadStored(database, collectionId, folders, &progress);
    if (progress.wasStopped())
        throw HostError(ExitCode::interrupted, "interrupted");
    if (!isLoaded)
        throw HostError(ExitCode::failed,
                        "the collection " + shownPath(database) +
                            " could not be loaded: " + session.scanHost().lastFailure());
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.files = collection.getFileCount();
    if (isOwn)
        noteWhatWaits(session, roots, database, unfinished);
    return report;
}
} // namespace qo::host
