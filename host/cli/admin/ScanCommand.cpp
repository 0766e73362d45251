#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/admin/DeviceScans.h"
#include "cli/admin/MovedOffers.h"
#include "cli/admin/RootChange.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/base/ScratchDatabase.h"
#include "core/load/UnfinishedScan.h"
#include "core/roots/RootGuard.h"
#include "core/roots/StoredRoots.h"
#include "devices/known/Devices.h"

#include <cstdlib>
#include <fstream>

namespace qo::cli
{
namespace
{
using host::LoadReport;
using host::RootFolders;
using host::ScratchDatabase;
using host::Session;

struct ScanOptions
{
    std::vector<std::string> folders;
    bool allowMissingRoot = false;
    bool deep = false;
    bool findMoved = false;
};

void printScan(CommandLine& line, const ScanOptions& options, const LoadReport& report, int moved)
{
    if (line.json)
    {
        Json object;
        object["files"] = report.files;
        object["new"] = report.added;
        object["changed"] = report.changed;
        object["gone"] = report.gone;
        if (options.findMoved)
            object["moved"] = moved;
        object["seconds"] = report.seconds;
        return line.out.line(dump(object));
    }
    line.out.line(std::string(line.dryRun ? "A scan would find " : "Scanned ") +
                  countText(report.files, "file") + ": " + std::to_string(report.added) + " new, " +
                  std::to_string(report.changed) + (options.deep ? " read again, " : " changed, ") +
                  std::to_string(report.gone) + " gone, " +
                  (options.findMoved ? std::to_string(moved) + " moved, " : "") +
                  secondsText(report.seconds) + " s");
}

/// Puts the roots back as they were when the scan that was to read new ones did not come to its
/// end, but for those that it had begun to read: the next scan goes on with them.
class RootsUntilScanned
{
public:
    explicit RootsUntilScanned(Session& session) : m_session(session)
    {
        m_before = session.kernel().run([] { return RootFolders(); });
    }
    ~RootsUntilScanned()
    {
        if (m_isKept)
            return;
        try
        {
            m_session.kernel().run(
                [this]
                {
                    addBegun();
                    m_before.store();
                });
            m_session.saveSettings();
        }
        catch (const HostError& error)
        {
            CommandLine::complain(error.what());
        }
    }
    RootsUntilScanned(const RootsUntilScanned&) = delete;
    RootsUntilScanned& operator=(const RootsUntilScanned&) = delete;

    void keep() { m_isKept = true; }

private:
    void addBegun()
    {
        try
        {
            const RootFolders now;
            const host::UnfinishedScan unfinished(Session::folder());
            for (const CString& begun : unfinished.rootsAtFirst())
                m_before.add(begun, now.kind(begun));
        }
        catch (const HostError&)
        {
            return; // The same failure has ended the scan, so the user reads it anyway.
        }
    }

