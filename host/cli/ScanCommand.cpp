#include "cli/CommandLine.h"
#include "cli/FileRecord.h"
#include "cli/KernelCommand.h"
#include "cli/RootChange.h"
#include "cli/Text.h"
#include "core/HostFiles.h"

#include <cstdlib>
#include <fstream>

namespace qo::cli
{
namespace
{
using host::RootFolders;
using host::Session;

struct ScanOptions
{
    std::vector<std::string> folders;
    bool allowMissingRoot = false;
};

/// A copy of the database that a trial run may write to; gone with this object.
class TrialDatabase
{
public:
    TrialDatabase()
    {
        CString name;
        name.Format(u"trial-%u", systemClock().processId());
        m_path = CQoPaths::makeTempFilePath(name);
        if (fileSystem().exists(Session::databasePath()))
            backupDatabase(Session::databasePath(), m_path);
    }
    ~TrialDatabase()
    {
        for (const char16_t* end : {u"", u"-wal", u"-shm"})
            (void)fileSystem().removeFile(m_path + end);
    }
    TrialDatabase(const TrialDatabase&) = delete;
    TrialDatabase& operator=(const TrialDatabase&) = delete;

    const CString& path() const { return m_path; }

private:
    CString m_path;
};

void printScan(CommandLine& line, const Session::LoadReport& report)
{
    if (line.json)
    {
        Json object;
        object["files"] = report.files;
        object["new"] = report.added;
        object["changed"] = report.changed;
        object["gone"] = report.gone;
        object["seconds"] = report.seconds;
        return line.out.line(dump(object));
    }
    line.out.line(std::string(line.dryRun ? "A scan would find " : "Scanned ") +
                  countText(report.files, "file") + ": " + std::to_string(report.added) + " new, " +
                  std::to_string(report.changed) + " changed, " + std::to_string(report.gone) +
                  " gone, " + secondsText(report.seconds) + " s");
}

/// Puts the roots back as they were when the scan that was to read new ones did not come to its
/// end.
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
            m_session.kernel().run([this] { m_before.store(); });
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
    Session& m_session;
    RootFolders m_before;
    bool m_isKept = false;
};

void addScannedFolders(const CommandLine& line, Session& session, const ScanOptions& options)
{
    const bool hasRoots = session.kernel().run(
        [&]
        {
            RootFolders roots;
            for (const std::string& typed : options.folders)
            {
                const CString folder = fromSystemPath(host::existingFolder(typed));
                const CString known = findHolder(roots, folder);
                if (!known.IsEmpty() || !roots.add(folder, CQoPathInfo::audioIsMusic))
                    continue;
                line.note("new root folder " + host::shownPath(folder));
            }
            roots.store();
            return !roots.folders().IsEmpty();
        });
    if (!hasRoots)
        throw HostError(ExitCode::usage,
                        "there is no folder to scan yet: name one, as in \"qo scan ~/Music\"");
    session.saveSettings();
}

ExitCode scan(CommandLine& line, const ScanOptions& options)
{
    const auto session = openKernel(line, KernelUse::hold);
    RootsUntilScanned roots(*session);
    addScannedFolders(line, *session, options);
    Session::LoadOptions load;
    load.rescan = true;
    load.allowMissingRoot = options.allowMissingRoot;
    std::unique_ptr<TrialDatabase> trial;
    if (line.dryRun)
    {
        trial = session->kernel().run([] { return std::make_unique<TrialDatabase>(); });
        load.database = trial->path();
    }
    const Session::LoadReport report = loadCollection(line, *session, load);
    if (!line.dryRun)
        roots.keep();
    printScan(line, report);
    return ExitCode::done;
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
    const auto session = openKernel(line, KernelUse::hold);
    const std::int64_t before = residentKiB();
    const Session::LoadReport report = loadCollection(line, *session, {});
    const std::int64_t after = residentKiB();
    const double perFile =
        report.files > 0 ? static_cast<double>(after - before) / report.files : 0;
    Json object;
    object["files"] = report.files;
    object["seconds"] = report.seconds;
    object["scanned"] = report.walked;
    std::string text = countText(report.files, "file") + " loaded in " +
                       secondsText(report.seconds) + " s" +
                       (report.walked ? ", after a look through the root folders" : "");
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

void addScanCommands(CommandLine& line)
{
    auto options = std::make_shared<ScanOptions>();
    CLI::App* const scanApp =
        line.addCommand(line.app,
                        "scan",
                        "Look through the root folders and take in what changed",
                        [&line, options] { return scan(line, *options); });
    addArguments(*scanApp, "DIR", options->folders, "Folders to add to the roots first");
    scanApp->add_flag("--allow-missing-root",
                      options->allowMissingRoot,
                      "Go on when a root folder is away: its files leave the collection");

    auto withMemory = std::make_shared<bool>(false);
    CLI::App* const loadApp =
        line.addCommand(line.app,
                        "load",
                        "Start from the database and say how long it took",
                        [&line, withMemory] { return load(line, *withMemory); });
    loadApp->add_flag("--memory", *withMemory, "Also show the memory that the collection takes");
}
} // namespace qo::cli
