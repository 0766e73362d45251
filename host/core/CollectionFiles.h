#pragma once

#include <QoKernel/Collection.h>

#include <functional>
#include <string>

/// Small helpers around the paths of records and the files they stand for.
namespace qo::host
{
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

/// Whether the file is another one than the record knows: what has another size or time is, be the
/// time an older one.
bool isOtherFile(const QoFileDbItem& record, const FileInfo& info);
} // namespace qo::host
