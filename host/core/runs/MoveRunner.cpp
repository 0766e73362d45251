#include "core/runs/MoveRunner.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"
#include "core/runs/MoveJournal.h"
#include "core/runs/MoveRecovery.h"

#include <QoKernel/Kernel.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using State = MoveProgress::State;

/// So many steps share one wait for the disk.
constexpr std::size_t batchSize = 100;
/// So many failures of one kind in a row, and what is left would fail as well.
constexpr int mostErrorsInRow = 20;
constexpr std::array<int, 4> lastingErrors = {ENOSPC, EDQUOT, EROFS, EIO};

} // namespace

MoveRunner::MoveRunner(MoveJournal& journal, const MoveRun::Events& events)
    : m_journal(journal)
    , m_progress(journal.progress())
    , m_events(events)
    , m_disk(events.bounds.targets.empty() ? m_progress.start().targets : events.bounds.targets,
             events.bounds.targets.empty() ? m_progress.start().keptFolders : events.bounds.sources)
    , m_doneFiles(m_progress.arrived())
{
    for (std::size_t i = 0; i < m_progress.files().size(); ++i)
    {
        // The source of a copy frees no place, and what takes a copy back takes none.
        const MovedFile::Deed deed = m_progress.file(i).deed;
        const bool hasArrived = m_progress.lastMove(i) != MoveProgress::npos;
        if (deed == MovedFile::Deed::move || (deed == MovedFile::Deed::copy) == hasArrived)
            ++m_taken[sameNameKey(m_progress.place(i))];
    }
}

MoveRun::Report MoveRunner::run()
{
    if (m_progress.isFinished())
        return report();
    if (!m_progress.isTried())
    {
        if (!tryMoves() || isWaitingForDisk())
            return report();
        m_journal.tried();
    }
    if (!bringAllHome())
        return report();
    dropIdleNotes();
    removeEmptyFolders();
    if (m_isStopped)
        return report();
    for (const std::string& complaint : syncDisks(m_progress))
        m_journal.note(complaint);
    m_journal.finished();
    return report();
}

bool MoveRunner::isStopped()
{
    m_isStopped = m_isStopped || (m_events.stop && m_events.stop());
    return m_isStopped;
}

/// A run of which nothing was done, and whose files are not where they were, can be done when their
/// disk is back.
bool MoveRunner::isWaitingForDisk()
{
    if (!m_isSourceAway || !m_progress.moves().empty())
        return false;
    m_notes.push_back("The run stays open, since no file could be moved and there is none where "
                      "files were: their disk may be away");
    return true;
}

/// Where the removals begin that end the plan.
std::size_t MoveRunner::lastPhase() const
{
    std::size_t step = m_progress.plannedSteps();
    while (step > 0 && m_progress.step(step - 1).kind == Kind::removeFolder)
        --step;
    return step;
}

/// The open steps in the order of the journal, which is one in which each move finds its place
/// free. What failed before the run was taken up again comes last, so that it does not stand in the
/// way of what has a better chance.
bool MoveRunner::tryMoves()
{
    std::vector<std::size_t> steps;
    std::vector<std::size_t> again;
    std::unordered_set<std::size_t> failedFiles;
    const std::size_t end = lastPhase();
    for (std::size_t number = 0; number < end; ++number)
    {
        if (!m_progress.isOpen(number))
            continue;
        const MoveStep& step = m_progress.step(number);
        const bool isMove = step.kind == Kind::move;
        const bool hasFailed = m_progress.state(number) == State::failed ||
                               (isMove && failedFiles.contains(step.file));
        if (hasFailed && isMove)
            failedFiles.insert(step.file);
        (hasFailed ? again : steps).push_back(number);
    }
    steps.insert(steps.end(), again.begin(), again.end());
    return tryInBatches(steps);
}

bool MoveRunner::tryInBatches(const std::vector<std::size_t>& steps)
{
    for (auto from = steps.begin(); from != steps.end();)
    {
        const auto left = static_cast<std::size_t>(steps.end() - from);
        const auto to = from + static_cast<std::ptrdiff_t>(std::min(left, batchSize));
        if (!tryBatch({from, to}))
            return false;
        from = to;
    }
    return true;
}

bool MoveRunner::tryBatch(const std::vector<std::size_t>& batch)
{
    if (isStopped())
        return false;
    m_journal.begin(batch);
    for (const std::size_t step : batch)
    {
        if (isStopped())
            return false;
        perform(step);
    }
    return !m_isStopped;
}

