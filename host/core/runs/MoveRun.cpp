#include "core/runs/MoveRun.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/SystemPath.h"
#include "core/plan/MoveText.h"
#include "core/runs/MoveJournal.h"
#include "core/runs/MoveRecovery.h"
#include "core/runs/MoveRunner.h"
#include "core/runs/MoveSteps.h"
#include "core/runs/MoveSummary.h"
#include "core/runs/MoveUndo.h"

#include <algorithm>
#include <set>
#include <unordered_set>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using FolderSet = std::set<std::string>;

[[noreturn]] void refusePlan(const ReorganizePlan& plan, const std::string& fault)
{
    throw HostError(ExitCode::failed, "the plan " + plan.id + " cannot be carried out: " + fault);
}

bool isBelowAny(const std::string& path, const std::vector<std::string>& folders)
{
    return std::any_of(folders.begin(),
                       folders.end(),
                       [&](const std::string& folder) { return isBelow(path, folder); });
}

std::vector<MovedFile> filesOf(const ReorganizePlan& plan)
{
    std::vector<MovedFile> files;
    std::unordered_set<std::string> sources;
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move || file.from == file.to)
            continue;
        if (const std::string fault = plan.fault(file); !fault.empty())
            refusePlan(plan, "the line of " + file.from + " " + fault);
        if (!isBelowAny(file.from, plan.targets) && !isBelowAny(file.from, plan.keptFolders))
            refusePlan(plan,
                       "the line of " + file.from + " is about no file in the folders of the plan");
        if (!sources.insert(file.from).second)
            refusePlan(plan, "it moves " + file.from + " twice");
        MovedFile moved{file.from, file.to, file.mark, file.recordId};
        moved.targetDevice = file.targetDevice;
        files.push_back(std::move(moved));
    }
    return files;
}

bool isStandingFolder(const std::string& path)
{
    NameInfo info;
    return disk::lookAtFolder(path, info) == 0;
}

/// A target that is not there, with the folders above it up to one that stands. None when the kept
/// folder that it lies in is not there either, or when files of the plan lie in it: its disk is
/// away.
FolderSet foldersOfTarget(const std::string& target, const ReorganizePlan& plan)
{
    const auto& kept = plan.keptFolders;
    if (std::any_of(plan.files.begin(),
                    plan.files.end(),
                    [&](const PlannedFile& file) { return isBelow(file.from, target); }))
        return {};
    FolderSet folders;
    for (std::string folder = target; !isStandingFolder(folder); folder = parentOf(folder))
    {
        const bool isKept = std::find(kept.begin(), kept.end(), folder) != kept.end();
        if ((isKept && folder != target) || !isBelowAny(folder, kept))
            return {};
        folders.insert(folder);
    }
    return folders;
}

/// The folders that are not there and are to be made: below the targets, and those of the targets.
FolderSet missingFolders(const std::vector<MovedFile>& files, const ReorganizePlan& plan)
{
    FolderSet missing;
    std::unordered_set<std::string> seen;
    for (const MovedFile& file : files)
    {
        for (std::string folder = parentOf(file.to);
             isBelowAny(folder, plan.targets) && seen.insert(folder).second;
             folder = parentOf(folder))
        {
            if (!isStandingFolder(folder))
                missing.insert(folder);
        }
    }
    for (const std::string& target : plan.targets)
    {
        const bool isNeeded =
            std::any_of(files.begin(),
                        files.end(),
                        [&](const MovedFile& file) { return isBelow(file.to, target); });
        if (isNeeded)
            missing.merge(foldersOfTarget(target, plan));
    }
    return missing;
}

/// The folders that may run empty: those of the files and of what will be made, up to the first
/// that is kept. What is below no such folder is left alone.
FolderSet removableFolders(const std::vector<MovedFile>& files,
                           const FolderSet& made,
                           const ReorganizePlan& plan)
{
    std::vector<std::string> kept = plan.keptFolders;
    kept.insert(kept.end(), plan.targets.begin(), plan.targets.end());
    const std::unordered_set<std::string> isKept(kept.begin(), kept.end());
    FolderSet removable;
    std::unordered_set<std::string> seen;
    const auto add = [&](std::string folder)
    {
        for (; !isKept.contains(folder) && seen.insert(folder).second && isBelowAny(folder, kept);
             folder = parentOf(folder))
            removable.insert(folder);
    };
    for (const MovedFile& file : files)
        add(parentOf(file.from));
    for (const std::string& folder : made)
        add(folder);
    return removable;
}

std::vector<MoveStep> folderSteps(const FolderSet& folders, Kind kind)
{
    std::vector<MoveStep> steps;
    for (const std::string& folder : folders)
        steps.push_back({kind, 0, {}, folder});
    return steps;
}

/// Throws when there are files that should go back and none can.
void needFiles(const MoveProgress::Start& undo)
{
    if (!undo.files.empty() || undo.refusals.empty())
        return;
    const MoveProgress::Refusal& first = undo.refusals.front();
    const std::size_t others = undo.refusals.size() - 1;
    throw HostError(
        ExitCode::failed,
        "the run " + undo.undoes + " cannot be taken back: " + first.from +
            " cannot go back because " + first.why +
            (others > 0 ? ", and neither can " + std::to_string(others) + " more" : ""));
}

