#include "core/runs/MoveUndo.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"
#include "core/runs/MoveSteps.h"
#include "core/runs/StepDisk.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using State = MoveProgress::State;

using Deed = MovedFile::Deed;
using What = MovedFile::What;
using Outside = MovedFile::Outside;

/// Without the number of the disk, which may be another one since it was mounted anew.
bool isAlike(const FileMark& now, const FileMark& mark, What what)
{
    return what == What::folder ? now.inode == mark.inode : now.isAlike(mark);
}

/// Whether an earlier undo has brought the file back there.
bool isBack(const std::string& first, const MovedFile& file)
{
    FileMark now;
    return markOf(first, now) == 0 && isAlike(now, file.mark, file.what);
}

/// Why a file that lay there as that cannot go back, "" when it can; then its mark is that of now.
std::string faultOf(MovedFile& file)
{
    const std::string& place = file.from;
    FileMark now;
    const int error = markOf(place, now);
    if (error == ENOENT || error == ENOTDIR)
        return "it is no longer at " + place;
    if (error != 0)
        return place + " cannot be looked at: " + errorWords(error);
    if (!isAlike(now, file.mark, file.what))
        return place + " has changed since";
    file.mark = now;
    if (file.deed == Deed::removeCopy && !isBack(file.to, file))
        return "it may be the only one by now: " + file.to + " is gone or has changed";
    return {};
}

Deed opposite(Deed deed)
{
    return deed == Deed::copy ? Deed::removeCopy : deed == Deed::removeCopy ? Deed::copy : deed;
}

Outside opposite(Outside outside)
{
    return outside == Outside::source   ? Outside::target
           : outside == Outside::target ? Outside::source
                                        : outside;
}

class Undoer
{
public:
    Undoer(const MoveProgress& progress, const std::string& runId);

    MoveProgress::Start start();

private:
    void takeFiles();
    void findFolders();
    void refuseTakenPlaces();
    void takeNotes();
    void refuse(std::size_t file, const std::string& why);
    std::string occupantOf(const MovedFile& file) const;

    const MoveProgress& m_progress;
    MoveProgress::Start m_start;
    std::vector<MovedFile> m_files;
    std::vector<std::string> m_faults;                         ///< by file; "" moves
    std::vector<std::size_t> m_numbers;                        ///< of them in the first run
    std::unordered_map<std::size_t, std::size_t> m_newNumbers; ///< those that go back
    // By the keys of the places, since a disk may find a file under other spellings too.
    std::unordered_multimap<std::string, std::size_t> m_leaving; ///< files by where they are now
    std::unordered_map<std::string, std::size_t> m_returning;    ///< by where they go
    std::vector<std::size_t> m_refused;        ///< whose consequences are still to be drawn
    std::map<std::string, MoveStep> m_folders; ///< what is to be done about each, by path
};

Undoer::Undoer(const MoveProgress& progress, const std::string& runId) : m_progress(progress)
{
    const MoveProgress::Start& first = progress.start();
    m_start.id = runId;
    m_start.kind = first.kind;
    m_start.undoes = first.id;
    // Files go back to where they could lie at first.
    m_start.targets = first.targets;
    auto& targets = m_start.targets;
    for (const std::string& kept : first.keptFolders)
    {
        if (!targets.empty() && std::find(targets.begin(), targets.end(), kept) == targets.end())
            targets.push_back(kept);
    }
    m_start.keptFolders = m_start.targets;
}

MoveProgress::Start Undoer::start()
{
    findFolders();
    takeFiles();
    refuseTakenPlaces();
    for (std::size_t i = 0; i < m_files.size(); ++i)
    {
        if (m_faults[i].empty())
        {
            m_newNumbers[m_numbers[i]] = m_start.files.size();
            m_start.files.push_back(std::move(m_files[i]));
        }
        else
            m_start.refusals.push_back({m_files[i].from, m_files[i].to, m_faults[i]});
    }
    std::vector<MoveStep> make;
    std::vector<MoveStep> remove;
    for (const auto& [path, step] : m_folders)
        (step.kind == Kind::makeFolder ? make : remove).push_back(step);
    m_start.steps = MoveSteps::inOrder(m_start.files, make, remove, m_start.id);
    for (MoveProgress::Record record : m_progress.start().records)
    {
        const auto number = m_newNumbers.find(record.file);
        if (number == m_newNumbers.end())
            continue;
        record.file = number->second;
        m_start.records.push_back(std::move(record));
    }
    takeNotes();
    return std::move(m_start);
}