    Session& m_session;
    RootFolders m_before;
    bool m_isKept = false;
};

/// False when there is no root folder; then adopted devices are all that is scanned.
bool addScannedFolders(const CommandLine& line, Session& session, const ScanOptions& options)
{
    const bool hasRoots = session.kernel().run(
        [&]
        {
            RootFolders roots;
            for (const std::string& typed : options.folders)
            {
                const CString folder = fromSystemPath(host::existingFolder(typed));
                const CString known = findHolder(roots, folder);
                if (!known.IsEmpty())
                    continue;
                confirmNewRoot(line, folder);
                roots.add(folder, CQoPathInfo::audioIsMusic);
                line.note((line.dryRun ? "would be a new root folder: " : "new root folder ") +
                          host::shownPath(folder));
            }
            roots.store();
            if (roots.folders().IsEmpty())
                host::refuseUnnamedRoots(
                    host::unlistedRoots(host::storedRoots(Session::databasePath()), roots), roots);
            return !roots.folders().IsEmpty();
        });
    if (!hasRoots && !session.kernel().run([] { return host::hasAdoptedDevices(); }))
        throw HostError(ExitCode::usage,
                        "there is no folder to scan yet: name one, as in \"qo scan ~/Music\"");
    session.saveSettings();
    return hasRoots;
}

LoadReport scanRoots(const CommandLine& line,
                     Session& session,
                     const ScanOptions& options,
                     const CString& database)
{
    host::LoadOptions load;
    load.rescan = true;
    load.isLast = true;
    load.allowMissingRoot = options.allowMissingRoot;
    load.deep = options.deep;
    load.database = database;
    return loadCollection(line, session, load);
}

/// How many files kept their record. Nothing while a root folder is away, since all in it would
/// seem to have moved; the scan itself says so.
int findMoved(CommandLine& line, Session& session, const ScanOptions& options)
{
    CStringArray newRoots;
    const bool areThere = session.kernel().run(
        [&]
        {
            const RootFolders roots;
            for (const std::string& typed : options.folders)
            {
                const CString folder = fromSystemPath(host::existingFolder(typed));
                if (findHolder(roots, folder).IsEmpty())
                    newRoots.Add(folder);
            }
            return options.allowMissingRoot ||
                   host::checkRoots(roots.folders(), Session::databasePath()).empty();
        });
    return areThere ? settleMoves(line, session, newRoots) : 0;
}

ExitCode scan(CommandLine& line, const ScanOptions& options)
{
    const auto session = openKernel(line, KernelUse::hold);
    const int moved = options.findMoved ? findMoved(line, *session, options) : 0;
    RootsUntilScanned roots(*session);
    const bool hasRoots = addScannedFolders(line, *session, options);
    // Records stand below the new ones already.
    if (moved > 0)
        roots.keep();
    const auto trial = trialOf(line, *session);
    const CString database = trial ? trial->path() : CString();
    if (!hasRoots)
        session->kernel().run(
            [&] { session->prepareDatabase(trial ? database : Session::databasePath(), true); });
    else
    {
        const LoadReport report = scanRoots(line, *session, options, database);
        if (!line.dryRun)
            roots.keep();
        printScan(line, options, report, moved);
        if (options.findMoved && !line.dryRun)
            rememberHeads(line, *session);
    }
    return scanDevices(line, *session, database, options.deep);
}

/// Resident memory of this process, as the system counts it; 0 when it does not say.
std::int64_t residentKiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string text; std::getline(status, text);)
    {
        if (text.starts_with("VmRSS:"))
            return std::strtoll(text.c_str() + 6, nullptr, 10);
    }
    return 0;
}

ExitCode load(CommandLine& line, bool withMemory)
{
    const auto session = openKernel(line, KernelUse::look);
    const std::int64_t before = residentKiB();
    const LoadReport report = loadForReading(line, *session);
    const std::int64_t after = residentKiB();
    const double perFile =
        report.files > 0 ? static_cast<double>(after - before) / report.files : 0;
    Json object;
    object["files"] = report.files;
    object["seconds"] = report.seconds;
    std::string text =
        countText(report.files, "file") + " loaded in " + secondsText(report.seconds) + " s";
    if (withMemory)
    {
        object["residentKiB"] = after;
        object["residentKiBPerFile"] = perFile;
        text += "\n" + std::to_string(after) + " KiB resident, " + secondsText(perFile) +
                " KiB more per file than empty";
    }
    line.out.line(line.json ? dump(object) : text);
    return ExitCode::done;
}
} // namespace

void setUpScan(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<ScanOptions>();
    line.setAction(command, [&line, options] { return scan(line, *options); });
    addArguments(command, "DIR", options->folders, "Folders to add to the roots first");
    command.add_flag("--allow-missing-root",
                     options->allowMissingRoot,
                     "Go on when a root folder is away: its files leave the collection");
    command.add_flag("--deep", options->deep, "Read every file again, not only what changed");
    command.add_flag("--find-moved",
                     options->findMoved,
                     "First look for files that were moved, and offer to keep their records");
}

void setUpLoad(CommandLine& line, CLI::App& command)
{
    auto withMemory = std::make_shared<bool>(false);
    line.setAction(command, [&line, withMemory] { return load(line, *withMemory); });
    command.add_flag("--memory", *withMemory, "Also show the memory that the collection takes");
}
} // namespace qo::cli
