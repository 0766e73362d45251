#include "core/runs/MoveRecovery.h"

#include "core/base/Disk.h"
#include "core/base/SystemPath.h"
#include "core/runs/StepDisk.h"

#include <cerrno>
#include <set>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using State = MoveProgress::State;

/// Where a disk cannot rename without replacing, a file has both its names for a moment. Not when
/// one name in one folder is merely found under two spellings.
bool hasBothNames(const MoveStep& step)
{
    NameInfo from;
    if (disk::look(step.from, from) != 0 || !disk::isSameEntry(step.from, step.to) ||
        from.kind != NameInfo::Kind::regular || from.links < 2)
        return false;
    NameInfo fromFolder;
    NameInfo toFolder;
    return parentOf(step.from) == parentOf(step.to) ||
           (disk::lookAtFolder(parentOf(step.from), fromFolder) == 0 &&
            disk::lookAtFolder(parentOf(step.to), toFolder) == 0 &&
            (fromFolder.device != toFolder.device || fromFolder.inode != toFolder.inode));
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
        if (progress.step(step).kind == Kind::move && progress.state(step) == State::begun)
            m_begun[progress.step(step).file].push_back(step);
    }
    for (std::size_t step = 0; step < progress.stepCount(); ++step)
    {
        const bool isMove = progress.step(step).kind == Kind::move;
        if (progress.state(step) == State::begun ||
            (progress.state(step) == State::done && !isMove))
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
            NameInfo info;
            if (folders.insert(parentOf(*path)).second &&
                disk::lookAtFolder(parentOf(*path), info) == 0)
                m_disks.insert(info.device);
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
bool MoveRecovery::isFileAt(const std::string& path,
                            const FileMark& mark,
                            MovedFile::What what) const
{
    FileMark now;
    return markOf(path, now) == 0 && now.inode == mark.inode && isSameDisk(now, mark) &&
           (now.device == mark.device || what == MovedFile::What::folder || now.isAlike(mark));
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
            (void)StepDisk::removeStaged(step.to, stagingName(progress.start().id, number));
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
        if (StepDisk::isUnchanged(now, mark, progress.file(file).what))
            m_journal.known(file, now);
    }
}

void MoveRecovery::findLostMoves()
{
    const MoveProgress& progress = m_journal.progress();
    std::set<std::size_t> files;
    for (std::size_t i = progress.applied(); i < progress.moves().size(); ++i)
        files.insert(progress.step(progress.moves()[i]).file);
    for (const std::size_t file : files)
        findLostMove(file);
}

/// A file that lies where it was some moves ago has not made them.
void MoveRecovery::findLostMove(std::size_t file)
{
    const MoveProgress& progress = m_journal.progress();
    const MovedFile::What what = progress.file(file).what;
    if (progress.file(file).deed != MovedFile::Deed::move ||
        isFileAt(progress.place(file), progress.mark(file), what))
        return;
    std::size_t count = 0;
    for (std::size_t step = progress.lastMove(file);
         step != MoveProgress::npos && !progress.copy(step);
         step = progress.moveBefore(step))
    {
        ++count;
        const std::string& earlier = progress.step(step).from;
        if (!isFileAt(earlier, progress.mark(file), what) || hasTwinAt(earlier, file))
            continue;
        for (; count > 0 && progress.canBeLost(progress.lastMove(file)); --count)
            m_journal.lost(progress.lastMove(file));
        return;
    }
}

// Names of one file (hard links) cannot be told apart by what lies there, only by which of them
// could have come to a place.
//
// Example: X and Y are one file, the run takes Y to Z and then X to Y. After a power cut the
// journal knows that both began, and the disk has Y and Z. Y is not the name that the first step
// left behind when it was making the new one: X is gone, and the second step brings it to Y.

/// Whether the journal says that another file of the run, of the same mark, is there.
bool MoveRecovery::hasTwinAt(const std::string& path, std::size_t file) const
{
    const MoveProgress& progress = m_journal.progress();
    const FileMark& mark = progress.mark(file);
    for (std::size_t other = 0; other < progress.files().size(); ++other)
    {
        const FileMark& otherMark = progress.mark(other);
        if (other != file && otherMark.inode == mark.inode && otherMark.device == mark.device &&
            progress.place(other) == path)
            return true;
    }
    return false;
}

