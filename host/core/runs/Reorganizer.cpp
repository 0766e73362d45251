#include "core/runs/Reorganizer.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/runs/FileMoves.h"
#include "core/runs/MoveSummary.h"
#include "core/runs/RunChecks.h"
#include "core/runs/RunFiles.h"
#include "core/runs/RunFollower.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <QoKernel/Statistics.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <unordered_set>
#include <utility>

namespace qo::host
{
namespace
{
using namespace runfiles;

std::string forgetHint(const std::string& id)
{
    return "; \"qo reorg forget " + id +
           "\" sets it aside: files that it moved and that the collection does not know at their "
           "new places then count as new";
}

/// How a run that was stopped comes to its end, for its user.
std::string wayOn(const std::string& id)
{
    try
    {
        const std::string undone = MoveSummary::read(pathOf(id, runningEnd)).undoes;
        if (!undone.empty())
            return "\"qo undo " + undone + "\" goes on with it";
        return "\"qo reorg apply " + id + "\" goes on with it, \"qo undo " + id +
               "\" takes it back";
    }
    catch (const HostError& error)
    {
        return error.what() + forgetHint(id);
    }
}

/// Throws when a run other than this one waits.
void refuseBeside(const std::string& id)
{
    for (const std::string& other : idsOf(runningEnd))
    {
        if (other != id)
            throw HostError(ExitCode::refused,
                            "the run " + other + " has not come to its end: " + wayOn(other));
    }
}

/// "" when the plan is gone or damaged: the run does not need it.
std::string ruleOf(const std::string& id)
{
    try
    {
        return ReorganizePlan::readHead(pathOf(id, planEnd)).rule;
    }
    catch (const HostError&)
    {
        return {};
    }
}

/// The folders that files leave or come to, each once: there are far fewer of them.
std::vector<std::string> placesOf(const ReorganizePlan& plan)
{
    std::unordered_set<std::string> places;
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move)
            continue;
        places.insert(parentOf(file.from));
        places.insert(parentOf(file.to));
    }
    return {places.begin(), places.end()};
}

/// The same of a run; without those that the collection does not know.
std::vector<std::string> placesOf(const MoveProgress::Start& start)
{
    std::unordered_set<std::string> places;
    for (const MovedFile& file : start.files)
    {
        if (file.outside != MovedFile::Outside::source)
            places.insert(parentOf(file.from));
        if (file.outside != MovedFile::Outside::target)
            places.insert(parentOf(file.to));
    }
    return {places.begin(), places.end()};
}

using Runs = std::vector<Reorganizer::Run>;

/// The undo of the run of that id, or of any, that was stopped and goes on; null for none.
const Reorganizer::Run* stoppedUndo(const Runs& runs, const std::string& id)
{
    for (const Reorganizer::Run& run : runs)
    {
        if (run.isRunning && !run.undoes.empty() && (id.empty() || run.undoes == id))
            return &run;
    }
    return nullptr;
}

/// What cannot be read may be the one that is meant.
void needReadable(const Reorganizer::Run& run)
{
    if (!run.complaint.empty())
        throw HostError(ExitCode::failed, run.complaint + forgetHint(run.id));
}

std::string undoableOf(const Runs& runs, const std::string& id)
{
    if (const Reorganizer::Run* const stopped = stoppedUndo(runs, id))
        return stopped->undoes;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run)
    {
        if (!id.empty() && run->id != id)
            continue;
        needReadable(*run);
        if (!id.empty() && !run->undone.empty())
            throw HostError(ExitCode::refused,
                            "the run " + id + " was taken back by " + run->undone);
        const bool hasMoved = run->moved > 0 || run->isRunning;
        if (!id.empty() || (run->undone.empty() && run->isForward && hasMoved))
            return run->id;
    }
    throw HostError(ExitCode::notFound,
                    id.empty() ? "there is no run to take back"
                               : "there is no run " + id + " to take back");
}
} // namespace

Reorganizer::Reorganizer(Session& session, Trash trash)
    : m_session(session), m_trash(std::move(trash))
{
}

ReorganizePlan Reorganizer::makePlan(const CString& rule,
                                     const CString& target,
                                     const QoFileDbItemArray& records,
                                     IQoProgress& progress) const
{
    const ReorganizePlan plan = PlanBuilder::build({rule, target, newId()}, records, progress);
    plan.write(planPath(plan.id));
    dropOldPlans();
    return plan;
}

std::string Reorganizer::planPath(const std::string& id)
{
    return pathOf(id, planEnd);
}

std::string Reorganizer::lastPlan()
{
    const std::vector<std::string> ids = idsOf(planEnd);
    if (ids.empty())
        throw HostError(ExitCode::notFound, "there is no plan yet: \"qo reorg plan\" makes one");
    return ids.back();
}

