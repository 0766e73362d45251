#pragma once

#include "core/load/RootWalk.h"

#include <QoKernel/Collection.h>

#include <functional>
#include <optional>
#include <vector>

namespace qo::host
{
class ScanHost;
class UnreadFiles;

/// One difference between the collection and the disk, as CQoFileChangeInfo takes it.
struct DiskChange
{
    CQoFileChangeInfo::EAction action = CQoFileChangeInfo::noAction;
    CString path;
    CString newPath; ///< of a move
    bool isNew = false;
    std::optional<FileInfo> seen; ///< as the walk saw the file; none for one that has gone

    const CString& lastPath() const { return newPath.IsEmpty() ? path : newPath; }
};

/// Compares the records of a collection with what a walk met. Records and files are gone through
/// side by side, in the order of their paths.
///
/// A file is known by its path without regard to case. Of two files whose names differ in case
/// alone, as "a.mp3" and "A.mp3", the known one keeps the record, else the first; the other is left
/// out. A known file is read again when its size or its write time is another than the stored one.
/// A record whose file was not met leaves if UnreadFiles say that it has gone, and takes the path
/// of a file that the walk met elsewhere when it is the very same file: that happens when a folder
/// was known by a link to it. On the kernel's thread.
class DiskChanges
{
public:
    DiskChanges(ScanHost& host, UnreadFiles& unread) : m_host(host), m_unread(unread) {}

    /// Both in the order of their paths. Records for which isWalked, if given, is false are left
    /// alone.
    std::vector<DiskChange> between(const QoFileDbItemArray& records,
                                    const std::vector<FoundFile>& found,
                                    const std::function<bool(const CString& path)>& isWalked);

private:
    using Found = std::vector<FoundFile>::const_iterator;

    const FoundFile&
    takeOne(Found& next, const std::vector<FoundFile>& found, const CString& known);
    void addNew(const FoundFile& file);
    void addMet(const QoFileDbItemPtr& record, const FoundFile& file);
    void settleUnmet(const std::vector<FoundFile>& found);

    ScanHost& m_host;
    UnreadFiles& m_unread;
    std::vector<DiskChange> m_changes;
    std::vector<QoFileDbItemPtr> m_unmet;
};
} // namespace qo::host
