#include "cli/KernelCommand.h"

#include "cli/Interrupt.h"
#include "cli/shown/ProgressDisplay.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/roots/RootFolders.h"

#include <algorithm>

namespace qo::cli
{
using host::Session;

std::unique_ptr<Session> openKernel(const CommandLine& line, KernelUse use)
{
    Session::Options options;
    if (line.app.get_option("--data")->count() > 0)
        options.dataFolder = host::absolutePath(line.dataFolder);
    options.withLock = use == KernelUse::hold;
    options.saveSettings = !line.dryRun;
    options.note = [&line](const std::string& sentence) { line.note(sentence); };
    return std::make_unique<Session>(std::move(options));
}

host::LoadReport
loadCollection(const CommandLine& line, Session& session, const host::LoadOptions& options)
{
    ProgressDisplay display(line.quiet);
    host::ProgressReporter progress([&display](const host::ProgressEvent& event)
                                    { display.show(event); });
    const InterruptGuard guard(progress);
    const host::LoadReport report = session.kernel().run(
        [&]
        {
            session.prepareDatabase(options.database.IsEmpty() ? Session::databasePath()
                                                               : options.database);
            return host::loadCollection(session, options, progress);
        });
    if (progress.cameTooLate())
        line.note(
            "the interruption came while the collection was being saved: everything was kept");
    return report;
}

void loadForReading(const CommandLine& line, Session& session)
{
    const host::LoadReport report = loadCollection(line, session, {});
    const bool hasRoots =
        session.kernel().run([] { return !host::RootFolders().folders().IsEmpty(); });
    if (!hasRoots)
        line.note("the collection has no folder yet: add one with \"qo scan DIR\"");
    else if (report.walked || report.gone > 0)
        line.note("the root folders have changed: " + countText(report.added, "file") + " came, " +
                  std::to_string(report.gone) + " left");
}

std::vector<CString> spellings(const std::string& typed)
{
    const std::string lexical = host::absolutePath(typed);
    std::vector<CString> list{fromSystemPath(lexical)};
    const auto add = [&list](const std::string& path)
    {
        const CString form = fromSystemPath(path);
        if (std::find(list.begin(), list.end(), form) == list.end())
            list.push_back(form);
    };
    const std::size_t slash = lexical.rfind('/');
    const std::string folder = host::resolvedPath(lexical.substr(0, slash + 1));
    if (!folder.empty())
        add(folder + "/" + lexical.substr(slash + 1));
    const std::string real = host::resolvedPath(lexical);
    if (!real.empty())
        add(real);
    return list;
}
} // namespace qo::cli