MoveRun::Report
Reorganizer::carryOut(MoveRun& run, const std::string& id, ProgressReporter& progress)
{
    MoveRun::Events events;
    events.bounds = check::boundsOf(run.start(), m_trash);
    events.stop = [&progress] { return progress.isCanceled(); };
    events.progress = [&progress](std::size_t done, std::size_t all, const std::string& path)
    {
        if (done <= 1)
            progress.setRange(IQoProgress::rangeKnown, static_cast<int>(all));
        progress.setCurrentItem(fromSystemPath(path), IQoProgress::itemFilePath);
        progress.step(1);
    };
    MoveRun::Report report;
    std::string failure;
    try
    {
        report = run.run(events);
    }
    catch (const HostError& error)
    {
        failure = error.what();
    }
    // Whatever happened, the collection gets to know what the disk has by now.
    try
    {
        RunFollower(m_session, run).apply();
    }
    catch (const HostError& error)
    {
        throw HostError(error.code(),
                        (failure.empty() ? "" : failure + "; ") + std::to_string(run.moved()) +
                            " of the files have moved, but the collection does not know it yet: " +
                            error.what() + "; the next command brings it up to date");
    }
    if (!failure.empty())
        throw HostError(ExitCode::failed, failure);
    if (report.isFinished)
        close(id);
    return report;
}

void Reorganizer::check(const MoveProgress::Start& start) const
{
    refuseBeside(start.id);
    check::rootsAreThere(placesOf(start));
    (void)check::boundsOf(start, m_trash);
}

void Reorganizer::check(const FileMoves& moves) const
{
    check(moves.start({}));
}

std::vector<MoveRun::Failure> Reorganizer::check(ReorganizePlan& plan) const
{
    if (!isId(plan.id))
        throw HostError(ExitCode::failed, "the plan has no valid id: " + plan.id);
    if (exists(pathOf(plan.id, finishedEnd)))
        throw HostError(ExitCode::refused,
                        "the plan " + plan.id + " was carried out before: make a new one");
    refuseBeside(plan.id);
    check::rootsAreThere(placesOf(plan));
    check::ownFolders(plan);
    return check::bringUpToDate(plan);
}

MoveRun::Report Reorganizer::carryOut(const FileMoves& moves, ProgressReporter& progress)
{
    const std::string id = newId();
    MoveProgress::Start start = moves.start(id);
    check(start);
    const auto run = MoveRun::begin(pathOf(id, runningEnd), std::move(start));
    MoveRun::Report report = carryOut(*run, id, progress);
    // What was stopped before anything happened leaves nothing to go on with.
    if (!report.isFinished && run->dropIfUntouched())
    {
        close(id);
        throw HostError(progress.isCanceled() ? ExitCode::interrupted : ExitCode::failed,
                        report.notes.empty() ? "stopped; nothing was changed"
                                             : report.notes.front());
    }
    m_lastRun = id;
    return report;
}

MoveRun::Report Reorganizer::apply(const ReorganizePlan& wanted, ProgressReporter& progress)
{
    if (canGoOn(wanted.id))
        return goOn(wanted.id, progress);
    ReorganizePlan plan = wanted;
    const std::vector<MoveRun::Failure> refused = check(plan);
    makeFolder();
    // The one that is kept may be another: a plan can be edited by hand.
    plan.write(planPath(plan.id));
    const auto run = MoveRun::begin(pathOf(plan.id, runningEnd), plan);
    const auto moves =
        std::ranges::count(plan.files, PlannedFile::Verdict::move, &PlannedFile::verdict);
    CQoStatistics::reportStartFilesAction(
        CQoStatistics::Reorganize, CString(), static_cast<int>(moves), false);
    MoveRun::Report report = carryOut(*run, plan.id, progress);
    CQoStatistics::reportEndFilesAction(
        CQoStatistics::Reorganize, CString(), static_cast<int>(report.moved));
    report.failures.insert(report.failures.begin(), refused.begin(), refused.end());
    return report;
}

bool Reorganizer::canGoOn(const std::string& id)
{
    return isId(id) && exists(pathOf(id, runningEnd));
}

MoveRun::Report Reorganizer::goOn(const std::string& id, ProgressReporter& progress)
{
    // The load before this may have found that nothing was left to do but to say so.
    if (!exists(pathOf(id, runningEnd)) && exists(pathOf(id, finishedEnd)))
        return MoveRun::open(pathOf(id, finishedEnd))->run({});
    const MoveProgress seen = MoveSummary::progressOf(pathOf(id, runningEnd));
    const std::string undone = seen.start().undoes;
    // From here on only the undo can go on.
    if (!undone.empty())
        close(undone);
    refuseBeside(id);
    check::rootsAreThere(placesOf(seen.start()));
    return carryOut(*MoveRun::open(pathOf(id, runningEnd)), id, progress);
}

