#include "QoColl/Collection/QoFileUtils.h"

#include "QoColl/Collection/ProtectedFolders.h"
#include "QoColl/Collection/QoCollection.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/Paths.h"
#include "platform/FileSystem.h"
#include "platform/FolderNames.h"
#include "platform/Platform.h"

#include <cerrno>
#include <chrono>
#include <thread>

namespace
{
using qo::log;
namespace level = qo::level;

constexpr std::chrono::milliseconds lockWait(100);

/// Whether the folder would be empty without that entry. One that is gone already is; one that
/// cannot be listed may hold anything.
bool holdsNothingBut(const CQoCollPath& folder, const CString& name)
{
    constexpr std::size_t enoughToKnow = 2;
    std::vector<CString> names;
    const int error = qo::firstNames(folder.toString(), enoughToKnow, names);
    if (error != 0)
        return error == ENOENT;
    return names.empty() || (names.size() == 1 && names[0] == name);
}

/// A folder of a device or server that is away is not gone.
bool mayGo(const CQoCollPath& folder, const qo::ProtectedFolders& kept)
{
    const CString path = folder.toString();
    return !kept.has(folder) && !qo::toSystemPath(path).empty() && !qo::fileSystem().isLink(path);
}

/// The topmost folder that goes with an empty one.
CQoCollPath topmostEmpty(CQoCollPath folder, const qo::ProtectedFolders& kept)
{
    for (;;)
    {
        const CQoCollPath parent = folder.getParent();
        if (!mayGo(parent, kept) || !holdsNothingBut(parent, folder.getLast()))
            return folder;
        folder = parent;
    }
}

/// Strictly below a folder where the user keeps media, by the loaded collections or the settings.
bool isBelowRoot(const CQoCollPath& folder)
{
    const CQoCollPath parent = folder.getParent();
    return CQoCollection::m_ownCollection.isDirInCollection(parent) ||
           CQoCollection::m_foreignCollection.isDirInCollection(parent) ||
           CQoPaths::isInRootDirs(parent.toString());
}

/// Removes the folder and those above it up to the topmost, but nothing that has content, so that a
/// file which came meanwhile stays. Whether the folder went; it is then the last one that did.
bool removeUpTo(CQoCollPath& folder, const CQoCollPath& topmost)
{
    bool removed = false;
    for (CQoCollPath next = folder;; next = next.getParent())
    {
        const int error = qo::fileSystem().removeDirectory(next.toString());
        // Whatever stops the climb, the folders below have gone already.
        if (error != 0 && error != ENOENT)
            return removed;
        removed = true;
        folder = next;
        if (next == topmost)
            return true;
    }
}

/// Tries again once after a moment.
template <class Remove>
bool removePatiently(CQoCollPath& folder, Remove remove)
{
    bool removed = remove(folder);
    if (!removed)
    {
        log(level::error,
            u"CQoFileUtils::checkRemoveEmptyDir : failed to remove empty dir %s, wait 100 ms and "
            u"try again, maybe there is a temp lock",
            folder.toString());
        std::this_thread::sleep_for(lockWait);
        removed = remove(folder);
    }
    if (removed)
        log(level::detail,
            u"CQoFileUtils::checkRemoveEmptyDir : removed empty dir %s",
            folder.toString());
    return removed;
}
} // namespace

bool CQoFileUtils::getEmptyDirCheckParent(CString& dir)
{
    const qo::ProtectedFolders kept;
    const CQoCollPath folder(dir);
    if (!mayGo(folder, kept) || !CFileUtils::IsDirEmpty(dir, false))
        return false;
    dir = topmostEmpty(folder, kept).toString();
    return true;
}

bool CQoFileUtils::checkRemoveEmptyDir(const CString& dir, bool force)
{
    CQoCollPath folder(dir);
    if (!force)
    {
        CString topmost = dir;
        if (!getEmptyDirCheckParent(topmost))
            return false;
        return removePatiently(folder,
                               [top = CQoCollPath(topmost)](CQoCollPath& path)
                               { return removeUpTo(path, top); });
    }
    // With content at stake the folder must lie where the user keeps media, and nothing that is
    // kept may lie in it.
    const qo::ProtectedFolders kept;
    if (!mayGo(folder, kept) || kept.hasBelow(folder) || !isBelowRoot(folder))
    {
        log(level::error, u"CQoFileUtils::checkRemoveEmptyDir : dir %s must not be removed", dir);
        return false;
    }
    return removePatiently(
        folder, [](CQoCollPath& path) { return CFileUtils::RemoveDirectoryRec(path.toString()); });
}

bool CQoFileUtils::checkRemoveEmptyDirOfFile(const CString& file, CString& dir, bool force)
{
    dir = CQoCollPath(file).getParent().toString();
    return checkRemoveEmptyDir(dir, force);
}

bool CQoFileUtils::checkRemoveEmptyDirOfFile(const CString& file, bool force)
{
    CString dir;
    return checkRemoveEmptyDirOfFile(file, dir, force);
}
