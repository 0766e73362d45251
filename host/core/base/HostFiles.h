#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <vector>

/// Small helpers for files and paths that all parts of the host share.
namespace qo::host
{
/// The whole content of a regular file. An error number, 0 for success; EFBIG beyond the limit.
int readFile(const CString& path, std::size_t limit, std::string& content);

/// "a file ..." or "3 files ...: first, second and 1 more"; "" for no file.
std::string
fileRemark(const CStringArray& files, const std::string& ofOne, const std::string& ofMany);

/// The system's words for an error number, without the number.
std::string errorWords(int error);

/// A cause as the kernel words it, "13: Permission denied" say, in one line and without the number,
/// which is for who mends the program.
std::string plainWords(const CString& cause);

/// Whether the disk that holds the path, or the nearest folder above it that exists, has no room
/// left for this user.
bool isDiskFull(const CString& path);

/// The path as a user sees it: that of the system, for a file of a device that is away its name and
/// the path on it, and the collection form for what has neither.
std::string shownPath(const CString& path);
/// The name of the device, service or friend that a path lies on; "" for a path of this machine.
std::string placeNameOf(const CQoCollPath& path);

/// The path, for whatever is kept across processes. Throws HostError for one by a letter that a
/// disk has in this process alone: the next one may give that letter to another disk.
const CString& lastingPath(const CString& path);

/// An absolute path without ".", ".." and doubled slashes, from what a user typed. Does not look
/// at the disk, so a link followed by ".." is taken literally.
std::string absolutePath(const std::string& typed);

/// The path with all links resolved; "" with the cause in errno when there is nothing.
std::string resolvedPath(const std::string& path);

/// The collection forms that a typed path may have, the likeliest first: as it is spelled, with
/// the links of its folder followed, with its own followed.
std::vector<CString> spellings(const std::string& typed);
/// absolutePath() for an existing folder, with links resolved; throws HostError when it is no
/// folder.
std::string existingFolder(const std::string& typed);

/// "20260131_235959", local time: part of the names of files that are set aside.
CString timeStampOfNow();

/// A free path for a file that becomes the target by a rename. No listing shows such a file. One
/// that stays, because its process was killed, goes with the next of these calls for its folder.
CString passingPathBeside(const CString& target);
/// Removes from a folder at once what was left like that.
void clearPassingFiles(const CString& folder);

/// A name that starts as wanted and that no file has.
CString freeName(const CString& wanted);
} // namespace qo::host
