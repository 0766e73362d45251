#include "core/runs/MoveUndo.h"

#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/runs/MoveSteps.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>
#include <unordered_map>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using State = MoveProgress::State;

/// Whether an earlier undo has brought the file back there.
bool isBack(const std::string& first, const FileMark& mark)
{
    FileMark now;
    return markOf(first, now) == 0 && now.isAlike(mark);
}

/// Why a file that lay there as that cannot go back, "" when it can; then its mark is that of now.
std::string faultOf(const std::string& place, FileMark& mark)
{
    FileMark now;
    const int error = markOf(place, now);
    if (error == ENOENT || error == ENOTDIR)
        return "it is no longer at " + place;
    if (error != 0)
        return place + " cannot be looked at: " + errorWords(error);
    if (!now.isAlike(mark))
        return place + " has changed since";
    mark = now;
    return {};
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
    void refuse(std::size_t file, const std::string& why);
    std::string occupantOf(const std::string& place) const;

    const MoveProgress& m_progress;
    MoveProgress::Start m_start;
    std::vector<MovedFile> m_files;
    std::vector<std::string> m_faults;                        ///< by file; "" moves
    std::unordered_map<std::string, std::size_t> m_leaving;   ///< files by where they are now
    std::unordered_map<std::string, std::size_t> m_returning; ///< by where they go
    /// The same files by device and inode, for a disk that finds them under other spellings too.
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_leavingFiles;
    std::vector<std::size_t> m_refused;        ///< whose consequences are still to be drawn
    std::map<std::string, MoveStep> m_folders; ///< what is to be done about each, by path
};

Undoer::Undoer(const MoveProgress& progress, const std::string& runId) : m_progress(progress)
{
    m_start.id = runId;
    m_start.undoes = progress.start().id;
}

MoveProgress::Start Undoer::start()
{
    findFolders();
    takeFiles();
    refuseTakenPlaces();
    for (std::size_t i = 0; i < m_files.size(); ++i)
    {
        if (m_faults[i].empty())
            m_start.files.push_back(std::move(m_files[i]));
        else
            m_start.refusals.push_back({m_files[i].from, m_files[i].to, m_faults[i]});
    }
    std::vector<MoveStep> make;
    std::vector<MoveStep> remove;
    for (const auto& [path, step] : m_folders)
        (step.kind == Kind::makeFolder ? make : remove).push_back(step);
    m_start.steps = MoveSteps::inOrder(m_start.files, make, remove, m_start.id);
    return std::move(m_start);
}

/// What was made and removed again leaves nothing to do.
void Undoer::findFolders()
{
    for (std::size_t number = 0; number < m_progress.stepCount(); ++number)
    {
        const MoveStep& step = m_progress.step(number);
        if (step.kind == Kind::move || m_progress.state(number) != State::done)
            continue;
        if (m_folders.erase(step.to) > 0)
            continue;
        const bool wasMade = step.kind == Kind::makeFolder;
        m_folders[step.to] = {wasMade ? Kind::removeFolder : Kind::makeFolder,
                              0,
                              {},
                              step.to,
                              wasMade ? FolderRights() : step.rights,
                              wasMade};
    }
}

void Undoer::takeFiles()
{
    for (std::size_t i = 0; i < m_progress.files().size(); ++i)
    {
        const std::string& first = m_progress.file(i).from;
        const std::string& place = m_progress.place(i);
        if (place == first)
            continue;
        MovedFile file{place, first, m_progress.mark(i), m_progress.file(i).recordId};
        const std::string fault = faultOf(place, file.mark);
        if (!fault.empty() && isBack(first, file.mark))
            continue;
        m_faults.push_back(fault);
        m_leaving.emplace(place, m_files.size());
        if (m_faults.back().empty())
            m_leavingFiles.emplace(file.mark.device, file.mark.inode);
        m_returning.emplace(first, m_files.size());
        m_files.push_back(std::move(file));
    }
}

void Undoer::refuseTakenPlaces()
{
    for (std::size_t i = 0; i < m_files.size(); ++i)
    {
        if (!m_faults[i].empty())
            m_refused.push_back(i);
        else if (const std::string occupant = occupantOf(m_files[i].to); !occupant.empty())
            refuse(i, occupant);
    }
    while (!m_refused.empty())
    {
        const std::size_t stays = m_refused.back();
        m_refused.pop_back();
        const auto waits = m_returning.find(m_files[stays].from);
        FileMark mark;
        if (waits != m_returning.end() && m_faults[waits->second].empty() &&
            markOf(m_files[stays].from, mark) == 0)
            refuse(waits->second,
                   "its first place " + waits->first +
                       " is still taken by a file that does not go back");
    }
}

void Undoer::refuse(std::size_t file, const std::string& why)
{
    m_faults[file] = why;
    m_refused.push_back(file);
}

/// What takes a place for good, as a clause; "" for nothing.
std::string Undoer::occupantOf(const std::string& place) const
{
    struct stat st;
    if (::lstat(place.c_str(), &st) != 0 || m_leaving.contains(place) ||
        m_leavingFiles.contains({st.st_dev, st.st_ino}))
        return {};
    const auto folder = m_folders.find(place);
    if (S_ISDIR(st.st_mode) && folder != m_folders.end() &&
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
