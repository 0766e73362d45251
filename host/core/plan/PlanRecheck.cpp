#include "core/plan/PlanRecheck.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/plan/TargetName.h"

#include <cerrno>
#include <string>
#include <unordered_set>

namespace qo::host
{
namespace
{
using Verdict = PlannedFile::Verdict;
using Sources = std::unordered_set<std::string>; // by their keys

Sources sourcesOf(const ReorganizePlan& plan)
{
    Sources sources;
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict == Verdict::move)
            sources.insert(sameNameKey(file.from));
    }
    return sources;
}

/// Why the file cannot move now; "" when it can.
std::string whyNot(const PlannedFile& file, const Sources& sources)
{
    FileMark mark;
    if (const int error = markOf(file.from, mark))
        return error == ENOENT ? "it is not there any more"
                               : "it cannot be looked at: " + errorWords(error);
    if (!(mark == file.mark))
        return "it has changed since the plan was made";
    FileMark other;
    const int error = markOf(file.to, other);
    if (error != 0 && error != ENOENT)
        return "its new place cannot be looked at: " + errorWords(error);
    const bool isTaken = error == 0 && !sources.contains(sameNameKey(file.to)) &&
                         (other.inode != mark.inode || other.device != mark.device);
    if (isTaken)
        return "there is something at its new place by now";
    const int noRight = disk::checkRights(file.from, file.to);
    return noRight == 0 ? std::string() : errorWords(noRight);
}

bool hasMoved(const PlannedFile& file)
{
    FileMark mark;
    return markOf(file.to, mark) == 0 && mark.isAlike(file.mark) &&
           markOf(file.from, mark) == ENOENT;
}
} // namespace

void recheck(ReorganizePlan& plan)
{
    const Sources sources = sourcesOf(plan);
    for (PlannedFile& file : plan.files)
    {
        if (file.verdict != Verdict::move)
            continue;
        if (hasMoved(file))
        {
            file.verdict = Verdict::stay;
            file.reason = "it has moved already";
            continue;
        }
        file.reason = whyNot(file, sources);
        file.verdict = file.reason.empty() ? Verdict::move : Verdict::refused;
    }
}
} // namespace qo::host
