#include "core/load/RootChanges.h"

#include "core/base/HostFiles.h"
#include "core/roots/StoredRoots.h"

#include <algorithm>

namespace qo::host
{
RootChanges::RootChanges(const RootFolders& roots,
                         const UnfinishedScan& mark,
                         const CString& database)
{
    findFresh(roots, mark, database);
    findKept(roots, database);
}

bool RootChanges::canBeFollowed(bool rescan) const
{
    if (m_areEntangled || (rescan && m_haveSomeLeft))
        return false;
    return m_haveSomeLeft || !m_fresh.IsEmpty();
}

void RootChanges::findFresh(const RootFolders& roots,
                            const UnfinishedScan& mark,
                            const CString& database)
{
    CollPathArray wanted;
    CQoCollection::validateRootDirs(roots.folders(), wanted);
    CollPathArray known;
    const CollInfoDbItem info = storedInfo(database);
    if (!CQoCollDbUtils::IsNullFILETIME(info.scanTime))
        addPaths(known, info.rootDirs);
    CollPathArray unfinished;
    addPaths(unfinished, mark.rootsAtFirst());
    for (const CQoCollPath& root : wanted)
    {
        if (findPath(known, root) < 0 || findPath(unfinished, root) >= 0)
            m_fresh.Add(root.toString());
    }
}

void RootChanges::findKept(const RootFolders& roots, const CString& database)
{
    for (const StoredRoot& root : storedRoots(database))
    {
        const CString holder = roots.holder(root.folder);
        const CQoCollPath stored(root.folder);
        const auto isBelow = [&stored](const CString& folder)
        { return CQoCollPath(folder).isSubPathOf(stored); };
        if (holder == root.folder && roots.kind(root.folder) == root.kind)
            m_kept.Add(root.folder);
        else if (holder.IsEmpty() && std::none_of(m_fresh.begin(), m_fresh.end(), isBelow))
            m_haveSomeLeft = true;
        else
            m_areEntangled = true;
    }
}
} // namespace qo::host
