#include "cli/rules/ReorgCommand.h"

#include "cli/KernelCommand.h"
#include "cli/rules/PlanListing.h"
#include "cli/rules/PlanSelection.h"
#include "core/base/HostFiles.h"
#include "core/rules/RuleStore.h"
#include "core/runs/Reorganizer.h"

namespace qo::cli
{
namespace
{
using host::PlannedFile;
using host::ReorganizePlan;
using host::Session;

struct PlanOptions
{
    std::string rule;   ///< "" for the only one
    std::string target; ///< "" for the root folder of each file
    std::string output; ///< "" for no copy
    PlanSelection selection;
    bool all = false;
};

CString ruleOf(const host::RuleStore& store, const std::string& typed)
{
    if (!typed.empty())
        return store.find(typed);
    CString id = store.onlyOwn();
    if (id.IsEmpty())
        throw HostError(ExitCode::usage, "name a rule with --rule; there are " + store.listText());
    return id;
}

/// The spelling that lies in a root folder.
CString targetOf(const std::string& typed)
{
    if (typed.empty())
        return {};
    const std::vector<CString> forms = spellings(typed);
    for (const CString& form : forms)
    {
        if (CQoCollection::m_ownCollection.getRootDir(CQoCollPath(form)))
            return form;
    }
    return forms.front();
}

ReorganizePlan makePlan(const CommandLine& line,
                        Session& session,
                        const PlanOptions& options,
                        host::ProgressReporter& progress)
{
    const host::RuleStore store;
    const CString rule = ruleOf(store, options.rule);
    const CString target = targetOf(options.target);
    const QoFileDbItemArray records = options.selection.records();
    if (line.dryRun)
        return host::PlanBuilder::build({rule, target, {}}, records, progress);
    return host::Reorganizer(session).makePlan(rule, target, records, progress);
}

ExitCode plan(CommandLine& line, const PlanOptions& options)
{
    const std::string output =
        options.output.empty() ? std::string() : host::absolutePath(options.output);
    if (!output.empty())
        prepareOutput(line, output);
    auto session = openKernel(line, KernelUse::change);
    loadForReading(line, *session);
    const ReorganizePlan made = runShown(line,
                                         *session,
                                         [&](host::ProgressReporter& progress)
                                         { return makePlan(line, *session, options, progress); });
    if (!output.empty() && !line.dryRun)
        made.write(output);
    // While somebody reads the plan, other commands can work.
    session.reset();
    listPlan(line, made, options.all);
    std::string sentence = planSummary(made);
    if (!line.dryRun && made.count(PlannedFile::Verdict::move) > 0)
        sentence += "; plan " + made.id + ": \"qo reorg apply --last\" carries it out";
    line.note(sentence);
    return made.count(PlannedFile::Verdict::refused) > 0 ? ExitCode::partly : ExitCode::done;
}
} // namespace

void setUpReorg(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    auto options = std::make_shared<PlanOptions>();
    CLI::App* const planApp =
        line.addCommand(command,
                        "plan",
                        "Show what would move where and why, and keep it as a plan; exit code 6 "
                        "when something cannot move",
                        {});
    line.setListAction(*planApp, [&line, options] { return plan(line, *options); });
    PlanSelection& selection = options->selection;
    addArgument(*planApp, "--rule", options->rule, "The rule; may be left out when you have one")
        ->type_name("RULE");
    addArgument(*planApp, "--root", selection.root, "Only files below this folder")
        ->type_name("DIR");
    addArgument(*planApp, "--to", options->target, "Sort into this folder of the collection")
        ->type_name("DIR");
    addNames(*planApp, selection.choice);
    addArgument(*planApp, "--output", options->output, "Write a copy of the plan to this file")
        ->type_name("FILE");
    planApp->add_flag("--all", options->all, "Show the files that stay, too");
    addQuery(*planApp, selection.choice);
    addReorgRunCommands(line, command);
}
} // namespace qo::cli
