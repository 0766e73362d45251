#pragma once

#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

/// Small helpers around the paths of records and the files they stand for.
namespace qo::host
{
class RootLister;

/// The user's own collection.
inline CQoCollection& ownCollection()
{
    return CQoCollection::m_ownCollection;
}

/// Whether the record is that of music or a video.
inline bool isMedia(const QoFileDbItem& item)
{
    return (item.flags & fileFlag::mediaMask) != 0;
}

/// The spellings that the collection takes for one path have one key.
std::u16string pathKey(const CString& path);
/// Whether the path, in collection form, lies below one of the folders, upper and lower case being
/// the same. A folder does not lie below itself.
template <class Folders>
bool isBelowAny(const CString& path, const Folders& folders)
{
    const std::u16string key = pathKey(path);
    return std::any_of(folders.begin(),
                       folders.end(),
                       [&key](const CString& folder)
                       { return key.starts_with(pathKey(addBackslash(folder))); });
}

/// Where a file below one path lies once that is another.
CString rebased(const CString& path, const CString& from, const CString& to);

/// The file itself, or every regular file in the folder, as a scan would find them.
std::vector<CString> filesAt(const CString& path, RootLister& lister);

/// Whether the collection holds what its database does not.
bool hasUnsaved(const CQoCollection& collection);

/// After each change: lets go of the files that are no longer in the tree. Listeners hear of it.
void releaseGone(CQoCollection& collection);

/// After a save: what files left behind that are no longer in the tree, and the artists and albums
/// that only they had, go out of the lists.
void forgetGone(CQoCollection& collection);
} // namespace qo::host
