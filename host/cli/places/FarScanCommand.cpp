#include "cli/places/FarScanCommand.h"

#include "cli/KernelCommand.h"
#include "cli/shown/Text.h"
#include "core/base/Json.h"

namespace qo::cli
{
void printFarScan(CommandLine& line,
                  const char* kind,
                  const std::string& name,
                  const host::FarScanReport& report)
{
    for (const std::string& remark : report.remarks)
        line.note(remark);
    if (line.json)
        return line.out.line(host::dump({{kind, name},
                                         {"connected", true},
                                         {"files", report.files},
                                         {"new", report.added},
                                         {"changed", report.changed},
                                         {"gone", report.gone},
                                         {"seconds", report.seconds}}));
    line.out.line(std::string(line.dryRun ? "A scan would find " : "Scanned ") +
                  countText(report.files, "file") + " of " + harmless(name) + ": " +
                  std::to_string(report.added) + " new, " + std::to_string(report.changed) +
                  " changed, " + std::to_string(report.gone) + " gone, " +
                  secondsText(report.seconds) + " s");
}

ExitCode scanPlace(CommandLine& line, const FarScanKind& kind)
{
    const auto session = openKernel(line, KernelUse::change);
    const auto trial = trialOf(line, *session);
    const CString database = trial ? trial->path() : host::Session::databasePath();
    return runShown(line,
                    *session,
                    [&](host::ProgressReporter& progress)
                    {
                        session->prepareDatabase(database);
                        const host::FarCollection collection = kind.collection(*session);
                        (void)kind.takeCause();
                        try
                        {
                            const host::FarScanReport report = host::scanFar(
                                *session, collection, database, kind.isDeep, progress);
                            if (kind.finish && !line.dryRun)
                                kind.finish(report);
                            printFarScan(line, kind.name, collection.name, report);
                            return report.remarks.empty() ? ExitCode::done : ExitCode::partly;
                        }
                        catch (const HostError& error)
                        {
                            const std::string cause = kind.takeCause();
                            if (cause.empty() || error.code() == ExitCode::interrupted)
                                throw;
                            throw HostError(error.code(), error.what() + (": " + cause));
                        }
                    });
}
} // namespace qo::cli