/// Whether another file of the run has left its place for that one, as far as the disk shows.
bool MoveRecovery::hasTwinComeTo(const std::string& path, std::size_t file) const
{
    const MoveProgress& progress = m_journal.progress();
    for (std::size_t number = 0; number < progress.stepCount(); ++number)
    {
        const MoveStep& step = progress.step(number);
        if (step.kind == Kind::move && step.file != file && step.to == path &&
            progress.state(number) != State::waiting && disk::isNothingAt(step.from))
            return true;
    }
    return false;
}

void MoveRecovery::settleStep(std::size_t number)
{
    const bool isDone = isStepDone(number);
    if (isDone == (m_journal.progress().state(number) == State::done))
        return;
    if (isDone)
        m_journal.done(number);
    else
        m_journal.lost(number);
}

bool MoveRecovery::isStepDone(std::size_t number) const
{
    const MoveStep& step = m_journal.progress().step(number);
    switch (step.kind)
    {
    case Kind::makeFolder:
        return disk::isFolder(step.to);
    case Kind::removeFolder:
    case Kind::removeNote:
        return disk::isNothingAt(step.to);
    case Kind::writeNote:
        return StepDisk::holdsNote(step.to, step.text);
    default:
        return settleMove(number);
    }
}

bool MoveRecovery::settleMove(std::size_t number) const
{
    const MoveProgress& progress = m_journal.progress();
    const MoveStep& step = progress.step(number);
    const MovedFile& file = progress.file(step.file);
    const FileMark& mark = progress.mark(step.file);
    if (file.deed == MovedFile::Deed::removeCopy)
        return disk::isNothingAt(step.from) && !disk::isNothingAt(step.to);
    if (const FileMark* copy = progress.copy(number))
        return settleCopy(step, mark, *copy);
    // Begun along with others, but its file was not yet there: what lies at its end is another's.
    if (progress.place(step.file) != step.from || file.deed == MovedFile::Deed::copy)
        return false;
    // A second name that stood there before the step began is the user's own.
    if (isFileAt(step.from, mark, file.what))
        return progress.wasFree(number) && hasBothNames(step) &&
               (hasTwinComeTo(step.from, step.file) || disk::removeFile(step.from) == 0);
    const bool canBeKnown = file.what != MovedFile::What::folder && disk::isNothingAt(step.from);
    return isFileAt(step.to, mark, file.what) || (canBeKnown && isLikelyAt(step.to, mark)) ||
           hasGoneOn(number);
}

/// A power cut may take the lines that say that steps were done, and leave that several of one
/// file were begun: the file may have gone on from the place where this step left it.
bool MoveRecovery::hasGoneOn(std::size_t number) const
{
    const MoveProgress& progress = m_journal.progress();
    const std::size_t file = progress.step(number).file;
    std::string place = progress.step(number).to;
    const auto begun = m_begun.find(file);
    if (begun == m_begun.end())
        return false;
    const bool isGone = disk::isNothingAt(progress.step(number).from);
    for (const std::size_t later : begun->second)
    {
        const MoveStep& step = progress.step(later);
        if (later <= number || step.from != place)
            continue;
        const FileMark* const copy = progress.copy(later);
        place = step.to;
        if (isFileAt(place, copy ? *copy : progress.mark(file), progress.file(file).what) ||
            (isGone && isLikelyAt(place, progress.mark(file))))
            return true;
    }
    return false;
}

/// Goes on with a move that was interrupted when the copy was there already; else takes it back.
bool MoveRecovery::settleCopy(const MoveStep& step,
                              const FileMark& mark,
                              const FileMark& copy) const
{
    const MovedFile& file = m_journal.progress().file(step.file);
    if (!isFileAt(step.to, copy, file.what))
        return false;
    if (disk::isNothingAt(step.from) || file.deed == MovedFile::Deed::copy)
        return true;
    const bool isCopySame = isUnchangedAt(step.to, copy);
    if (isUnchangedAt(step.from, mark) && isCopySame && disk::sync(parentOf(step.to)) == 0 &&
        disk::removeFile(step.from) == 0)
        return true;
    if (isCopySame)
        (void)disk::removeFile(step.to);
    return false;
}
} // namespace qo::host