void MoveRunner::perform(std::size_t step)
{
    switch (m_progress.step(step).kind)
    {
    case Kind::makeFolder:
        return makeFolder(step);
    case Kind::move:
        return move(step);
    case Kind::removeFolder:
        return removeFolder(step);
    case Kind::writeNote:
        return writeNote(step);
    case Kind::removeNote:
        return removeNote(step);
    }
}

void MoveRunner::writeNote(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const StepDisk::Outcome outcome = StepDisk::writeNote(step.to, step.text);
    if (outcome.error == 0)
        return m_journal.done(number);
    m_fileTroubles[step.file] = "the note " + step.to + " cannot be written: " + outcome.why;
    m_journal.failed(number, outcome.why);
    keepCount(outcome.error);
}

void MoveRunner::removeNote(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const StepDisk::Outcome outcome = m_progress.place(step.file) == m_progress.file(step.file).to
                                          ? StepDisk::removeNote(step.to, step.text)
                                          : StepDisk::Outcome{EBUSY, "its file is still there"};
    if (outcome.error == 0)
        return m_journal.done(number);
    m_journal.skipped(number);
}

/// What was noted of a file that then did not move.
void MoveRunner::dropIdleNotes()
{
    const std::size_t count = m_progress.plannedSteps();
    for (std::size_t number = 0; number < count; ++number)
    {
        const MoveStep step = m_progress.step(number);
        if (step.kind == Kind::writeNote && m_progress.state(number) == State::done &&
            m_progress.lastMove(step.file) == MoveProgress::npos)
            (void)StepDisk::removeNote(step.to, step.text);
    }
}

void MoveRunner::makeFolder(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const StepDisk::Outcome outcome = m_disk.makeFolder(step.to, step.rights);
    if (outcome.error == 0)
        return m_journal.done(number);
    if (outcome.error == EEXIST)
        return m_journal.skipped(number);
    const auto above = m_folderTroubles.find(parentOf(step.to));
    if (above != m_folderTroubles.end())
        m_folderTroubles[step.to] = above->second;
    else
        m_folderTroubles[step.to] =
            (outcome.error == ENOENT ? "" : "its folder cannot be made: ") + outcome.why;
    m_journal.failed(number, outcome.why);
    keepCount(outcome.error);
}

void MoveRunner::move(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const MovedFile& file = m_progress.file(step.file);
    const StepDisk::Outcome outcome = tryMove(number);
    if (outcome.error == ECANCELED)
    {
        m_isStopped = true;
        return;
    }
    if (outcome.error == 0)
        noteDone(number);
    else
    {
        m_fileTroubles[step.file] = reasonOf(step, outcome);
        m_stuckPlaces.insert(m_progress.place(step.file));
        m_journal.failed(number, m_fileTroubles[step.file]);
    }
    m_isSourceAway = m_isSourceAway || outcome.isSourceAway;
    keepCount(outcome.error);
    if (step.to != file.to)
        return;
    ++m_doneFiles;
    if (m_events.progress)
        m_events.progress(m_doneFiles, m_progress.files().size(), file.from);
}

StepDisk::Outcome MoveRunner::tryMove(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const MovedFile& file = m_progress.file(step.file);
    // One that could not even leave its first place, or has no note, has its reason already.
    if (const auto trouble = m_fileTroubles.find(step.file); trouble != m_fileTroubles.end())
        return {EBUSY, trouble->second};
    if (m_progress.place(step.file) != step.from)
        return {EBUSY, m_progress.why(number)};
    const std::string key = sameNameKey(step.to);
    const auto taken = m_taken.find(key);
    const std::size_t own = sameNameKey(step.from) == key ? 1 : 0;
    // The collection takes such names for one, and so does many a disk.
    if (file.deed != MovedFile::Deed::removeCopy && taken != m_taken.end() && taken->second > own)
        return {EEXIST, "its place is still taken by a file that does not move"};
    return m_disk.move(step,
                       {file,
                        m_progress.mark(step.file),
                        MoveRecovery::stagingName(m_progress.start().id, number),
                        [&](const FileMark& copy) { m_journal.copied(number, copy); },
                        m_events.stop});
}

void MoveRunner::noteDone(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    const MovedFile::Deed deed = m_progress.file(step.file).deed;
    if (deed != MovedFile::Deed::copy)
        --m_taken[sameNameKey(step.from)];
    if (deed != MovedFile::Deed::removeCopy)
        ++m_taken[sameNameKey(step.to)];
    m_journal.done(number);
}

