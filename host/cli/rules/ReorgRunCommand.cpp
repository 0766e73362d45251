#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/rules/PlanListing.h"
#include "cli/rules/ReorgCommand.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/plan/PlanRecheck.h"
#include "core/runs/Reorganizer.h"

#include <algorithm>
#include <map>

namespace qo::cli
{
namespace
{
using host::MoveRun;
using host::PlannedFile;
using host::ReorganizePlan;
using host::Reorganizer;
using Run = Reorganizer::Run;

struct RunOptions
{
    std::string plan; ///< an id or a file; "" with last
    bool last = false;
    bool isLong = false;
};

bool looksLikeId(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789-") == std::string::npos;
}

/// An id of "" when there is no such run.
Run findRun(const std::string& id)
{
    for (const Run& run : Reorganizer::runs())
    {
        if (run.id == id)
            return run;
    }
    return {};
}

ReorganizePlan findPlan(const RunOptions& options)
{
    if (options.last == !options.plan.empty())
        throw HostError(ExitCode::usage, "name a plan, or take the youngest with --last");
    const std::string id = options.last ? Reorganizer::lastPlan() : options.plan;
    if (!looksLikeId(id))
        return ReorganizePlan::read(host::absolutePath(id));
    const std::string plan = Reorganizer::planPath(id);
    if (!fileSystem().exists(fromSystemPath(plan)) && !findRun(id).id.empty())
        throw HostError(ExitCode::refused, "the run " + id + " has come to its end");
    return ReorganizePlan::read(plan);
}

/// What a run came to.
class RunReport
{
public:
    /// The deed in words, and what its user can do when it was stopped.
    RunReport(CommandLine& line, std::string deed, std::string hint)
        : m_line(line), m_deed(std::move(deed)), m_hint(std::move(hint))
    {
    }

    /// record gets the numbers. Throws HostError when the run was stopped.
    ExitCode put(const MoveRun::Report& report, Json record) const
    {
        putFailures(report);
        if (m_line.json)
        {
            record["moved"] = report.moved;
            record["failed"] = report.failures.size();
            record["finished"] = report.isFinished;
            m_line.out.line(dump(record));
        }
        m_line.out.flush();
        for (const std::string& sentence : report.notes)
            m_line.note(sentence);
        const std::string sum =
            countText(static_cast<std::int64_t>(report.moved), "file") + " " + m_deed;
        if (!report.isFinished)
            throw HostError(wasInterrupted() ? ExitCode::interrupted : ExitCode::failed,
                            "stopped, and " + sum + " so far: " + m_hint);
        m_line.note(sumOf(report, m_deed, "did not"));
        return codeOf(report);
    }

    void putFailures(const MoveRun::Report& report) const
    {
        for (const MoveRun::Failure& failure : report.failures)
            putFailure(failure);
    }

    /// "2 files moved, 1 did not".
    static std::string
    sumOf(const MoveRun::Report& report, const std::string& deed, const std::string& failed)
    {
        return countText(static_cast<std::int64_t>(report.moved), "file") + " " + deed +
               (report.failures.empty()
                    ? std::string()
                    : ", " + std::to_string(report.failures.size()) + " " + failed);
    }

    static ExitCode codeOf(const MoveRun::Report& report)
    {
        if (report.failures.empty())
            return ExitCode::done;
        return report.moved > 0 ? ExitCode::partly : ExitCode::failed;
    }

private:
    void putFailure(const MoveRun::Failure& failure) const
    {
        if (!m_line.json)
            return CommandLine::complain(
                harmless(failure.from + " -> " + failure.to + ": " + failure.reason));
        Json object;
        putPath(object, "from", failure.from);
        putPath(object, "to", failure.to);
        object["reason"] = failure.reason;
        m_line.out.line(dump(object));
    }

