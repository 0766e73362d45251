#include "cli/files/FoundFiles.h"

#include "cli/KernelCommand.h"

namespace qo::cli
{
FoundFiles::FoundFiles(const std::string& typed)
{
    const CQoCollection& collection = CQoCollection::m_ownCollection;
    QoFileDbItemArray all;
    collection.copyFiles(all);
    if (typed.empty())
    {
        m_files = std::move(all);
        return;
    }
    for (const CString& form : spellings(typed))
    {
        if (take(all, form))
            return;
    }
    throw HostError(ExitCode::notFound, typed + " is not in the collection");
}

bool FoundFiles::take(const QoFileDbItemArray& all, const CString& path)
{
    const CString below = addBackslash(path);
    for (const QoFileDbItemPtr& item : all)
    {
        if (item->path == path || item->path.view().starts_with(below.view()))
            m_files.Add(item);
    }
    m_path = path;
    return !m_files.IsEmpty() ||
           CQoCollection::m_ownCollection.isRootDirInCollection(CQoCollPath(path));
}
} // namespace qo::cli
