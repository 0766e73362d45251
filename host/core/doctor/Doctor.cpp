#include "core/doctor/Doctor.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/PendingTags.h"
#include "core/load/DatabaseContent.h"
#include "core/load/DatabaseMigration.h"
#include "core/load/Snapshots.h"
#include "core/load/UnfinishedScan.h"
#include "core/playlist/PlaylistRepair.h"
#include "core/playlist/Playlists.h"
#include "core/roots/RootGuard.h"
#include "core/runs/Reorganizer.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <algorithm>

namespace qo::host
{
bool Doctor::isAllWell() const
{
    return std::ranges::all_of(m_findings, &Finding::isMended);
}

void Doctor::add(const char* topic,
                 const std::vector<std::string>& all,
                 const std::string& ofOne,
                 const std::string& ofMany,
                 const std::string& mend,
                 bool isMended)
{
    constexpr std::size_t mostNamed = 3;
    if (all.empty())
        return;
    Finding finding;
    finding.topic = topic;
    finding.count = all.size();
    finding.what = all.size() == 1 ? ofOne : std::to_string(all.size()) + " " + ofMany;
    finding.examples = all;
    finding.examples.resize(std::min(mostNamed, all.size()));
    finding.mend = mend;
    finding.isMended = isMended;
    m_findings.push_back(std::move(finding));
}

bool Doctor::examineData()
{
    const CString database = Session::databasePath();
    FileInfo info;
    if (fileSystem().info(database, Spelling::exact, info) != 0 || info.size == 0)
        return true; // there is no collection yet
    lookAtRoom(Session::folder(), static_cast<std::uint64_t>(info.size) * 2);
    if (const std::optional<CString> version = DatabaseMigration::otherVersion(database))
    {
        add("database",
            {toUtf8(*version)},
            "the database has another version than this program's",
            "",
            "\"qo db migrate\" carries it over");
        return false;
    }
    const DatabaseFindings found = inspectDatabase(database);
    add("database",
        found.faults,
        "a fault in the database",
        "faults in the database",
        "\"qo db repair\" keeps what can be read, \"qo db restore\" goes back to a snapshot");
    const bool isSound = found.faults.empty();
    if (isSound && !found.rows.empty())
        lookAtSnapshots();
    return isSound;
}

void Doctor::lookAtSnapshots()
{
    Snapshots snapshots(Session::databasePath());
    if (!snapshots.list().IsEmpty() || countFiles(Session::databasePath()) == 0)
        return;
    if (m_mends)
        (void)snapshots.take();
    add("snapshots",
        {shownPath(Session::databasePath())},
        "there is no snapshot of the database",
        "",
        "\"qo doctor --fix\" takes one",
        m_mends);
}

void Doctor::lookAtRoom(const CString& folder, std::uint64_t wanted)
{
    constexpr std::uint64_t mebibyte = 1 << 20;
    wanted = std::max(wanted, 64 * mebibyte);
    std::uint64_t room = 0;
    if (fileSystem().room(folder, room) == 0 && room < wanted)
        add("space",
            {shownPath(folder)},
            "only " + std::to_string(room / mebibyte) + " MiB are free for the folder, where " +
                std::to_string(wanted / mebibyte) + " MiB are wanted",
            "",
            "make room on its disk");
}

void Doctor::examineCollection(ProgressReporter& progress)
{
    lookAtStore();
    lookAtRuns();
    lookAtPlaylists();
    lookAtRoots();
    compareWithDisk(progress);
}

void Doctor::lookAtStore()
{
    std::vector<std::string> away;
    std::vector<std::string> begun;
    try
    {
        const PendingTags pending;
        for (const CString& path : pending.paths())
            m_edited.insert(path);
        for (const CString& path : pending.awayPaths())
            away.push_back(shownPath(path));
        const UnfinishedScan scan(Session::folder());
        for (const CString& root : scan.rootsAtFirst())
            begun.push_back(shownPath(root));
        if (begun.empty() && scan.wasThere())
            begun.push_back(shownPath(Session::folder()));
        std::vector<std::string> unread;
        for (const CString& path : HostStore(Session::folder()).unreadFiles())
            unread.push_back(shownPath(path));
        add("unread",
            unread,
            "a file that the last scan was not allowed to read",
            "files that the last scan was not allowed to read",
            "make them readable; the next scan then reads them");
    }
    catch (const HostError& error)
    {
        add("store",
            {error.what()},
            "the store of marks, edits and playlists cannot be read",
            "",
            "the next command that changes something mends it, or says why it cannot");
    }
    add("edits",
        away,
        "edits of a file that is away",
        "files that are away have edits",
        "put the files back, or drop the edits with \"qo tag revert --away --all\"");
    add("scan",
        begun,
        "a scan was interrupted",
        "root folders whose scan was interrupted",
        "\"qo scan\" goes on with it");
}

void Doctor::lookAtRuns()
{
    std::vector<std::string> stopped;
    std::vector<std::string> damaged;
    for (const Reorganizer::Run& run : Reorganizer::runs())
    {
        if (!run.complaint.empty())
            damaged.push_back(run.id);
        else if (run.isRunning)
            stopped.push_back(run.id);
    }
    add("runs",
        stopped,
        "a run that was stopped or cut short",
        "runs that were stopped or cut short",
        "\"qo reorg apply ID\" goes on with one, \"qo undo ID\" takes it back");
    add("journals",
        damaged,
        "a run whose journal cannot be read",
        "runs whose journals cannot be read",
        "\"qo runs\" says why; \"qo reorg forget ID\" sets one aside");
}

void Doctor::lookAtPlaylists()
{
    std::vector<std::string> lists;
    std::size_t entries = 0;
    const Playlists playlists;
    for (const Playlists::Facts& facts : playlists.all())
    {
        if (facts.list.isLiving())
            continue;
        const Playlist list = playlists.find("#" + std::to_string(facts.list.id));
        if (const std::size_t count = checkEntries(list).size())
        {
            entries += count;
            lists.push_back(toUtf8(list.name));
        }
    }
    const std::string ofAll =
        entries == 1
            ? std::string(" with an entry that does not lead to its song")
            : " with " + std::to_string(entries) + " entries that do not lead to their songs";
    add("playlists",
        lists,
        "a playlist" + ofAll,
        "playlists" + ofAll,
        "\"qo playlist check\" names them, \"qo playlist repair\" looks for the songs");
}
} // namespace qo::host