    CommandLine& m_line;
    std::string m_deed;
    std::string m_hint;
};

ExitCode undoRun(CommandLine& line, const std::string& id)
{
    const auto session = openKernel(line, KernelUse::hold);
    loadForReading(line, *session);
    std::string undone;
    const MoveRun::Report report = runShown(line,
                                            *session,
                                            [&](host::ProgressReporter& progress)
                                            {
                                                Reorganizer reorganizer(*session);
                                                undone = Reorganizer::undoable(id);
                                                return reorganizer.undo(id, progress);
                                            });
    Json record;
    record["undoes"] = undone;
    return RunReport(line, "went back", "\"qo undo " + undone + "\" goes on").put(report, record);
}

/// What is left of a run that was stopped.
ExitCode showRest(const CommandLine& line, const std::string& id)
{
    const host::MoveProgress progress = Reorganizer::progressOf(id);
    const std::size_t left = progress.files().size() - progress.arrived();
    line.note("would go on with the run " + id + ": " +
              countText(static_cast<std::int64_t>(left), "file") + " left");
    return ExitCode::done;
}

/// Shows what a run of the plan would do now.
ExitCode tryPlan(CommandLine& line, const RunOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    if (session->kernel().run([&] { return Reorganizer::canGoOn(options.plan); }))
        return session->kernel().run([&] { return showRest(line, options.plan); });
    ReorganizePlan plan = session->kernel().run([&] { return findPlan(options); });
    std::erase_if(plan.files,
                  [](const PlannedFile& file)
                  { return file.verdict != PlannedFile::Verdict::move; });
    loadForReading(line, *session);
    return session->kernel().run(
        [&]
        {
            (void)Reorganizer(*session).check(plan);
            host::recheck(plan);
            listPlan(line, plan, false);
            line.note(planSummary(plan));
            if (plan.count(PlannedFile::Verdict::refused) == 0)
                return ExitCode::done;
            return plan.count(PlannedFile::Verdict::move) > 0 ? ExitCode::partly : ExitCode::failed;
        });
}

ExitCode applyPlan(CommandLine& line, const RunOptions& options)
{
    if (line.dryRun)
        return tryPlan(line, options);
    const auto session = openKernel(line, KernelUse::hold);
    ReorganizePlan plan;
    const bool goesOn = session->kernel().run([&] { return Reorganizer::canGoOn(options.plan); });
    if (goesOn)
        plan.id = options.plan;
    else
        plan = session->kernel().run([&] { return findPlan(options); });
    if (!goesOn && plan.count(PlannedFile::Verdict::move) == 0)
        return line.note("the plan " + plan.id + " moves nothing"), ExitCode::done;
    loadForReading(line, *session);
    const MoveRun::Report report = runShown(line,
                                            *session,
                                            [&](host::ProgressReporter& progress)
                                            {
                                                Reorganizer reorganizer(*session);
                                                return goesOn ? reorganizer.goOn(plan.id, progress)
                                                              : reorganizer.apply(plan, progress);
                                            });
    Json record;
    record["run"] = plan.id;
    return RunReport(line,
                     "moved",
                     "\"qo reorg apply " + plan.id + "\" goes on, \"qo undo " + plan.id +
                         "\" takes it back")
        .put(report, record);
}

std::string stateOf(const Run& run)
{
    if (!run.complaint.empty())
        return run.complaint;
    if (run.isRunning)
        return "can go on";
    if (!run.undone.empty())
        return "taken back by " + run.undone;
    const std::string rest = run.away == 0 ? "" : ", " + std::to_string(run.away) + " did not move";
    return (run.undoes.empty() ? "done" : "took back " + run.undoes) + rest;
}

Json runJson(const Run& run)
{
    const auto orNull = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    Json object;
    object["run"] = run.id;
    object["made"] = run.made;
    object["kind"] = run.kind;
    object["rule"] = run.rule;
    object["moved"] = run.moved;
    object["running"] = run.isRunning;
    object["undoes"] = orNull(run.undoes);
    object["undone"] = orNull(run.undone);
    object["state"] = stateOf(run);
    return object;
}

void listRuns(CommandLine& line, const RunOptions& options)
{
    Listing listing(
        line,
        options.isLong,
        {"run", "made", "kind", "rule", "moved", "running", "undoes", "undone", "state"},
        {Listing::Column::name,
         Listing::Column::name,
         Listing::Column::name,
         Listing::Column::text,
         Listing::Column::number,
         Listing::Column::text});
    for (const Run& run : Reorganizer::runs())
    {
        if (listing.isForPeople())
            listing.addCells({run.id,
                              run.made,
                              run.kind,
                              run.rule,
                              countText(static_cast<std::int64_t>(run.moved), "file"),
                              stateOf(run)});
        else
            listing.addRecord(runJson(run));
    }
    listing.finish();
}

/// Which part of a rule decided on each file, by its first place; none without the plan.
std::map<std::string, std::string> decisionsOf(const std::string& plan)
{
    std::map<std::string, std::string> decisions;
    try
    {
        for (const PlannedFile& file : ReorganizePlan::read(Reorganizer::planPath(plan)).files)
            decisions[file.from] = file.decidedBy;
    }
    catch (const HostError&)
    {
        return {};
    }
    return decisions;
}

/// What a run had in mind, in the direction in which it went.
void listFiles(CommandLine& line, const std::string& id)
{
    const Run run = findRun(id);
    if (run.id.empty())
        throw HostError(ExitCode::notFound, "there is no run " + id + "; \"qo runs\" lists them");
    const bool isUndo = !run.undoes.empty();
    const auto decisions = decisionsOf(isUndo ? run.undoes : id);
    const auto put = [&](const std::string& from, const std::string& to)
    {
        if (line.out.isClosed())
            return;
        if (!line.json)
            return line.out.line(harmless(from + " -> " + to));
        Json object;
        putPath(object, "from", from);
        putPath(object, "to", to);
        const auto by = decisions.find(isUndo ? to : from);
        object["by"] = by == decisions.end() ? Json() : Json(by->second);
        line.out.line(dump(object));
    };
    const host::MoveProgress progress = Reorganizer::progressOf(id);
    for (const host::MovedFile& file : progress.files())
        put(file.from, file.to);
    for (const host::MoveProgress::Refusal& refusal : progress.start().refusals)
        put(refusal.from, refusal.to);
}

ExitCode showLog(CommandLine& line, const RunOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&]
        {
            if (options.plan.empty())
                listRuns(line, options);
            else
                listFiles(line, options.plan);
        });
    return ExitCode::done;
}

