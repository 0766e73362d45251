#include "core/runs/MoveRecovery.h"

#include "core/base/DiskSync.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Kernel.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using State = MoveProgress::State;

bool isFolder(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isSameEntry(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Where a disk cannot rename without replacing, a file has both its names for a moment. Not when
/// one name in one folder is merely found under two spellings.
bool hasBothNames(const MoveStep& step)
{
    struct stat from;
    struct stat to;
    if (::lstat(step.from.c_str(), &from) != 0 || ::lstat(step.to.c_str(), &to) != 0 ||
        !isSameEntry(from, to) || !S_ISREG(from.st_mode) || from.st_nlink < 2)
        return false;
    const std::string fromFolder = parentOf(step.from);
    const std::string toFolder = parentOf(step.to);
    return fromFolder == toFolder || (::stat(fromFolder.c_str(), &from) == 0 &&
                                      ::stat(toFolder.c_str(), &to) == 0 && !isSameEntry(from, to));
}

/// Some file systems number their files anew each time they are mounted.
bool isLikelyAt(const std::string& path, const FileMark& mark)
{
    FileMark now;
    return markOf(path, now) == 0 && now.isAlike(mark);
}
} // namespace

MoveRecovery::MoveRecovery(MoveJournal& journal) : m_journal(journal) {}

std::string MoveRecovery::stagingName(const std::string& runId, std::size_t step)
{
    return ".qo-" + runId + "-copy-" + std::to_string(step);
}

void MoveRecovery::settle()
{
    const MoveProgress& progress = m_journal.progress();
    removeCopiesBegun();
    if (progress.isFinished())
        return;
    findDisks();
    findLostMoves();
    for (std::size_t step = 0; step < progress.stepCount(); ++step)
    {
        const bool isFolderStep = progress.step(step).kind != Kind::move;
        if (progress.state(step) == State::begun ||
            (progress.state(step) == State::done && isFolderStep))
            settleStep(step);
    }
    followDisks();
}

void MoveRecovery::findDisks()
{
    const MoveProgress& progress = m_journal.progress();
    std::unordered_set<std::string> folders;
    for (std::size_t file = 0; file < progress.files().size(); ++file)
    {
        for (const std::string* path : {&progress.file(file).from, &progress.file(file).to})
        {
            struct stat st;
            if (folders.insert(parentOf(*path)).second && ::stat(parentOf(*path).c_str(), &st) == 0)
                m_disks.insert(st.st_dev);
        }
    }
}

/// A disk may bear another number after it was mounted anew; but then none of those that are there
/// bears its old one. Two disks may well have files of one number, size and time.
bool MoveRecovery::isSameDisk(const FileMark& now, const FileMark& mark) const
{
    return now.device == mark.device || !m_disks.contains(mark.device);
}

/// Whether the file of that mark lies there, perhaps edited since.
bool MoveRecovery::isFileAt(const std::string& path, const FileMark& mark) const
{
    FileMark now;
    return markOf(path, now) == 0 && now.inode == mark.inode && isSameDisk(now, mark) &&
           (now.device == mark.device || now.isAlike(mark));
}

bool MoveRecovery::isUnchangedAt(const std::string& path, const FileMark& mark) const
{
    FileMark now;
    return markOf(path, now) == 0 && now.inode == mark.inode && isSameDisk(now, mark) &&
           now.isAlike(mark);
}

/// Also long after the run: the disk may have been away until now.
void MoveRecovery::removeCopiesBegun() const
{
    const MoveProgress& progress = m_journal.progress();
    for (std::size_t number = 0; number < progress.stepCount(); ++number)
    {
        const MoveStep& step = progress.step(number);
        if (step.kind == Kind::move && progress.mayHaveCopy(number))
            TreeCopy(fromSystemPath(step.from),
                     fromSystemPath(step.to),
                     stagingName(progress.start().id, number))
                .removeStaged();
    }
}

/// Files that may move again, on a disk that has another number since it was mounted anew.
void MoveRecovery::followDisks()
{
    const MoveProgress& progress = m_journal.progress();
    for (std::size_t file = 0; file < progress.files().size(); ++file)
    {
        FileMark mark = progress.mark(file);
        FileMark now;
        if (markOf(progress.place(file), now) != 0 || now.device == mark.device ||
            !isSameDisk(now, mark))
            continue;
        mark.device = now.device;
        if (now == mark)
            m_journal.known(file, now);
    }
}

void MoveRecovery::findLostMoves()
{
    const MoveProgress& progress = m_journal.progress();
    std::set<std::size_t> files;
    for (std::size_t i = progress.told(); i < progress.moves().size(); ++i)
        files.insert(progress.step(progress.moves()[i]).file);
    for (const std::size_t file : files)
        findLostMove(file);
}

/// A file that lies where it was some moves ago has not made them.
void MoveRecovery::findLostMove(std::size_t file)
{
    const MoveProgress& progress = m_journal.progress();
    if (isFileAt(progress.place(file), progress.mark(file)))
        return;
    std::size_t count = 0;
    for (std::size_t step = progress.lastMove(file);
         step != MoveProgress::npos && !progress.copy(step);
         step = progress.moveBefore(step))
    {
        ++count;
        if (!isFileAt(progress.step(step).from, progress.mark(file)))
            continue;
        for (; count > 0 && progress.canBeLost(progress.lastMove(file)); --count)
            m_journal.lost(progress.lastMove(file));
        return;
    }
}

void MoveRecovery::settleStep(std::size_t number)
{
    const MoveProgress& progress = m_journal.progress();
    const MoveStep& step = progress.step(number);
    const bool isDone = step.kind == Kind::move         ? settleMove(number)
                        : step.kind == Kind::makeFolder ? isFolder(step.to)
                                                        : isNothingAt(step.to);
    if (isDone == (progress.state(number) == State::done))
        return;
    if (isDone)
        m_journal.done(number);
    else
        m_journal.lost(number);
}

bool MoveRecovery::settleMove(std::size_t number) const
{
    const MoveProgress& progress = m_journal.progress();
    const MoveStep& step = progress.step(number);
    const FileMark& mark = progress.mark(step.file);
    if (const FileMark* copy = progress.copy(number))
        return settleCopy(step, mark, *copy);
    // Begun along with others, but its file was not yet there: what lies at its end is another's.
    if (progress.place(step.file) != step.from)
        return false;
    if (isFileAt(step.from, mark))
        return hasBothNames(step) && ::unlink(step.from.c_str()) == 0;
    return isFileAt(step.to, mark) || (isNothingAt(step.from) && isLikelyAt(step.to, mark));
}

/// Goes on with a move that was interrupted when the copy was there already; else takes it back.
bool MoveRecovery::settleCopy(const MoveStep& step,
                              const FileMark& mark,
                              const FileMark& copy) const
{
    if (!isFileAt(step.to, copy))
        return false;
    if (isNothingAt(step.from))
        return true;
    const bool isCopySame = isUnchangedAt(step.to, copy);
    if (isUnchangedAt(step.from, mark) && isCopySame && syncFolder(parentOf(step.to)) == 0 &&
        ::unlink(step.from.c_str()) == 0)
        return true;
    if (isCopySame)
        ::unlink(step.to.c_str());
    return false;
}
} // namespace qo::host
