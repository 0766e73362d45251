#include "core/load/LossGuard.h"

#include "core/base/HostFiles.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

namespace qo::host
{
namespace
{
constexpr std::size_t greatShare = 10; ///< one file in so many
constexpr std::size_t greatCount = 20;

using SizeAndTime = std::pair<std::int64_t, std::int64_t>;

bool isBelowAny(const CString& path, const std::vector<RootProblem>& problems)
{
    return std::any_of(problems.begin(),
                       problems.end(),
                       [&path](const RootProblem& problem) {
                           return path == problem.folder ||
                                  path.view().starts_with(addBackslash(problem.folder).view());
                       });
}
} // namespace

LossGuard::LossGuard(const QoFileDbItemArray& records, const std::vector<DiskChange>& changes)
    : m_records(records)
{
    std::map<SizeAndTime, int> arrived;
    std::unordered_map<CString, const DiskChange*> leaving;
    for (const DiskChange& change : changes)
    {
        if (change.isNew)
            ++arrived[{change.seen->size, toTicks(change.seen->modified)}];
        else if (change.action == CQoFileChangeInfo::remove)
            leaving.emplace(change.path, &change);
    }
    m_leaving = leaving.size();
    if (leaving.empty())
        return;
    for (const QoFileDbItemPtr& record : records)
    {
        if (!leaving.contains(record->path))
            continue;
        const auto twin = arrived.find({record->size, toTicks(record->modifTime)});
        const bool hasMoved = twin != arrived.end() && twin->second > 0;
        if (hasMoved)
            --twin->second;
        else if (!fileSystem().exists(CQoUtils::getRealPath(record->path)))
            m_lost.push_back(record->path);
    }
}

bool LossGuard::isGreatLoss() const
{
    return isGreatLoss(m_leaving, static_cast<std::size_t>(m_records.GetSize()));
}

bool LossGuard::isGreatLoss(std::size_t leaving, std::size_t all)
{
    return leaving > greatCount && leaving * greatShare > all;
}

std::vector<RootProblem> LossGuard::findAway(const std::vector<FarFolder>& known) const
{
    std::vector<RootProblem> problems;
    if (m_lost.empty())
        return problems;
    addAwayDisks(known, problems);
    addEmptied(problems);
    return problems;
}

void LossGuard::addAwayDisks(const std::vector<FarFolder>& known,
                             std::vector<RootProblem>& problems) const
{
    for (const FarFolder& folder : known)
    {
        const CString inside = addBackslash(folder.path);
        const bool losesFiles = std::any_of(m_lost.begin(),
                                            m_lost.end(),
                                            [&](const CString& path)
                                            { return path.view().starts_with(inside.view()); });
        const std::string cause = losesFiles ? whyAway(folder) : std::string();
        if (!cause.empty() && !isBelowAny(folder.path, problems))
            problems.push_back({folder.path, cause});
    }
}

void LossGuard::addEmptied(std::vector<RootProblem>& problems) const
{
    // By path, so that a folder comes before those in it.
    std::map<CString, Count> folders;
    const auto forEachAbove = [](const CString& path, const auto& visit)
    {
        for (int end = path.GetLength(); (end = path.Left(end).ReverseFind(u'\\')) > 0;)
        {
            if (!visit(path.Left(end)))
                return;
        }
    };
    for (const CString& path : m_lost)
        forEachAbove(path,
                     [&](const CString& folder)
                     {
                         ++folders[folder].lost;
                         return true;
                     });
    for (const QoFileDbItemPtr& record : m_records)
        forEachAbove(record->path,
                     [&](const CString& folder)
                     {
                         const auto counted = folders.find(folder);
                         if (counted != folders.end())
                             ++counted->second.known;
                         return true;
                     });
    for (const auto& [folder, count] : folders)
    {
        if (count.lost <= handful || count.lost != count.known || isBelowAny(folder, problems) ||
            !CQoCollection::m_ownCollection.isDirInCollection(CQoCollPath(folder)) ||
            !fileSystem().isDirectory(CQoUtils::getRealPath(folder)))
            continue;
        problems.push_back({folder,
                            "it is there, but none of the " + std::to_string(count.known) +
                                " files that the collection has in it"});
    }
}
} // namespace qo::host