MoveProgress Reorganizer::progressOf(const std::string& id)
{
    return MoveSummary::progressOf(journalOf(id));
}

std::string Reorganizer::undoable(const std::string& id)
{
    return undoableOf(runs(), id);
}

/// Which run can be taken back, with its roots there and its journal as it should be.
std::string Reorganizer::checkedUndoable(const std::vector<Run>& all, const std::string& id) const
{
    std::string wanted = undoableOf(all, id);
    refuseBeside(wanted);
    const MoveProgress first = MoveSummary::progressOf(journalOf(wanted));
    check::rootsAreThere(placesOf(first.start()));
    (void)check::boundsOf(first.start(), m_trash);
    return wanted;
}

/// Between the beginning of the undo and the closing of the first run both have open journals: then
/// the undo goes on, and goOn() closes the first.
MoveRun::Report Reorganizer::undo(const std::string& id, ProgressReporter& progress)
{
    const std::vector<Run> all = runs();
    if (const Run* const stopped = stoppedUndo(all, id))
        return goOn(stopped->id, progress);
    const std::string wanted = checkedUndoable(all, id);
    const std::string own = newId();
    const auto run = MoveRun::beginUndo(pathOf(own, runningEnd), journalOf(wanted));
    close(wanted);
    return carryOut(*run, own, progress);
}

MoveRun::Report Reorganizer::checkUndo(const std::string& id) const
{
    const std::vector<Run> all = runs();
    MoveRun::Report report;
    if (const Run* const stopped = stoppedUndo(all, id))
    {
        const MoveProgress progress = MoveSummary::progressOf(journalOf(stopped->id));
        report.moved = progress.files().size() - progress.arrived();
        return report;
    }
    const MoveProgress::Start undo = MoveRun::startOfUndo(journalOf(checkedUndoable(all, id)));
    for (const MoveProgress::Refusal& refusal : undo.refusals)
        report.failures.push_back({refusal.from, refusal.to, refusal.why});
    for (const MovedFile& file : undo.files)
    {
        const bool isRemoved = file.deed == MovedFile::Deed::removeCopy;
        const int error = isRemoved ? fileSystem().mayRemove(fromSystemPath(file.from))
                                    : disk::checkRights(file.from, file.to);
        if (error != 0)
            report.failures.push_back({file.from, file.to, errorWords(error)});
        else
            ++report.moved;
    }
    return report;
}

std::vector<Reorganizer::Run> Reorganizer::runs()
{
    std::vector<Run> list;
    for (const char* end : {finishedEnd, runningEnd})
    {
        for (const std::string& id : idsOf(end))
        {
            Run run;
            run.id = id;
            run.made = timeOf(id);
            run.isRunning = end == runningEnd;
            try
            {
                const MoveSummary summary = MoveSummary::read(pathOf(id, end));
                run.undoes = summary.undoes;
                run.kind = summary.kind.empty() ? "reorg" : summary.kind;
                run.moved = summary.moved;
                run.away = summary.away;
                run.rule = ruleOf(run.undoes.empty() ? id : run.undoes);
            }
            catch (const HostError& error)
            {
                run.complaint = error.what();
            }
            list.push_back(std::move(run));
        }
    }
    std::sort(
        list.begin(), list.end(), [](const Run& a, const Run& b) { return isOlder(a.id, b.id); });
    for (Run& undo : list)
    {
        const auto first = std::find_if(
            list.begin(), list.end(), [&undo](const Run& run) { return run.id == undo.undoes; });
        if (undo.undoes.empty() || first == list.end())
            continue;
        undo.isForward = !first->isForward;
        // What left files behind can be followed by another one.
        if (undo.away == 0 || undo.isRunning)
            first->undone = undo.id;
    }
    return list;
}

void Reorganizer::forget(const std::string& id)
{
    if (!isId(id) || journalOf(id).empty())
        throw HostError(ExitCode::notFound, "there is no run " + id + "; \"qo runs\" lists them");
    runfiles::forget(id);
}

bool hasUnappliedMoves()
{
    return !idsOf(runningEnd).empty();
}

std::string unreadableRun()
{
    for (const std::string& id : idsOf(runningEnd))
    {
        try
        {
            (void)MoveSummary::read(pathOf(id, runningEnd));
        }
        catch (const HostError&)
        {
            return id;
        }
    }
    return {};
}

void applyUnfinishedMoves(Session& session)
{
    for (const std::string& id : idsOf(runningEnd))
    {
        std::unique_ptr<MoveRun> run;
        try
        {
            run = MoveRun::open(pathOf(id, runningEnd));
        }
        catch (const HostError& error)
        {
            // The collection is worth more than one journal; find-moved may still help.
            session.note(error.what() + forgetHint(id));
            continue;
        }
        RunFollower(session, *run).apply();
        if (run->isFinished())
            close(id);
    }
}
} // namespace qo::host
