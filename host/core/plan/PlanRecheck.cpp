#include "core/plan/PlanRecheck.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"

#include <cerrno>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace qo::host
{
namespace
{
using Verdict = PlannedFile::Verdict;

/// The places of the files that are to move, by their keys.
struct Places
{
    std::unordered_set<std::string> sources;
    std::unordered_map<std::string, const PlannedFile*> targets; ///< the first that wants each
    std::unordered_set<std::string> folders;                     ///< that targets lie in
};

Places placesOf(const ReorganizePlan& plan)
{
    Places places;
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != Verdict::move)
            continue;
        places.sources.insert(sameNameKey(file.from));
        std::string key = sameNameKey(file.to);
        places.targets.emplace(key, &file);
        while (key.size() > 1 && places.folders.insert(key = parentOf(key)).second)
        {
        }
    }
    return places;
}

/// Why the file cannot move now; "" when it can.
std::string whyNot(const PlannedFile& file, const Places& places)
{
    const std::string key = sameNameKey(file.to);
    if (const PlannedFile* const first = places.targets.at(key); first != &file)
        return first->from + " would go there too";
    if (places.folders.contains(key))
        return "other files need a folder of that name";
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
    const bool isTaken = error == 0 && !places.sources.contains(key) &&
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
    for (PlannedFile& file : plan.files)
    {
        if (file.verdict == Verdict::move && hasMoved(file))
        {
            file.verdict = Verdict::stay;
            file.reason = "it has moved already";
        }
    }
    // What has to stay keeps its place from others, which then have to stay too.
    std::unordered_set<std::string> staying;
    for (bool isFirst = true; isFirst || !staying.empty(); isFirst = false)
    {
        const std::unordered_set<std::string> before = std::exchange(staying, {});
        const Places places = placesOf(plan);
        for (PlannedFile& file : plan.files)
        {
            if (file.verdict != Verdict::move ||
                (!isFirst && !before.contains(sameNameKey(file.to))))
                continue;
            file.reason = whyNot(file, places);
            if (file.reason.empty())
                continue;
            file.verdict = Verdict::refused;
            staying.insert(sameNameKey(file.from));
        }
    }
}
} // namespace qo::host
