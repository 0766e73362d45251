#include "core/runs/Reorganizer.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/collection/FileOperations.h"
#include "core/runs/MoveSummary.h"
#include "core/runs/RunChecks.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <unordered_set>
#include <utility>

namespace qo::host
{
namespace
{
constexpr const char* planEnd = ".plan";
constexpr const char* runningEnd = ".running";
constexpr const char* finishedEnd = ".journal";
constexpr std::size_t stampLength = 15; ///< of the time that an id begins with

CString folder()
{
    return Session::folder() + u"\\reorganize";
}

std::string pathOf(const std::string& id, const char* end)
{
    return toSystemPath(folder()) + "/" + id + end;
}

bool exists(const std::string& path)
{
    return fileSystem().exists(fromSystemPath(path));
}

/// Ids become file names.
bool isId(const std::string& text)
{
    return !text.empty() && text.size() <= 64 &&
           std::all_of(
               text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || c == '-'; });
}

/// By the second, then by the number behind it.
bool isOlder(const std::string& a, const std::string& b)
{
    const int order = a.compare(0, stampLength, b, 0, stampLength);
    if (order != 0)
        return order < 0;
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

/// The ids of the files with that end, the oldest first.
std::vector<std::string> idsOf(const std::string& end)
{
    std::vector<DirEntry> entries;
    const int error = fileSystem().list(folder(), entries);
    if (error != 0 && error != ENOENT)
        throw HostError(ExitCode::failed,
                        "the folder " + shownPath(folder()) +
                            " cannot be read: " + errorWords(error));
    std::vector<std::string> ids;
    for (const DirEntry& entry : entries)
    {
        const std::string name = toUtf8(entry.name);
        if (name.ends_with(end) && isId(name.substr(0, name.size() - end.size())))
            ids.push_back(name.substr(0, name.size() - end.size()));
    }
    std::sort(ids.begin(), ids.end(), isOlder);
    return ids;
}

/// The journal of a run, in whichever state it is; "" when there is none.
std::string journalOf(const std::string& id)
{
    for (const char* end : {runningEnd, finishedEnd})
    {
        if (exists(pathOf(id, end)))
            return pathOf(id, end);
    }
    return {};
}

void makeFolder()
{
    if (const int error = fileSystem().makeDirectories(folder()))
        throw HostError(ExitCode::failed,
                        "the folder " + shownPath(folder()) +
                            " cannot be made: " + errorWords(error));
}

/// "20261121-201500", behind every id that there is, even where the clock was put back.
std::string newId()
{
    makeFolder();
    std::string wanted = toUtf8(timeStamp(systemClock().localTime()));
    std::replace(wanted.begin(), wanted.end(), '_', '-');
    std::string youngest;
    for (const char* end : {planEnd, runningEnd, finishedEnd})
    {
        for (const std::string& id : idsOf(end))
            youngest = isOlder(youngest, id) ? id : youngest;
    }
    if (isOlder(youngest, wanted))
        return wanted;
    wanted = youngest.substr(0, stampLength);
    std::string id = wanted;
    for (int count = 2; !isOlder(youngest, id); ++count)
        id = wanted + "-" + std::to_string(count);
    return id;
}

/// How a run that was stopped comes to its end, for its user.
std::string wayOn(const std::string& id)
{
    const std::string undone = MoveSummary::read(pathOf(id, runningEnd)).undoes;
    if (!undone.empty())
        return "\"qo reorg undo " + undone + "\" goes on with it";
    return "\"qo reorg apply " + id + "\" goes on with it, \"qo reorg undo " + id +
           "\" takes it back";
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

/// Plans that nobody carried out are many, and can be made again.
void dropOldPlans()
{
    constexpr std::size_t kept = 10;
    std::vector<std::string> ids = idsOf(planEnd);
    std::erase_if(ids, [](const std::string& id) { return !journalOf(id).empty(); });
    for (std::size_t i = 0; i + kept < ids.size(); ++i)
        fileSystem().removeFile(fromSystemPath(pathOf(ids[i], planEnd)));
}

void close(const std::string& id)
{
    const std::string from = pathOf(id, runningEnd);
    const std::string to = pathOf(id, finishedEnd);
    if (const int error =
            exists(from) ? fileSystem().moveFile(fromSystemPath(from), fromSystemPath(to)) : 0)
        throw HostError(ExitCode::failed,
                        from + " cannot be renamed to " + to + ": " + errorWords(error));
}

/// The path of a record for the moment in which files change places; of the same kind of file.
CString placeBetween(const CString& path)
{
    const CQoCollPath whole(path);
    return addBackslash(whole.getParent().toString()) + u".qo-between-" + whole.getLast();
}

/// Where the record of the file stands by now; "" when the collection has none. Telling may have
/// been cut short.
CString recordPlace(const MoveRun::Place& place)
{
    const CString from = fromSystemPath(place.from);
    for (const CString& path : {from, placeBetween(from)})
    {
        const QoFileDbItemPtr record = CollectionChanges::recordOf(path);
        if (record && toUtf8(record->velmoraId) == place.recordId)
            return path;
    }
    return {};
}

/// Lets the loaded collection follow what the disk has.
void tell(Session& session, MoveRun& run)
{
    const std::vector<MoveRun::Place> places = run.untold();
    if (places.empty())
        return;
    std::vector<std::pair<CString, CString>> moves;
    std::unordered_set<std::u16string> left;
    for (const MoveRun::Place& place : places)
    {
        const CString from = recordPlace(place);
        if (from.IsEmpty())
            continue;
        moves.emplace_back(from, fromSystemPath(place.to));
        left.insert(pathKey(from));
    }
    CollectionChanges changes(session, true);
    for (auto& [from, to] : moves)
    {
        if (left.contains(pathKey(to)))
        {
            changes.move(from, placeBetween(from), false);
            from = placeBetween(from);
        }
        else if (const QoFileDbItemPtr other = CollectionChanges::recordOf(to);
                 other && !nameExists(other->path))
            changes.remove(to); // its file was gone before
    }
    for (const auto& [from, to] : moves)
        changes.move(from, to, false);
    // What the collection knows must not be lost in a power cut.
    run.sync();
    ProgressReporter silent([](const ProgressEvent&) {});
    changes.apply(silent);
    run.told();
}

/// "2026-11-21 20:15:00" from an id.
std::string timeOf(const std::string& id)
{
    if (id.size() < stampLength)
        return {};
    return id.substr(0, 4) + "-" + id.substr(4, 2) + "-" + id.substr(6, 2) + " " + id.substr(9, 2) +
           ":" + id.substr(11, 2) + ":" + id.substr(13, 2);
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

/// Of the plan behind a run; none when it is gone.
std::vector<std::string> keptPlaces(const std::string& id)
{
    try
    {
        return placesOf(ReorganizePlan::read(pathOf(id, planEnd)));
    }
    catch (const HostError&)
    {
        return {};
    }
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
        throw HostError(ExitCode::failed, run.complaint);
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
        if (!id.empty() || (run->undone.empty() && run->leadsForth && hasMoved))
            return run->id;
    }
    throw HostError(ExitCode::notFound,
                    id.empty() ? "there is no run to take back"
                               : "there is no run " + id + " to take back");
}
} // namespace

Reorganizer::Reorganizer(Session& session) : m_session(session) {}

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
    // Whatever happened, what the disk has by now is told.
    try
    {
        tell(m_session, run);
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

MoveRun::Report Reorganizer::apply(const ReorganizePlan& wanted, ProgressReporter& progress)
{
    if (!isId(wanted.id))
        throw HostError(ExitCode::failed, "the plan has no valid id: " + wanted.id);
    if (exists(pathOf(wanted.id, finishedEnd)))
        throw HostError(ExitCode::refused,
                        "the plan " + wanted.id + " was carried out before: make a new one");
    refuseBeside(wanted.id);
    if (exists(pathOf(wanted.id, runningEnd)))
        return goOn(wanted.id, progress);
    check::rootsAreThere(placesOf(wanted));
    check::ownFolders(wanted);
    ReorganizePlan plan = wanted;
    const std::vector<MoveRun::Failure> refused = check::bringUpToDate(plan);
    makeFolder();
    // The one that is kept may be another: a plan can be edited by hand.
    plan.write(planPath(plan.id));
    const auto run = MoveRun::begin(pathOf(plan.id, runningEnd), plan);
    MoveRun::Report report = carryOut(*run, plan.id, progress);
    report.failures.insert(report.failures.begin(), refused.begin(), refused.end());
    return report;
}

bool Reorganizer::canGoOn(const std::string& id)
{
    return isId(id) && exists(pathOf(id, runningEnd));
}

MoveRun::Report Reorganizer::goOn(const std::string& id, ProgressReporter& progress)
{
    const std::string undone = MoveSummary::read(pathOf(id, runningEnd)).undoes;
    // From here on only the undo can go on.
    if (!undone.empty())
        close(undone);
    refuseBeside(id);
    check::rootsAreThere(keptPlaces(undone.empty() ? id : undone));
    return carryOut(*MoveRun::open(pathOf(id, runningEnd)), id, progress);
}

std::string Reorganizer::undoable(const std::string& id)
{
    return undoableOf(runs(), id);
}

MoveRun::Report Reorganizer::undo(const std::string& id, ProgressReporter& progress)
{
    const std::vector<Run> all = runs();
    if (const Run* const stopped = stoppedUndo(all, id))
        return goOn(stopped->id, progress);
    const std::string wanted = undoableOf(all, id);
    refuseBeside(wanted);
    check::rootsAreThere(keptPlaces(wanted));
    const std::string own = newId();
    const auto run = MoveRun::beginUndo(pathOf(own, runningEnd), journalOf(wanted));
    close(wanted);
    return carryOut(*run, own, progress);
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
        undo.leadsForth = !first->leadsForth;
        // What left files behind can be followed by another one.
        if (undo.away == 0 || undo.isRunning)
            first->undone = undo.id;
    }
    return list;
}

bool hasUntoldMoves()
{
    return FileOperations::wasCutShort() || !idsOf(runningEnd).empty();
}

void tellUntoldMoves(Session& session)
{
    if (FileOperations::wasCutShort())
        FileOperations::takeUp(session);
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
            session.note(error.what());
            continue;
        }
        tell(session, *run);
        if (run->isFinished())
            close(id);
    }
}
} // namespace qo::host