/// The name of the journal without its folder and end, as far as it can be part of names.
std::string runIdOf(const std::string& journal)
{
    std::string name = journal.substr(journal.rfind('/') + 1);
    name = name.substr(0, name.find('.'));
    if (!movetext::isRunId(name))
        throw HostError(ExitCode::failed,
                        "the journal " + journal + " cannot be made: its name cannot be an id");
    return name;
}
} // namespace

MoveRun::MoveRun(std::unique_ptr<MoveJournal> journal) : m_journal(std::move(journal)) {}

MoveRun::~MoveRun() = default;

std::unique_ptr<MoveRun> MoveRun::begin(const std::string& journal, const ReorganizePlan& plan)
{
    if (!movetext::isRunId(plan.id))
        refusePlan(plan, "its id cannot be one");
    MoveProgress::Start start;
    start.id = plan.id;
    start.targets = plan.targets;
    start.keptFolders = plan.keptFolders;
    start.files = filesOf(plan);
    const FolderSet missing = missingFolders(start.files, plan);
    start.steps = MoveSteps::inOrder(
        start.files,
        folderSteps(missing, Kind::makeFolder),
        folderSteps(removableFolders(start.files, missing, plan), Kind::removeFolder),
        plan.id);
    return begin(journal, std::move(start));
}

std::unique_ptr<MoveRun> MoveRun::begin(const std::string& journal, MoveProgress::Start start)
{
    return std::unique_ptr<MoveRun>(new MoveRun(MoveJournal::make(journal, std::move(start))));
}

std::unique_ptr<MoveRun> MoveRun::beginUndo(const std::string& journal,
                                            const std::string& ofJournal)
{
    const std::unique_ptr<MoveRun> first = open(ofJournal);
    MoveProgress::Start start = MoveUndo::startFor(first->m_journal->progress(), runIdOf(journal));
    needFiles(start);
    auto undo = std::unique_ptr<MoveRun>(new MoveRun(MoveJournal::make(journal, std::move(start))));
    // Nobody shall go on with what is being taken back.
    if (!first->isFinished())
        first->m_journal->finished();
    return undo;
}

MoveProgress::Start MoveRun::startOfUndo(const std::string& ofJournal)
{
    MoveProgress::Start start = MoveUndo::startFor(MoveSummary::progressOf(ofJournal), {});
    needFiles(start);
    return start;
}

std::unique_ptr<MoveRun> MoveRun::open(const std::string& journal)
{
    auto opened = MoveJournal::open(journal);
    MoveRecovery(*opened).settle();
    return std::unique_ptr<MoveRun>(new MoveRun(std::move(opened)));
}

MoveRun::Report MoveRun::run(const Events& events)
{
    // A run before this one may have been stopped half-way.
    MoveRecovery(*m_journal).settle();
    m_isSynced = false;
    return MoveRunner(*m_journal, events).run();
}

bool MoveRun::isFinished() const
{
    return m_journal->progress().isFinished();
}

std::vector<MoveRun::Place> MoveRun::notApplied() const
{
    const MoveProgress& progress = m_journal->progress();
    std::vector<Place> places;
    std::unordered_set<std::size_t> seen;
    for (std::size_t i = progress.applied(); i < progress.moves().size(); ++i)
    {
        const MoveStep& first = progress.step(progress.moves()[i]);
        if (seen.insert(first.file).second && first.from != progress.place(first.file))
            places.push_back({first.file, first.from, progress.place(first.file)});
    }
    return places;
}

void MoveRun::sync()
{
    for (const std::string& complaint : MoveRunner::syncDisks(m_journal->progress()))
        m_journal->note(complaint);
    m_isSynced = true;
}

void MoveRun::setApplied()
{
    // What the collection knows must not be lost in a power cut.
    if (!m_isSynced)
        sync();
    m_journal->applied();
}

const MoveProgress::Start& MoveRun::start() const
{
    return m_journal->progress().start();
}

bool MoveRun::dropIfUntouched()
{
    const MoveProgress& progress = m_journal->progress();
    for (std::size_t step = 0; step < progress.stepCount(); ++step)
    {
        if (progress.state(step) == MoveProgress::State::done)
            return false;
    }
    m_journal->finished();
    return true;
}

bool MoveRun::hasArrived(std::size_t file) const
{
    const MoveProgress& progress = m_journal->progress();
    return progress.place(file) == progress.file(file).to;
}

std::size_t MoveRun::moved() const
{
    return m_journal->progress().arrivedFiles();
}

std::size_t MoveRun::refused() const
{
    const MoveProgress& progress = m_journal->progress();
    return progress.start().refusals.size() + progress.files().size() - progress.arrived();
}

std::string MoveRun::undoes() const
{
    return m_journal->progress().start().undoes;
}
} // namespace qo::host
