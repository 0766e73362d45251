#include "core/plan/PlanConflicts.h"

#include "core/base/HostFiles.h"
#include "core/plan/TargetName.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <unordered_map>

namespace qo::host
{
namespace
{
using Verdict = PlannedFile::Verdict;

class Conflicts
{
public:
    Conflicts(std::vector<PlanCandidate>& candidates, DiskFolders& folders)
        : m_candidates(candidates), m_folders(folders)
    {
        m_sources.reserve(candidates.size());
        m_targets.reserve(candidates.size());
        for (PlanCandidate& candidate : candidates)
        {
            if (!candidate.track.IsEmpty())
                m_companions[candidate.track].push_back(&candidate);
            if (candidate.file.verdict != Verdict::move)
                continue;
            m_sources.emplace(candidate.from, &candidate);
            m_targets[sameNameKey(candidate.to)].push_back(&candidate);
        }
    }

    /// Example: 1 shall go to the place of 2, 2 to that of 3, and 3 to a name that a stranger has.
    /// 3 is refused for the stranger, then 2 because 3 stays in its place, then 1 because 2 does.
    /// Each refused file is asked once who wants its place, so the time grows with the files alone.
    void refuseAll()
    {
        for (auto& [key, sharers] : m_targets)
        {
            if (sharers.size() > 1)
                refuseSharers(sharers);
        }
        for (PlanCandidate& candidate : m_candidates)
        {
            if (candidate.file.verdict == Verdict::refused)
                m_staying.push_back(&candidate);
            refuseIfTaken(candidate);
        }
        while (!m_staying.empty())
        {
            const PlanCandidate& staying = *m_staying.back();
            m_staying.pop_back();
            refuseWhoWants(staying);
        }
    }

private:
    using Candidates = std::vector<PlanCandidate*>;

    void refuse(PlanCandidate& candidate, const std::string& reason)
    {
        if (candidate.file.verdict != Verdict::move)
            return;
        candidate.file.verdict = Verdict::refused;
        candidate.file.reason = reason;
        m_staying.push_back(&candidate);
    }

    void refuseSharers(const Candidates& sharers)
    {
        for (PlanCandidate* candidate : sharers)
        {
            const PlanCandidate& other = *sharers[candidate == sharers.front() ? 1 : 0];
            std::string reason = shownPath(other.from) + " would go ";
            reason += other.to == candidate->to
                          ? "there too"
                          : "to " + shownPath(other.to) +
                                ", which the collection takes for the same name";
            if (sharers.size() > 2)
                reason += ", and so would others";
            refuse(*candidate, reason);
        }
    }

    void refuseIfTaken(PlanCandidate& candidate)
    {
        if (candidate.file.verdict != Verdict::move)
            return;
        if (DiskFolders::isNewFolder(*candidate.folder, candidate.name))
            return refuse(candidate, "other files need a folder of that name");
        for (const CString& name : m_folders.namesLike(*candidate.folder, candidate.name))
        {
            const CString taken = addBackslash(candidate.folder->path) + name;
            // What itself moves away is no obstacle unless it is refused in the end.
            if (!m_sources.contains(taken))
                refuse(candidate,
                       name == candidate.name ? "there is already a file of that name"
                                              : takesForOne(taken));
        }
        if (!candidate.folder->whyClosed.empty())
            refuse(candidate, candidate.folder->whyClosed);
        refuseIfKnown(candidate);
    }

    /// Also where folders differ in case alone the collection can hold only one of the two files.
    void refuseIfKnown(PlanCandidate& candidate)
    {
        const auto [directory, isNew] = m_directories.try_emplace(candidate.folder);
        if (isNew)
            directory->second =
                CQoCollection::m_ownCollection.getDir(CQoCollPath(candidate.folder->path));
        const auto known = directory->second ? directory->second->getFile(candidate.to) : nullptr;
        if (known && !m_sources.contains(known->getPath()) && fileSystem().exists(known->getPath()))
            refuse(candidate, takesForOne(known->getPath()));
    }

    static std::string takesForOne(const CString& other)
    {
        return "the collection takes " + shownPath(other) + " for the same name";
    }

    void refuseWhoWants(const PlanCandidate& staying)
    {
        if (const auto beside = m_companions.find(staying.from); beside != m_companions.end())
        {
            for (PlanCandidate* candidate : beside->second)
                refuse(*candidate, shownPath(staying.from) + ", beside which it lies, is refused");
        }
        const auto wanting = m_targets.find(sameNameKey(staying.from));
        if (wanting == m_targets.end())
            return;
        for (PlanCandidate* candidate : wanting->second)
            refuse(*candidate, shownPath(staying.from) + " is in its place and has to stay");
    }

    std::vector<PlanCandidate>& m_candidates;
    DiskFolders& m_folders;
    std::unordered_map<CString, PlanCandidate*> m_sources;
    std::unordered_map<CString, Candidates> m_targets; ///< by the key of the path
    std::unordered_map<const DiskFolders::Folder*, boost::shared_ptr<CHDDirectory>> m_directories;
    std::unordered_map<CString, Candidates> m_companions; ///< by the track that they go by
    Candidates m_staying; ///< refused; who wants their places is refused next
};
} // namespace

void refuseConflicts(std::vector<PlanCandidate>& candidates, DiskFolders& folders)
{
    Conflicts(candidates, folders).refuseAll();
}
} // namespace qo::host
