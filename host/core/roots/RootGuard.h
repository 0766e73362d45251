#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <vector>

namespace qo::host
{
/// A root folder that must not be taken for empty: a scan would drop all its records.
struct RootProblem
{
    CString folder;
    std::string cause; ///< "No such file or directory" and the like
};

/// Whether each root folder can be trusted to show what it holds: it exists, can be listed, and is
/// not suddenly empty (a bare mount point, or a folder of which the database knows files). On the
/// thread that calls the kernel; the database may be absent.
std::vector<RootProblem> checkRoots(const CStringArray& folders, const CString& database);

/// Whether a system path is no place for a collection of its own: "/", "/dev", and what is or holds
/// a file system of the system's own, such as /proc.
bool isSystemFolder(const std::string& folder);

/// A line about each, in the past or present as `went` says: "went away during the scan".
std::string rootSentences(const std::vector<RootProblem>& problems, const std::string& went);

/// How many rows a collection has, the user's own or that of a device; 0 without a database. Throws
/// what the database layer throws.
std::int64_t countFiles(const CString& database, const CString& collection = CString());

/// How many rows of the user's own collection lie below the folder; 0 without a database.
std::int64_t countFilesBelow(const CString& database, const CString& folder);
} // namespace qo::host