std::string MoveRunner::reasonOf(const MoveStep& step, const StepDisk::Outcome& outcome) const
{
    const auto folder = m_folderTroubles.find(parentOf(step.to));
    if (folder != m_folderTroubles.end())
        return folder->second;
    if (outcome.error == EEXIST && m_stuckPlaces.contains(step.to))
        return "its place is still taken by a file that does not move";
    return outcome.why;
}

void MoveRunner::keepCount(int error)
{
    const bool isLasting =
        std::find(lastingErrors.begin(), lastingErrors.end(), error) != lastingErrors.end();
    m_errorsInRow = !isLasting ? 0 : error == m_lastError ? m_errorsInRow + 1 : 1;
    m_lastError = error;
    if (m_errorsInRow < mostErrorsInRow)
        return;
    m_isStopped = true;
    m_notes.push_back("The run was stopped, since one file after another met the same trouble: " +
                      errorWords(error));
}

bool MoveRunner::bringAllHome()
{
    Occupants occupants;
    std::vector<std::size_t> waiting;
    for (std::size_t i = 0; i < m_progress.files().size(); ++i)
    {
        const std::size_t last = m_progress.lastMove(i);
        if (last == MoveProgress::npos || m_progress.file(i).deed != MovedFile::Deed::move)
            continue;
        occupants.emplace(sameNameKey(m_progress.place(i)), i);
        if (m_progress.isWaiting(i))
            waiting.push_back(i);
    }
    for (const std::size_t file : waiting)
        bringHome(file, occupants);
    return std::none_of(
        waiting.begin(), waiting.end(), [this](std::size_t file) { return isStillWaiting(file); });
}

/// Whether the file still lies under its temporary name, or on a disk that is away.
bool MoveRunner::isStillWaiting(std::size_t file) const
{
    if (!m_progress.isWaiting(file))
        return false;
    const std::string& place = m_progress.place(file);
    return !disk::isNothingAt(place) || disk::isNothingAt(parentOf(place));
}

/// A file that could not leave its temporary name for its last one. Whoever came to its first place
/// meanwhile goes back first.
///
/// Example: p, q and r change places in a ring, and p waits under .qo-ID-0. Then q goes to p, r
/// goes to q, and .qo-ID-0 cannot go to r, where somebody has just put a file. The first place of p
/// is taken by q, that of q by r, that of r by none of the run. So r would have to go back first,
/// then q, then p. Since the place of r is not free, all stay, and p comes out beside its first
/// place under a free name, which a note says.
void MoveRunner::bringHome(std::size_t file, Occupants& occupants)
{
    const std::string& home = m_progress.file(file).from;
    const std::string waited = m_progress.place(file);
    if (!takeAsItIs(file))
    {
        m_notes.push_back(home + " was " + waited + " for a while, and nothing is there now");
        return;
    }
    std::vector<std::size_t> others;
    std::string place = home;
    for (auto found = occupants.find(sameNameKey(place));
         found != occupants.end() && found->second != file && others.size() < occupants.size();
         found = occupants.find(sameNameKey(place)))
    {
        others.push_back(found->second);
        place = m_progress.file(found->second).from;
    }
    bool isFree = disk::isNothingAt(place);
    for (; isFree && !others.empty(); others.pop_back())
        isFree = moveBack(others.back(), m_progress.file(others.back()).from, occupants);
    if (isFree && moveBack(file, home, occupants))
        return;
    const std::string beside = toSystemPath(freeName(fromSystemPath(home)));
    if (moveBack(file, beside, occupants))
        m_journal.note(home + " is now " + beside + ", since its place was taken");
    else
        m_notes.push_back("The run stays open, since " + home + " is now " + waited +
                          " and could not be given back its name");
}

/// Whoever has changed a file under its temporary name wants it back as it is. False when there is
/// none.
bool MoveRunner::takeAsItIs(std::size_t file)
{
    FileMark now;
    bool isRegular = false;
    if (markOf(m_progress.place(file), now, isRegular) != 0)
        return false;
    if (isRegular && now != m_progress.mark(file))
        m_journal.known(file, now);
    return true;
}

bool MoveRunner::moveBack(std::size_t file, const std::string& place, Occupants& occupants)
{
    const std::string from = m_progress.place(file);
    const std::size_t number = m_journal.addStep({Kind::move, file, from, place});
    m_journal.begin({number});
    // Back to a disk that the file has left is no matter of where it was going.
    MovedFile home = m_progress.file(file);
    home.targetDevice = 0;
    const auto outcome = m_disk.move(m_progress.step(number),
                                     {home,
                                      m_progress.mark(file),
                                      MoveRecovery::stagingName(m_progress.start().id, number),
                                      [&](const FileMark& copy) { m_journal.copied(number, copy); },
                                      {}});
    if (outcome.error != 0)
    {
        m_journal.failed(number, outcome.why);
        return false;
    }
    noteDone(number);
    occupants.erase(sameNameKey(from));
    occupants.emplace(sameNameKey(place), file);
    return true;
}

