#include "cli/KernelCommand.h"

#include "cli/shown/Text.h"
#include "core/base/Disk.h"
#include "core/base/SystemPath.h"
#include "core/load/StoredLoad.h"
#include "core/roots/RootFolders.h"
#include "core/session/Heap.h"
#include "far/OnDemand.h"
#include "places/ScannedPlace.h"
#include "plugins/configured/ConfiguredPlugins.h"

#include <algorithm>
#include <functional>

namespace qo::cli
{
using host::Session;

namespace
{
/// "qo reorg apply": what the lock says of this process to others. Without the arguments, which
/// are nobody's business.
std::string nameOf(const CommandLine& line)
{
    std::string name = "qo";
    const CLI::App* command = &line.app;
    while (!command->get_subcommands().empty())
    {
        command = command->get_subcommands().front();
        name += " " + command->get_name();
    }
    return name;
}

host::LoadReport runLoad(const CommandLine& line,
                         Session& session,
                         const std::function<host::LoadReport(host::ProgressReporter&)>& load)
{
    ShownProgress progress(line);
    const host::LoadReport report = session.kernel().run([&] { return load(progress.reporter()); });
    if (progress.reporter().cameTooLate())
        line.note(
            "the interruption came while the collection was being saved: everything was kept");
    return report;
}

host::LoadReport loadPlace(const CommandLine& line, Session& session, CQoCollection& collection)
{
    return runLoad(line,
                   session,
                   [&](host::ProgressReporter& progress)
                   {
                       const host::FarCollection place = host::scannedPlace(session, line.place);
                       return host::loadStored(session, progress, place.id, collection);
                   });
}
} // namespace

void needWritable(const CString& folder)
{
    if (const int error = fileSystem().mayChange(folder))
        throw HostError(ExitCode::failed,
                        "nothing can be saved in " + host::shownPath(folder) + ": " +
                            host::errorWords(error));
}

std::unique_ptr<Session> openKernel(const CommandLine& line, KernelUse use, bool isLast)
{
    Session::Options options;
    if (line.app.get_option("--data")->count() > 0)
        options.dataFolder = host::absolutePath(line.dataFolder);
    options.withLock = use == KernelUse::hold || (use == KernelUse::change && !line.dryRun);
    options.doing = nameOf(line);
    options.saveSettings = !line.dryRun;
    options.plugins = host::configuredPlugins;
    options.portables = [](Session& opened)
    {
        return host::portablesOnDemand([&opened](const std::string& sentence)
                                       { opened.note(sentence); });
    };
    options.shares = host::sharesOnDemand;
    options.endsProcess = isLast && host::mayEndAtOnce();
    options.note = [&line](const std::string& sentence) { line.note(sentence); };
    auto session = std::make_unique<Session>(std::move(options));
    if (line.dryRun && use != KernelUse::look)
        needWritable(Session::folder());
    return session;
}

void prepareOutput(const CommandLine& line, const std::string& path)
{
    needWritable(fromSystemPath(host::parentOf(path)));
    NameInfo info;
    if (fileSystem().isDirectory(fromSystemPath(path)))
        throw HostError(ExitCode::usage, path + " is a folder; name the file to write");
    if (host::disk::look(path, info) == 0 && info.kind == NameInfo::Kind::other)
        throw HostError(ExitCode::usage, path + " is a device or a pipe, which cannot be replaced");
    if (!line.dryRun && fileSystem().exists(fromSystemPath(path)))
        confirm(line, "The file " + path + " will be replaced.");
}

host::LoadReport
loadCollection(const CommandLine& line, Session& session, const host::LoadOptions& options)
{
    return runLoad(line,
                   session,
                   [&](host::ProgressReporter& progress)
                   {
                       session.prepareDatabase(options.database.IsEmpty() ? Session::databasePath()
                                                                          : options.database,
                                               options.rescan);
                       return host::loadCollection(session, options, progress);
                   });
}

void readyDatabase(Session& session)
{
    if (session.hasLock())
        session.prepareDatabase(Session::databasePath());
    else
        (void)session.checkDatabase();
}

std::unique_ptr<host::ScratchDatabase> trialOf(const CommandLine& line, Session& session)
{
    if (!line.dryRun)
        return nullptr;
    return session.kernel().run(
        []
        {
            auto copy = std::make_unique<host::ScratchDatabase>(u"trial");
            copy->copyFrom(Session::databasePath());
            return copy;
        });
}

void addPlaceOption(CommandLine& line, CLI::App& command, PlaceUse use)
{
    addArgument(command,
                "--on",
                line.place,
                use == PlaceUse::instead ? "The files of a device, a service or a friend"
                                         : "Those of a device, a service or a friend as well")
        ->type_name("NAME");
}

host::LoadReport loadForReading(const CommandLine& line, Session& session, PlaceUse use)
{
    if (!line.place.empty() && use == PlaceUse::instead)
        return loadPlace(line, session, CQoCollection::m_ownCollection);
    const host::LoadReport report = !session.hasLock()
                                        ? runLoad(line,
                                                  session,
                                                  [&session](host::ProgressReporter& progress)
                                                  { return host::loadStored(session, progress); })
                                        : loadCollection(line, session, {});
    if (!line.place.empty())
        loadPlace(line, session, CQoCollection::m_foreignCollection);
    const bool hasRoots =
        session.kernel().run([] { return !host::RootFolders().folders().IsEmpty(); });
    if (!hasRoots)
        line.note("the collection has no folder yet: add one with \"qo scan DIR\"");
    else if (report.walked || report.gone > 0)
        line.note("the root folders have changed: " + countText(report.added, "file") + " came, " +
                  std::to_string(report.gone) + " left");
    return report;
}
} // namespace qo::cli
