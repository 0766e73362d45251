#include "core/runs/RunChecks.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/plan/PlanBuilder.h"
#include "core/roots/RootGuard.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

namespace qo::host::check
{
namespace
{
/// "" for a place in none.
CString rootOf(const std::string& place)
{
    const auto root = ownCollection().getRootDir(CQoCollPath(fromSystemPath(place)));
    return root ? root->getPath().toString() : CString();
}

[[noreturn]] void refuse(const ReorganizePlan& plan, const std::string& path)
{
    throw HostError(ExitCode::failed,
                    "the plan " + plan.id + " cannot be carried out: " + path +
                        " is in no root folder of the collection");
}

[[noreturn]] void refuse(const MoveProgress::Start& start, const std::string& path)
{
    throw HostError(ExitCode::failed,
                    "the run " + start.id + " cannot go on: " + path +
                        " is in no folder that it may use");
}

bool isInAny(const std::string& path, const std::vector<std::string>& folders)
{
    return std::any_of(folders.begin(),
                       folders.end(),
                       [&](const std::string& folder) { return isBelow(path, folder); });
}

/// A disk of which the run before has taken the last file is there although it is empty, and the
/// collection has nothing in it that could be lost.
bool isEmptyDisk(const CString& folder)
{
    const std::string path = toSystemPath(folder);
    NameInfo info;
    NameInfo above;
    return disk::lookAtFolder(path, info) == 0 && disk::lookAtFolder(parentOf(path), above) == 0 &&
           info.mount != above.mount && countFilesBelow(Session::databasePath(), folder) == 0;
}

/// Where a folder really lies, or the nearest above it that is there.
std::string realPlace(std::string path)
{
    for (;; path = parentOf(path))
    {
        const std::string real = resolvedPath(path);
        if (!real.empty() || path == "/")
            return real;
    }
}
} // namespace

std::vector<std::string> rootFolders()
{
    CollPathArray all;
    ownCollection().getRootDirs(all);
    std::vector<std::string> folders;
    for (const CQoCollPath& root : all)
        folders.push_back(toSystemPath(root.toString()));
    return folders;
}

void rootsAreThere(const std::vector<std::string>& places)
{
    std::set<CString> roots;
    for (const std::string& place : places)
        roots.insert(rootOf(place));
    CollPathArray all;
    ownCollection().getRootDirs(all);
    CStringArray asked;
    for (const CQoCollPath& root : all)
    {
        if (places.empty() || roots.contains(root.toString()))
            asked.Add(root.toString());
    }
    std::vector<RootProblem> problems = checkRoots(asked, Session::databasePath());
    std::erase_if(problems, [](const RootProblem& problem) { return isEmptyDisk(problem.folder); });
    std::string away = rootSentences(problems, "is away");
    for (const FarFolder& folder : HostStore(Session::folder()).folders())
    {
        const std::string path = toSystemPath(folder.path);
        const bool isUsed = std::any_of(places.begin(),
                                        places.end(),
                                        [&](const std::string& place)
                                        { return place == path || isBelow(place, path); });
        const std::string cause = isUsed ? whyAway(folder) : std::string();
        if (!cause.empty())
            away += "the disk of the folder " + path + " is away: " + cause + sentenceBreak;
    }
    if (!away.empty())
        throw HostError(ExitCode::away, away + "nothing was moved");
}

void ownFolders(const ReorganizePlan& plan)
{
    const std::vector<std::string> roots = rootFolders();
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move)
            continue;
        for (const std::string& path : {file.from, file.to})
        {
            if (rootOf(path).IsEmpty() || !isInAny(path, roots))
                refuse(plan, path);
        }
    }
    for (const std::string& target : plan.targets)
    {
        const CString root = rootOf(target);
        const std::string realRoot = root.IsEmpty() ? "" : resolvedPath(toSystemPath(root));
        const std::string real = realPlace(target);
        if (realRoot.empty() || (real != realRoot && !isBelow(real, realRoot)))
            refuse(plan, target);
    }
}

MoveRun::Bounds boundsOf(const MoveProgress::Start& start, const Trash& trash)
{
    const std::vector<std::string> roots = rootFolders();
    std::set<std::string> outside;
    for (const MovedFile& file : start.files)
    {
        for (const auto& [path, side] : {std::pair(&file.from, MovedFile::Outside::source),
                                         std::pair(&file.to, MovedFile::Outside::target)})
        {
            if (file.outside != side && !isInAny(*path, roots))
                refuse(start, *path);
            if (file.outside != side)
                continue;
            if (start.kind == "rm" && !trash.canHold(*path))
                refuse(start, *path);
            outside.insert(parentOf(*path));
        }
    }
    const auto isOutside = [&](const std::string& folder) { return outside.contains(folder); };
    for (const MoveStep& step : start.steps)
    {
        const bool isNote =
            step.kind == MoveStep::Kind::writeNote || step.kind == MoveStep::Kind::removeNote;
        if (isNote)
        {
            const MovedFile& file = start.files[step.file];
            if (step.to != Trash::noteOf(file.from) && step.to != Trash::noteOf(file.to))
                refuse(start, step.to);
            continue;
        }
        const bool isMove = step.kind == MoveStep::Kind::move;
        if (isMove && !isInAny(step.from, roots) && !isOutside(parentOf(step.from)))
            refuse(start, step.from);
        if (isInAny(step.to, roots) || (isMove && isOutside(parentOf(step.to))))
            continue;
        if (isMove || start.kind != "add")
            refuse(start, step.to);
        outside.insert(parentOf(step.to)); // folders of what was added from elsewhere
    }
    std::vector<std::string> all = roots;
    all.insert(all.end(), outside.begin(), outside.end());
    return {all, all};
}

std::vector<MoveRun::Failure> bringUpToDate(ReorganizePlan& plan)
{
    // The root folders are what counts, not what somebody may have written into the plan.
    const std::vector<std::string> roots = rootFolders();
    std::erase_if(plan.keptFolders,
                  [&](const std::string& folder) { return !isInAny(folder, roots); });
    for (const std::string& folder : PlanBuilder::keptFolders())
    {
        if (std::find(plan.keptFolders.begin(), plan.keptFolders.end(), folder) ==
            plan.keptFolders.end())
            plan.keptFolders.push_back(folder);
    }
    std::unordered_set<std::u16string> leaving;
    for (PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move)
            continue;
        leaving.insert(pathKey(fromSystemPath(file.from)));
        if (const QoFileDbItemPtr record = CollectionChanges::recordOf(fromSystemPath(file.from)))
            file.recordId = toUtf8(record->velmoraId);
    }
    std::vector<MoveRun::Failure> refused;
    for (PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move)
            continue;
        const CString to = fromSystemPath(file.to);
        const QoFileDbItemPtr other = CollectionChanges::recordOf(to);
        if (!other || leaving.contains(pathKey(to)) || !nameExists(other->path))
            continue;
        file.verdict = PlannedFile::Verdict::refused;
        file.reason = "the collection takes " + shownPath(other->path) + " for the same name";
        refused.push_back({file.from, file.to, file.reason});
    }
    return refused;
}
} // namespace qo::host::check
