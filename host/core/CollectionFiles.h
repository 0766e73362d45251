#pragma once

#include <QoKernel/Kernel.h>

#include <functional>
#include <string>

/// Small helpers around the paths of records and the files they stand for.
namespace qo::host
{
/// The spellings that the collection takes for one path have one key.
std::u16string pathKey(const CString& path);

/// Where a file below one path lies once that is another.
CString rebased(const CString& path, const CString& from, const CString& to);

/// Calls for each regular file in the folder and below, in the order and by the rules of a scan.
void forEachFile(const CString& folder,
                 const std::function<void(const CString& path, const FileInfo& info)>& visit);
} // namespace qo::host
