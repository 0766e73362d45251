#include "QoColl/Collection/QoFileUtils.h"

#include "QoColl/Collection/ProtectedFolders.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoUtils.h"
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

/// Whether the folder would be empty without that entry. True for a folder that is gone, false for
/// one that cannot be listed, which may contain anything.
bool holdsNothingBut(const CQoCollPath& folder, const CString& name)
{
    constexpr std::size_t enoughToKnow = 2;
    std::vector<CString> names;
    const int error = qo::firstNames(folder.toString(), enoughToKnow, names);
    if (error != 0)
        return error == ENOENT;
    return names.empty() || (names.size() == 1 && names[0] == name);
}

/// Whether the folder may be removed. A folder of a device or server that is away is not gone.
bool mayGo(const CQoCollPath& folder, const qo::ProtectedFolders& kept)
{
    const CString path = folder.toString();
    return !kept.has(folder) && !qo::toSystemPath(path).empty() && !qo::fileSystem().isLink(path);
}

/// The topmost of the folders that contain nothing but this empty one.
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

/// Whether it is below (and not itself) a folder of media, by the loaded collections or the
/// settings.
bool isBelowRoot(const CQoCollPath& folder)
{
    for (const CQoCollection* const collection :
         {&CQoCollection::m_ownCollection, &CQoCollection::m_foreignCollection})
    {
        qo::CollPathArray roots;
        collection->getRootDirs(roots);
        for (const CQoCollPath& root : roots)
        {
            const CQoCollPath real(CQoUtils::getRealPath(root));
            if (real.isValid() && folder.isSubPathOf(real))
                return true;
        }
    }
    return CQoPaths::isInRootDirs(folder.getParent().toString());
}

/// Removes the folder and those above it up to the topmost, but none with content. True if the
/// first folder is gone; folder is then the last one that was removed.
bool removeUpTo(CQoCollPath& folder, const CQoCollPath& topmost)
{
    bool removed = false;
    for (CQoCollPath next = folder;; next = next.getParent())
    {
        const int error = qo::fileSystem().removeDirectory(next.toString());
        // If a folder above cannot be removed, those below are gone already.
        if (error != 0 && error != ENOENT)
            return removed;
        removed = true;
        folder = next;
        if (next == topmost)
            return true;
    }
}

/// Tries a second time after 100 ms, in case another program has the folder open for a moment.
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
    // Content is removed only where the user keeps media, and only if no protected folder is in it.
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
