#pragma once

#include <QoKernel/Kernel.h>

#include <functional>
#include <string>

/// The calls of the platform's file system that runs make, by absolute system paths. Each answers
/// with the system's error number, 0 for success, unless it says otherwise.
namespace qo::host::disk
{
/// What stands under the name itself, a link not followed.
int look(const std::string& path, NameInfo& info);
/// Whether a folder stands there, and no link to one.
bool isFolder(const std::string& path);
/// Whether the system says that there is nothing of that name.
bool isNothingAt(const std::string& path);
/// The folder itself, a link followed; ENOTDIR for what is none.
int lookAtFolder(const std::string& path, NameInfo& info);
/// Whether two names are of one file.
bool isSameEntry(const std::string& one, const std::string& other);
/// The nearest folder on the way up that is there, the path itself included.
std::string nearestFolder(std::string path);

int moveNoReplace(const std::string& from, const std::string& to);
int removeFile(const std::string& path);
int removeFolder(const std::string& path);
int makeFolder(const std::string& path);
/// A new file with that content, on the disk in full or not at all; EEXIST if the name is taken.
int writeNew(const std::string& path, const std::string& content);
int sync(const std::string& path);
int syncAll(const std::string& folder);

/// Why the file or folder cannot be moved from one name to the other for lack of rights; 0 if it
/// can. The new folder may have to be made. To another disk it is read and copied.
int checkRights(const std::string& from, const std::string& to);
} // namespace qo::host::disk