/// Notes that were written go after their files, those that were removed come back before them.
void Undoer::takeNotes()
{
    std::vector<MoveStep> written;
    std::vector<MoveStep> removed;
    for (std::size_t number = 0; number < m_progress.stepCount(); ++number)
    {
        MoveStep step = m_progress.step(number);
        const auto file = m_newNumbers.find(step.file);
        if ((step.kind != Kind::writeNote && step.kind != Kind::removeNote) ||
            m_progress.state(number) != State::done || file == m_newNumbers.end())
            continue;
        step.file = file->second;
        const bool wasWritten = step.kind == Kind::writeNote;
        step.kind = wasWritten ? Kind::removeNote : Kind::writeNote;
        (wasWritten ? removed : written).push_back(std::move(step));
    }
    auto& steps = m_start.steps;
    auto end = steps.end();
    while (end != steps.begin() && std::prev(end)->kind == Kind::removeFolder)
        --end;
    steps.insert(end, removed.begin(), removed.end());
    steps.insert(steps.begin(), written.begin(), written.end());
}

/// What was made and removed again leaves nothing to do.
void Undoer::findFolders()
{
    for (std::size_t number = 0; number < m_progress.stepCount(); ++number)
    {
        const MoveStep& step = m_progress.step(number);
        if ((step.kind != Kind::makeFolder && step.kind != Kind::removeFolder) ||
            m_progress.state(number) != State::done)
            continue;
        if (m_folders.erase(step.to) > 0)
            continue;
        const bool wasMade = step.kind == Kind::makeFolder;
        MoveStep& back = m_folders[step.to];
        back.kind = wasMade ? Kind::removeFolder : Kind::makeFolder;
        back.to = step.to;
        back.rights = wasMade ? FolderRights() : step.rights;
        back.isOurs = wasMade;
    }
}

/// Those that are elsewhere than at first, with their ways turned round. One that an earlier undo
/// has brought back needs nothing.
void Undoer::takeFiles()
{
    for (std::size_t i = 0; i < m_progress.files().size(); ++i)
    {
        const std::string& first = m_progress.file(i).from;
        const std::string& place = m_progress.place(i);
        if (place == first)
            continue;
        MovedFile file = m_progress.file(i);
        file.from = place;
        file.to = first;
        file.mark = m_progress.mark(i);
        file.deed = opposite(file.deed);
        file.outside = opposite(file.outside);
        file.targetDevice = 0;
        const std::string fault = faultOf(file);
        if (!fault.empty() && isBack(first, file))
            continue;
        m_faults.push_back(fault);
        if (file.deed != Deed::copy)
            m_leaving.emplace(sameNameKey(place), m_files.size());
        m_returning.emplace(sameNameKey(first), m_files.size());
        m_numbers.push_back(i);
        m_files.push_back(std::move(file));
    }
}

/// A file that stays keeps its place from the one that wants to go back there, which then keeps its
/// own place from the next.
///
/// Example: the run took b to c and a to b, and somebody has put another file at a. So what lies at
/// b cannot go back to a, and then what lies at c cannot go back to b.
void Undoer::refuseTakenPlaces()
{
    for (std::size_t i = 0; i < m_files.size(); ++i)
    {
        if (!m_faults[i].empty())
            m_refused.push_back(i);
        else if (const std::string occupant = occupantOf(m_files[i]); !occupant.empty())
            refuse(i, occupant);
    }
    while (!m_refused.empty())
    {
        const std::size_t stays = m_refused.back();
        m_refused.pop_back();
        const auto waits = m_returning.find(sameNameKey(m_files[stays].from));
        FileMark mark;
        if (waits != m_returning.end() && m_faults[waits->second].empty() &&
            markOf(m_files[stays].from, mark) == 0)
            refuse(waits->second,
                   "its first place " + m_files[waits->second].to +
                       " is still taken by a file that does not go back");
    }
}

void Undoer::refuse(std::size_t file, const std::string& why)
{
    m_faults[file] = why;
    m_refused.push_back(file);
}

/// What takes the file's place for good, as a clause; "" for nothing.
std::string Undoer::occupantOf(const MovedFile& file) const
{
    const std::string& place = file.to;
    NameInfo info;
    if (file.deed == Deed::removeCopy || disk::look(place, info) != 0)
        return {};
    const auto [first, last] = m_leaving.equal_range(sameNameKey(place));
    for (auto leaving = first; leaving != last; ++leaving)
    {
        // Either the file itself, perhaps under another spelling, or another one beside it.
        const MovedFile& other = m_files[leaving->second];
        if (other.from == place || disk::isSameEntry(other.from, place))
            return {};
    }
    const auto folder = m_folders.find(place);
    if (info.kind == NameInfo::Kind::directory && folder != m_folders.end() &&
        folder->second.kind == Kind::removeFolder)
        return {};
    return "its first place " + place + " is taken";
}
} // namespace

MoveProgress::Start MoveUndo::startFor(const MoveProgress& progress, const std::string& runId)
{
    return Undoer(progress, runId).start();
}
} // namespace qo::host
