#include "core/runs/RunChecks.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/plan/PlanBuilder.h"
#include "core/roots/RootGuard.h"
#include "core/session/Session.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <set>
#include <unordered_set>

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
    const std::vector<RootProblem> problems = checkRoots(asked, Session::databasePath());
    if (!problems.empty())
        throw HostError(ExitCode::away, rootSentences(problems, "is away") + "nothing was moved");
}

void ownFolders(const ReorganizePlan& plan)
{
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != PlannedFile::Verdict::move)
            continue;
        for (const std::string& path : {file.from, file.to})
        {
            if (rootOf(path).IsEmpty())
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

std::vector<MoveRun::Failure> bringUpToDate(ReorganizePlan& plan)
{
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
