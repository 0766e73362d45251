#include "QoColl/Collection/ProtectedFolders.h"

#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoUtils.h"
#include "common/Paths.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"

#include <algorithm>

namespace qo
{
namespace
{
/// Whether the path has ordinary names only: with any other the path may mean another folder than
/// it spells.
bool isPlain(const CQoCollPath& path)
{
    for (const CString& name : path.getComponents())
    {
        if (name.IsEmpty() || name.Find(u'\\') >= 0 || name == u"." || name == u"..")
            return false;
    }
    return path.getType() == CQoCollPath::drive || path.getType() == CQoCollPath::network;
}

/// A whole drive, a server, or a share of it.
bool isTop(const CQoCollPath& path)
{
    return path.getCount() <= (path.getType() == CQoCollPath::network ? 1 : 0);
}

bool find(const CQoCollPath& path, FileInfo& info)
{
    return fileSystem().info(path.toString(), Spelling::exact, info) == 0;
}
} // namespace

ProtectedFolders::ProtectedFolders()
{
    CStringArray outputDirs;
    CQoPaths::getOutputDirs(outputDirs);
    for (const CString& dir : outputDirs)
        add(dir);
    // A root folder of the settings counts whether or not its collection is loaded.
    CStringArray rootDirs;
    CQoPaths::getMusicCollectionDirs(rootDirs, nullptr);
    for (const CString& dir : rootDirs)
        add(dir);
    for (const CQoCollection* collection :
         {&CQoCollection::m_ownCollection, &CQoCollection::m_foreignCollection})
    {
        CollPathArray roots;
        collection->getRootDirs(roots);
        for (const CQoCollPath& root : roots)
        {
            // A root folder on a device stands below the drive that the device has now.
            const CString real = CQoUtils::getRealPath(root);
            add(real.IsEmpty() ? root.toString() : real);
        }
    }
    const ISpecialFolders& special = specialFolders();
    add(special.home());
    for (const CString& dir : special.ownFolders())
        add(dir);
    for (const CString& dir : special.userFolders())
        add(dir);
}

void ProtectedFolders::add(const CString& folder)
{
    const CQoCollPath path(folder);
    // The path of an empty setting is invalid.
    if (!path.isValid())
        return;
    m_paths.Add(path);
    FileInfo info;
    if (find(path, info))
        m_identities.emplace_back(info.device, info.inode);
}

bool ProtectedFolders::has(const CQoCollPath& folder) const
{
    if (isTop(folder) || !isPlain(folder) || findPath(m_paths, folder) >= 0)
        return true;
    FileInfo info;
    FileInfo parent;
    // A folder that does not exist has no identity, and nothing can be mounted on it.
    if (!find(folder, info))
        return false;
    const std::pair identity(info.device, info.inode);
    return std::find(m_identities.begin(), m_identities.end(), identity) != m_identities.end() ||
           !find(folder.getParent(), parent) || parent.device != info.device;
}

bool ProtectedFolders::hasBelow(const CQoCollPath& folder) const
{
    return std::any_of(m_paths.begin(),
                       m_paths.end(),
                       [&](const CQoCollPath& path) { return path.isSubPathOf(folder); });
}
} // namespace qo
