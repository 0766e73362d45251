#pragma once

#include <QoKernel/Collection.h>

#include <functional>
#include <string>

/// Small helpers around the paths of records and the files they stand for.
namespace qo::host
{
/// The user's own collection.
inline CQoCollection& ownCollection()
{
    return CQoCollection::m_ownCollection;
}

/// The spellings that the collection takes for one path have one key.
std::u16string pathKey(const CString& path);

/// Where a file below one path lies once that is another.
CString rebased(const CString& path, const CString& from, const CString& to);

/// Calls for each regular file in the folder and below, in the order and by the rules of a scan,
/// until it answers false.
void forEachFile(const CString& folder,
                 const std::function<bool(const CString& path, const FileInfo& info)>& visit);

/// Whether the collection holds what its database does not.
bool hasUnsaved(const CQoCollection& collection);

/// After a save: what files left behind that are no longer in the tree, and the artists and albums
/// that only they had, go out of the lists.
void forgetGone(CQoCollection& collection);

/// Takes out the files that vanished between the walk and the moment when they were to be read, and
/// saves that: of those for which wasWalked is true, and only if isTrusted is, which tells whether
/// all that was walked is still there. How many they were.
int dropVanished(CQoCollection& collection,
                 const std::function<bool(const CString&)>& wasWalked,
                 const std::function<bool()>& isTrusted);

/// Lets the kernel read the file with the next change if it is another one than the record, which
/// may be null, knows: of itself it only reads what is newer.
void readIfOther(const QoFileDbItemPtr& record, const CString& path);

/// Whether the file is another one than the record knows: what has another size or time is, be the
/// time an older one.
bool isOtherFile(const QoFileDbItem& record, const FileInfo& info);
} // namespace qo::host
