#include "core/load/DiskChanges.h"

#include "core/load/UnreadFiles.h"
#include "core/session/ScanHost.h"

#include <algorithm>
#include <map>
#include <utility>

namespace qo::host
{
namespace
{
using Identity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

bool isBefore(const DiskChange& a, const DiskChange& b)
{
    return a.path.CompareNoCase(b.path) < 0;
}

/// By the same file under the name that a walk met; only files behind a second name are asked.
class Meetings
{
public:
    explicit Meetings(const std::vector<FoundFile>& found)
    {
        for (const FoundFile& file : found)
            m_files.emplace(Identity(file.info.device, file.info.inode), &file);
    }
    const FoundFile* of(const FileInfo& info) const
    {
        const auto met = m_files.find({info.device, info.inode});
        return met == m_files.end() ? nullptr : met->second;
    }

private:
    std::map<Identity, const FoundFile*> m_files;
};
} // namespace

std::vector<DiskChange>
DiskChanges::between(const QoFileDbItemArray& records,
                     const std::vector<FoundFile>& found,
                     const std::function<bool(const CString& path)>& isWalked)
{
    m_changes.clear();
    m_unmet.clear();
    // Of a first scan all files are changes, and this saves moving them as the list grows.
    if (records.IsEmpty())
        m_changes.reserve(found.size());
    auto next = found.begin();
    for (const QoFileDbItemPtr& record : records)
    {
        if (isWalked && !isWalked(record->path))
            continue;
        int order = -1;
        while (next != found.end() && (order = next->path.CompareNoCase(record->path)) < 0)
            addNew(takeOne(next, found, {}));
        if (next != found.end() && order == 0)
            addMet(record, takeOne(next, found, record->path));
        else
            m_unmet.push_back(record);
    }
    while (next != found.end())
        addNew(takeOne(next, found, {}));
    settleUnmet(found);
    return std::move(m_changes);
}

/// Of names that differ in case alone the known one counts, else the first; next goes after them.
const FoundFile&
DiskChanges::takeOne(Found& next, const std::vector<FoundFile>& found, const CString& known)
{
    const Found first = next;
    Found chosen = first;
    while (++next != found.end() && next->path.CompareNoCase(first->path) == 0)
        chosen = next->path == known ? next : chosen;
    for (Found twin = first; next - first > 1 && twin != next; ++twin)
    {
        if (twin != chosen)
            m_host.failed(IQoScanHost::ETrouble::twin, twin->path, CString());
    }
    return *chosen;
}

void DiskChanges::addNew(const FoundFile& file)
{
    m_changes.push_back({CQoFileChangeInfo::scan, file.path, {}, true, file.info});
}

void DiskChanges::addMet(const QoFileDbItemPtr& record, const FoundFile& file)
{
    DiskChange change{CQoFileChangeInfo::scan, record->path, {}, false, file.info};
    if (record->path != file.path)
    {
        // Of two names that differ in case alone the known one keeps its place.
        if (isKnownToBeGone(record->path))
        {
            change.action = CQoFileChangeInfo::move;
            change.newPath = file.path;
            return m_changes.push_back(std::move(change));
        }
        FileInfo info;
        if (fileSystem().info(record->path, Spelling::exact, info) != 0)
            return;
        change.seen = info;
    }
    if (m_host.mustRead(*record, *change.seen))
        m_changes.push_back(std::move(change));
}

void DiskChanges::settleUnmet(const std::vector<FoundFile>& found)
{
    std::optional<Meetings> meetings;
    bool areSorted = true;
    for (const QoFileDbItemPtr& record : m_unmet)
    {
        areSorted = false;
        const DiskChange gone{CQoFileChangeInfo::remove, record->path, {}, false, {}};
        FileInfo info;
        if (fileSystem().info(CQoUtils::getRealPath(record->path), Spelling::exact, info) != 0)
        {
            if (m_unread.isGone(record->path))
                m_changes.push_back(gone);
            continue;
        }
        // It is there, and the walk passed over it.
        if (!meetings)
            meetings.emplace(found);
        const FoundFile* const met = meetings->of(info);
        const auto isOfIt = [met](const DiskChange& change)
        { return change.isNew && change.path == met->path; };
        const auto arrival =
            met ? std::find_if(m_changes.begin(), m_changes.end(), isOfIt) : m_changes.end();
        if (arrival != m_changes.end())
            *arrival = {CQoFileChangeInfo::move, record->path, met->path, false, met->info};
        else if (met || m_unread.isGone(record->path))
            m_changes.push_back(gone);
    }
    if (!areSorted)
        std::stable_sort(m_changes.begin(), m_changes.end(), isBefore);
}
} // namespace qo::host
