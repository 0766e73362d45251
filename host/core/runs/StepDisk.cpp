#include "core/runs/StepDisk.h"

#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace qo::host
{
namespace
{
constexpr mode_t rightsBits = 07777;

StepDisk::Outcome ended(int error)
{
    if (error == 0)
        return {};
    return {error, error == EEXIST ? "there is already a file of that name" : errorWords(error)};
}

/// Files lie in the targets and in what is kept besides.
std::vector<std::string> sourceBases(std::vector<std::string> targets,
                                     const std::vector<std::string>& keptFolders)
{
    if (!targets.empty())
        targets.insert(targets.end(), keptFolders.begin(), keptFolders.end());
    return targets;
}

/// How those fail whose disk was taken away, or may have been.
bool isAway(int error)
{
    constexpr std::array<int, 5> errors = {ENOENT, ENOTDIR, ENODEV, ENOTCONN, ESTALE};
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

/// Whether the file is what it was; else why not.
StepDisk::Outcome checkSource(const std::string& path, const FileMark& mark)
{
    struct stat st;
    FileMark now;
    const int error = ::lstat(path.c_str(), &st) == 0 ? markOf(path, now) : errno;
    if (error == ENOENT || error == ENOTDIR)
        return {ENOENT, "it is no longer there", true};
    if (error != 0)
        return {error, errorWords(error), isAway(error)};
    if (!S_ISREG(st.st_mode))
        return {EINVAL, "it is no file any more"};
    if (now != mark)
        return {EBUSY, "it has changed since"};
    return {};
}

StepDisk::Outcome copyOver(const MoveStep& step,
                           const FileMark& mark,
                           const std::string& stagingName,
                           const std::function<void(const FileMark&)>& copied,
                           const std::function<bool()>& stop)
{
    // Better to know before a long copy than after it.
    if (::faccessat(AT_FDCWD, parentOf(step.from).c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        return ended(errno);
    TreeCopy copy(fromSystemPath(step.from), fromSystemPath(step.to), stagingName);
    if (const int error = copy.stage(stop))
        return ended(error);
    FileMark staged;
    if (const int error = markOf(copy.stagedPath(), staged))
        return ended(error);
    if (staged.size != mark.size)
        return {EBUSY, "it changed while it was copied"};
    copied(staged);
    if (const int error = copy.putInPlace())
        return ended(error);
    const int error = copy.removeSource();
    if (error == 0)
        return {};
    if (const int removeError = copy.removeTarget())
        return {removeError,
                "it was copied, but neither the old file (" + errorWords(error) +
                    ") nor the copy (" + errorWords(removeError) + ") can be removed"};
    return error == EBUSY ? StepDisk::Outcome{error, "it changed while it was copied"}
                          : ended(error);
}
} // namespace

StepDisk::StepDisk(std::vector<std::string> targets, std::vector<std::string> keptFolders)
    : m_targets(targets), m_sources(sourceBases(std::move(targets), keptFolders))
{
}

StepDisk::Outcome StepDisk::checkFolders(const MoveStep& step)
{
    const std::string from = parentOf(step.from);
    if (const int error = m_sources.check(from))
        return {error, m_sources.reason(from, error)};
    const std::string to = parentOf(step.to);
    // A temporary name stands beside the file itself, wherever that is.
    if (const int error = to == from ? 0 : m_targets.check(to))
        return {error, m_targets.reason(to, error)};
    return {};
}

StepDisk::Outcome StepDisk::move(const MoveStep& step,
                                 const FileMark& mark,
                                 const std::string& stagingName,
                                 const std::function<void(const FileMark&)>& copied,
                                 const std::function<bool()>& stop)
{
    const Outcome source = checkSource(step.from, mark);
    if (source.error != 0)
        return source;
    const Outcome folders = checkFolders(step);
    if (folders.error != 0)
        return folders;
    const int error =
        fileSystem().moveFileNoReplace(fromSystemPath(step.from), fromSystemPath(step.to));
    return error == EXDEV ? copyOver(step, mark, stagingName, copied, stop) : ended(error);
}

StepDisk::Outcome StepDisk::makeFolder(const std::string& folder, const FolderRights& rights)
{
    const std::string above = parentOf(folder);
    // A target itself, and what lies above it, stands in a folder that is kept.
    FolderGuard& guard = m_targets.isBelowBase(folder) ? m_targets : m_sources;
    if (const int error = guard.check(above))
        return error == ELOOP ? Outcome{error, above + " is a link"}
                              : Outcome{error, guard.reason(above, error)};
    struct stat st;
    if (::stat(above.c_str(), &st) != 0)
        return ended(errno);
    const bool isGiven = rights.mode != 0;
    const mode_t mode = isGiven ? rights.mode : st.st_mode & rightsBits;
    if (::mkdir(folder.c_str(), mode) != 0)
    {
        const int error = errno;
        struct stat there;
        const bool isFolder =
            error == EEXIST && ::lstat(folder.c_str(), &there) == 0 && S_ISDIR(there.st_mode);
        return error == EEXIST && !isFolder ? Outcome{ENOTDIR, "something of its name is no folder"}
                                            : ended(error);
    }
    // A folder that the administrator makes shall be its user's. Who may not give it keeps it.
    if (isGiven || ::geteuid() == 0)
        (void)!::lchown(
            folder.c_str(), isGiven ? rights.owner : st.st_uid, isGiven ? rights.group : st.st_gid);
    ::chmod(folder.c_str(), mode);
    return {};
}

StepDisk::Outcome StepDisk::removeFolder(const std::string& folder)
{
    if (::rmdir(folder.c_str()) == 0)
        return {};
    const int error = errno == EEXIST ? ENOTEMPTY : errno;
    return {error, errorWords(error)};
}
} // namespace qo::host