/// Shows what an undo would do now.
ExitCode tryUndo(CommandLine& line, const RunOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    loadForReading(line, *session);
    return session->kernel().run(
        [&]
        {
            MoveRun::Report report = Reorganizer(*session).checkUndo(options.plan);
            const Run run = findRun(Reorganizer::undoable(options.plan));
            // A folder that goes back as one counts with all its files.
            if (report.failures.empty() && report.moved > 0)
                report.moved = run.moved;
            RunReport(line, {}, {}).putFailures(report);
            if (line.json)
                line.out.line(dump(runJson(run)));
            else
                line.note("would take back the run " + run.id +
                          (run.rule.empty() ? " of qo " + run.kind : ", by the rule " + run.rule) +
                          ": " + RunReport::sumOf(report, "would go back", "would not"));
            return RunReport::codeOf(report);
        });
}

ExitCode forgetRun(CommandLine& line, const std::string& id)
{
    const auto session = openKernel(line, KernelUse::hold);
    const Run run = session->kernel().run([&] { return findRun(id); });
    if (run.id.empty())
        throw HostError(ExitCode::notFound, "there is no run " + id + "; \"qo runs\" lists them");
    if (line.dryRun)
        return line.note("would set the run " + id + " aside"), ExitCode::done;
    confirm(line,
            "The run " + id +
                " can then neither go on nor be taken back, and files that it moved and that the "
                "collection does not know at their new places will count as new.");
    session->kernel().run([&] { Reorganizer::forget(id); });
    line.note("the run " + id + " is set aside");
    return ExitCode::done;
}

void fillUndo(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<RunOptions>();
    line.setAction(command,
                   [&line, options] {
                       return line.dryRun ? tryUndo(line, *options) : undoRun(line, options->plan);
                   });
    addArgument(command, "ID", options->plan, "The run; by default the last one");
}

void fillRuns(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<RunOptions>();
    line.setListAction(command, [&line, options] { return showLog(line, *options); });
    addArgument(command, "ID", options->plan, "A run");
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}
} // namespace

void setUpUndo(CommandLine& line, CLI::App& command)
{
    fillUndo(line, command);
}

void setUpRuns(CommandLine& line, CLI::App& command)
{
    fillRuns(line, command);
}

void addReorgRunCommands(CommandLine& line, CLI::App& group)
{
    auto applied = std::make_shared<RunOptions>();
    CLI::App* const apply = line.addCommand(group,
                                            "apply",
                                            "Carry out a plan, or go on with one that was stopped",
                                            [&line, applied] { return applyPlan(line, *applied); });
    addArgument(*apply, "PLAN", applied->plan, "The id of a plan, or the file of one");
    apply->add_flag("--last", applied->last, "The youngest plan");

    fillUndo(line,
             *line.addCommand(
                 group, "undo", "Take back what a run did, also when that was cut short", {}));
    fillRuns(line, *line.addCommand(group, "log", "List the runs, or the files of one", {}));

    auto forgotten = std::make_shared<RunOptions>();
    CLI::App* const forget =
        line.addCommand(group,
                        "forget",
                        "Set aside a run that cannot come to its end, so that others can begin",
                        [&line, forgotten] { return forgetRun(line, forgotten->plan); });
    addArgument(*forget, "ID", forgotten->plan, "The run")->required();
}
} // namespace qo::cli
