#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/shown/Text.h"
#include "core/base/ClosestName.h"
#include "core/base/Json.h"
#include "core/doctor/Doctor.h"

namespace qo::cli
{
namespace
{
using host::Doctor;
using host::Finding;
using host::Json;

void showFinding(CommandLine& line, const Finding& finding)
{
    if (line.json)
    {
        Json object;
        object["topic"] = finding.topic;
        object["what"] = finding.what;
        object["count"] = finding.count;
        object["examples"] = finding.examples;
        object["mend"] = finding.mend;
        object["mended"] = finding.isMended;
        return line.out.line(host::dump(object));
    }
    line.out.line((finding.isMended ? "mended: " : "") + finding.what + ": " +
                  harmless(host::firstOf(finding.examples, finding.count)));
    if (!finding.isMended)
        line.out.line("    " + finding.mend);
}

ExitCode examine(CommandLine& line, bool fixes)
{
    const bool mends = fixes && !line.dryRun;
    const auto session = openKernel(line, mends ? KernelUse::hold : KernelUse::look);
    Doctor doctor(*session, mends);
    const bool isReadable = session->kernel().run([&] { return doctor.examineData(); });
    if (isReadable)
    {
        const host::LoadReport report = loadForReading(line, *session);
        runShown(line,
                 *session,
                 [&](host::ProgressReporter& progress) { doctor.examineCollection(progress); });
        if (!line.json)
            line.note("looked at " + countText(report.files, "file"));
    }
    for (const Finding& finding : doctor.findings())
        showFinding(line, finding);
    if (doctor.findings().empty())
        line.note("all is well");
    return doctor.isAllWell() ? ExitCode::done : ExitCode::partly;
}
} // namespace

void setUpDoctor(CommandLine& line, CLI::App& command)
{
    const auto fixes = std::make_shared<bool>(false);
    line.setAction(command, [&line, fixes] { return examine(line, *fixes); });
    command.add_flag("--fix", *fixes, "Mend what can be mended without harm");
}
} // namespace qo::cli
