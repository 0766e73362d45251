#include "core/runs/StepDisk.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace qo::host
{
namespace
{
using Outcome = StepDisk::Outcome;
using Moving = StepDisk::Moving;

constexpr std::size_t largestNote = std::size_t(64) << 10;

Outcome ended(int error)
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

bool isOfKind(NameInfo::Kind kind, MovedFile::What what)
{
    switch (what)
    {
    case MovedFile::What::link:
        return kind == NameInfo::Kind::link;
    case MovedFile::What::folder:
        return kind == NameInfo::Kind::directory;
    default:
        return kind == NameInfo::Kind::regular;
    }
}

/// Whether the file is what it was; else why not.
Outcome checkSource(const std::string& path, const Moving& moving)
{
    NameInfo info;
    const int error = disk::look(path, info);
    if (error == ENOENT || error == ENOTDIR)
        return {ENOENT, "it is no longer there", true};
    if (error != 0)
        return {error, errorWords(error), isAway(error)};
    if (!isOfKind(info.kind, moving.file.what))
        return {EINVAL,
                moving.file.what == MovedFile::What::folder ? "it is no folder any more"
                                                            : "it is no file any more"};
    if (!StepDisk::isUnchanged(markOf(info), moving.mark, moving.file.what))
        return {EBUSY, "it has changed since"};
    return {};
}

/// A copy that grows in a hidden folder beside its target, which is gone with the object.
class StagedCopy
{
public:
    StagedCopy(const std::string& target, const std::string& stagingName)
        : m_target(target)
        , m_stagingName(stagingName)
        , m_copy(inFolder(parentOf(target), stagingName) + "/copy")
    {
    }
    ~StagedCopy() { (void)StepDisk::removeStaged(m_target, m_stagingName); }
    StagedCopy(const StagedCopy&) = delete;
    StagedCopy& operator=(const StagedCopy&) = delete;

    int make(const std::string& from, const std::function<bool()>& stop) const
    {
        if (const int error = StepDisk::removeStaged(m_target, m_stagingName))
            return error;
        if (const int error = disk::makeFolder(parentOf(m_copy)))
            return error;
        return fileSystem().copyAsNew(fromSystemPath(from), fromSystemPath(m_copy), stop);
    }
    int look(FileMark& mark) const { return markOf(m_copy, mark); }
    int putInPlace() const
    {
        const int error = disk::moveNoReplace(m_copy, m_target);
        return error != 0 ? error : disk::sync(parentOf(m_target));
    }

private:
    std::string m_target;
    std::string m_stagingName;
    std::string m_copy;
};

bool isStill(const std::string& path, const FileMark& mark)
{
    FileMark now;
    return markOf(path, now) == 0 && now == mark;
}

/// What others have put in its place, or changed in it, is theirs.
int removeIfStill(const std::string& path, const FileMark& mark)
{
    return isStill(path, mark) ? disk::removeFile(path) : EBUSY;
}

/// Copies, and removes the source of a move. Killed before the copy is noted: the hidden folder
/// goes with the next look at the journal. Killed before it has its name: likewise. Killed before
/// the source goes: the copy is known by its mark, and the source goes then, if both are as they
/// were.
Outcome copyOver(const MoveStep& step, const Moving& moving)
{
    const bool isMove = moving.file.deed == MovedFile::Deed::move;
    // Better to know before a long copy than after it.
    if (const int error = isMove ? fileSystem().mayRemove(fromSystemPath(step.from)) : 0)
        return ended(error);
    const StagedCopy copy(step.to, moving.stagingName);
    if (const int error = copy.make(step.from, moving.stop))
        return ended(error);
    FileMark staged;
    if (const int error = copy.look(staged))
        return ended(error);
    if (staged.size != moving.mark.size)
        return {EBUSY, "it changed while it was copied"};
    moving.copied(staged);
    const bool wasFree = disk::isNothingAt(step.to);
    if (const int error = copy.putInPlace())
    {
        if (wasFree)
            (void)removeIfStill(step.to, staged);
        return ended(error);
    }
    const int error = isMove ? removeIfStill(step.from, moving.mark) : 0;
    if (error == 0)
        return {};
    if (const int removeError = removeIfStill(step.to, staged))
        return {removeError,
                "it was copied, but neither the old file (" + errorWords(error) +
                    ") nor the copy (" + errorWords(removeError) + ") can be removed"};
    return error == EBUSY ? Outcome{error, "it changed while it was copied"} : ended(error);
}

/// Takes a copy back: only what can be had at the other place as well goes.
Outcome removeCopy(const MoveStep& step, const Moving& moving)
{
    const int error = moving.file.what == MovedFile::What::link
                          ? 0
                          : fileSystem().compareFiles(
                                fromSystemPath(step.from), fromSystemPath(step.to), moving.stop);
    if (error == ECANCELED)
        return ended(error);
    if (error != 0 || disk::isNothingAt(step.to))
        return {EBUSY, "it is not the same as " + step.to + " any more"};
    return ended(removeIfStill(step.from, moving.mark));
}
} // namespace

StepDisk::StepDisk(std::vector<std::string> targets, std::vector<std::string> keptFolders)
    : m_bases(sourceBases(targets, keptFolders)), m_targets(std::move(targets)), m_sources(m_bases)
{
}

bool StepDisk::isUnchanged(const FileMark& now, const FileMark& mark, MovedFile::What what)
{
    return what == MovedFile::What::folder ? now.device == mark.device && now.inode == mark.inode
                                           : now == mark;
}

Outcome StepDisk::checkFolders(const MoveStep& step)
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

/// A disk that is away leaves the bare folder on which it is mounted. It may also have got another
/// number since, but then a mount point is still to be met on the way up.
Outcome StepDisk::checkTargetDisk(const MoveStep& step, const MovedFile& file) const
{
    NameInfo info;
    const std::string folder = parentOf(step.to);
    if (file.targetDevice == 0 || disk::lookAtFolder(folder, info) != 0 ||
        info.device == file.targetDevice)
        return {};
    for (std::string above = folder; above != "/"; above = parentOf(above))
    {
        NameInfo outer;
        if (disk::lookAtFolder(parentOf(above), outer) == 0 && outer.mount != info.mount)
            return {};
        if (std::find(m_bases.begin(), m_bases.end(), above) != m_bases.end())
            break;
    }
    return {ENODEV, "the disk that was mounted in " + folder + " or above is away"};
}

Outcome StepDisk::move(const MoveStep& step, const Moving& moving)
{
    const Outcome source = checkSource(step.from, moving);
    if (source.error != 0)
        return source;
    const Outcome folders = checkFolders(step);
    if (folders.error != 0)
        return folders;
    const Outcome target = checkTargetDisk(step, moving.file);
    if (target.error != 0)
        return target;
    switch (moving.file.deed)
    {
    case MovedFile::Deed::copy:
        return disk::isNothingAt(step.to) ? copyOver(step, moving) : ended(EEXIST);
    case MovedFile::Deed::removeCopy:
        return removeCopy(step, moving);
    default:
        break;
    }
    const int error = disk::moveNoReplace(step.from, step.to);
    return error == EXDEV && moving.file.what != MovedFile::What::folder ? copyOver(step, moving)
                                                                         : ended(error);
}

Outcome StepDisk::makeFolder(const std::string& folder, const FolderRights& rights)
{
    const std::string above = parentOf(folder);
    // A target itself, and what lies above it, stands in a folder that is kept.
    FolderGuard& guard = m_targets.isBelowBase(folder) ? m_targets : m_sources;
    if (const int error = guard.check(above))
        return error == ELOOP ? Outcome{error, above + " is a link"}
                              : Outcome{error, guard.reason(above, error)};
    NameInfo info;
    if (const int error = disk::lookAtFolder(above, info))
        return ended(error);
    if (const int error = disk::makeFolder(folder))
    {
        const bool isOther = error == EEXIST && !disk::isFolder(folder);
        return isOther ? Outcome{ENOTDIR, "something of its name is no folder"} : ended(error);
    }
    // A folder that the administrator makes shall be its user's.
    const bool isGiven = rights.mode != 0;
    const bool isAdministrator = ::geteuid() == 0;
    constexpr auto unchanged = static_cast<std::uint32_t>(-1);
    (void)fileSystem().giveRights(fromSystemPath(folder),
                                  isGiven ? rights.mode : info.mode,
                                  isGiven           ? rights.owner
                                  : isAdministrator ? info.owner
                                                    : unchanged,
                                  isGiven           ? rights.group
                                  : isAdministrator ? info.group
                                                    : unchanged);
    return {};
}

Outcome StepDisk::removeFolder(const std::string& folder)
{
    const int error = disk::removeFolder(folder);
    return error == 0 ? Outcome() : ended(error == EEXIST ? ENOTEMPTY : error);
}

Outcome StepDisk::writeNote(const std::string& path, const std::string& text)
{
    return ended(disk::writeNew(path, text));
}

bool StepDisk::holdsNote(const std::string& path, const std::string& text)
{
    std::string content;
    return readFile(fromSystemPath(path), largestNote, content) == 0 && content == text;
}

Outcome StepDisk::removeNote(const std::string& path, const std::string& text)
{
    if (disk::isNothingAt(path))
        return {};
    return holdsNote(path, text) ? ended(disk::removeFile(path))
                                 : Outcome{EBUSY, path + " has changed since"};
}

int StepDisk::removeStaged(const std::string& target, const std::string& stagingName)
{
    const std::string folder = inFolder(parentOf(target), stagingName);
    // Never through a link that somebody has put there, and nothing but what a copy makes.
    if (!disk::isFolder(folder))
        return 0;
    const int error = disk::removeFile(folder + "/copy");
    return error != 0 && error != ENOENT ? error : disk::removeFolder(folder);
}
} // namespace qo::host