void MoveRunner::findEmptiedFolders()
{
    for (const std::size_t move : m_progress.moves())
        m_emptied.insert(parentOf(m_progress.step(move).from));
    for (std::size_t number = 0; number < m_progress.plannedSteps(); ++number)
    {
        const MoveStep& step = m_progress.step(number);
        const bool isDone = m_progress.state(number) == State::done;
        if (step.kind == Kind::makeFolder ? isDone : step.kind == Kind::removeFolder && step.isOurs)
            m_emptied.insert(step.to);
        if (step.kind == Kind::removeFolder && isDone)
            m_emptied.insert(parentOf(step.to));
    }
}

void MoveRunner::removeEmptyFolders()
{
    findEmptiedFolders();
    // A folder may run empty by the removal of those in it.
    std::unordered_set<std::string> candidates = m_emptied;
    std::vector<std::size_t> steps;
    for (std::size_t number = lastPhase(); number < m_progress.plannedSteps(); ++number)
    {
        const std::string& folder = m_progress.step(number).to;
        if (!m_progress.isOpen(number) || !candidates.contains(folder))
            continue;
        candidates.insert(parentOf(folder));
        steps.push_back(number);
    }
    tryInBatches(steps);
}

void MoveRunner::removeFolder(std::size_t number)
{
    const MoveStep& step = m_progress.step(number);
    StepDisk::Outcome outcome{ENOTEMPTY, {}};
    if (step.isOurs || m_emptied.contains(step.to))
        outcome = StepDisk::removeFolder(step.to);
    if (outcome.error == 0)
    {
        m_emptied.insert(parentOf(step.to));
        return m_journal.done(number);
    }
    m_journal.skipped(number);
    // A disk that ran empty stays where it is mounted.
    if (outcome.error != ENOTEMPTY && outcome.error != ENOENT && outcome.error != EBUSY)
        m_journal.note("The empty folder " + step.to + " cannot be removed: " + outcome.why);
}

std::vector<std::string> MoveRunner::syncDisks(const MoveProgress& progress)
{
    std::map<std::uint64_t, std::string> folders; // by device
    for (std::size_t i = 0; i < progress.files().size(); ++i)
    {
        if (progress.lastMove(i) == MoveProgress::npos)
            continue;
        folders.emplace(progress.file(i).mark.device, parentOf(progress.file(i).from));
        folders.emplace(progress.mark(i).device, parentOf(progress.place(i)));
    }
    std::vector<std::string> complaints;
    for (auto& [device, folder] : folders)
    {
        int error = disk::syncAll(folder);
        for (; error == ENOENT && folder != "/"; error = disk::syncAll(folder))
            folder = parentOf(folder);
        if (error != 0)
            complaints.push_back("It is not certain that the disk of " + folder +
                                 " has all: " + errorWords(error));
    }
    return complaints;
}

MoveRun::Report MoveRunner::report() const
{
    MoveRun::Report report;
    report.moved = m_progress.arrivedFiles();
    for (const MoveProgress::Refusal& refusal : m_progress.start().refusals)
        report.failures.push_back({refusal.from, refusal.to, refusal.why});
    std::unordered_map<std::size_t, std::string> reasons;
    for (std::size_t number = 0; number < m_progress.stepCount(); ++number)
    {
        const MoveStep& step = m_progress.step(number);
        if (step.kind == Kind::move && m_progress.state(number) == State::failed)
            reasons.emplace(step.file, m_progress.why(number));
    }
    for (std::size_t i = 0; i < m_progress.files().size(); ++i)
    {
        const MovedFile& file = m_progress.file(i);
        if (m_progress.place(i) == file.to)
            continue;
        if (reasons.contains(i))
            report.failures.push_back({file.from, file.to, reasons[i]});
        else if (m_progress.isTried())
            report.failures.push_back(
                {file.from, file.to, "it went back, since another file needed its place"});
    }
    report.isFinished = m_progress.isFinished();
    report.notes = m_progress.notes();
    report.notes.insert(report.notes.end(), m_notes.begin(), m_notes.end());
    return report;
}
} // namespace qo::host
