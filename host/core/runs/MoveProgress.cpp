#include "core/runs/MoveProgress.h"

#include <algorithm>

namespace qo::host
{
MoveProgress::MoveProgress(Start start)
    : m_start(std::move(start))
    , m_plannedSteps(m_start.steps.size())
    , m_progress(m_plannedSteps)
    , m_lastMoves(m_start.files.size(), npos)
{
}

const FileMark* MoveProgress::copy(std::size_t step) const
{
    return m_progress[step].hasCopy ? &m_progress[step].copy : nullptr;
}

// A file is where the last move that was done has brought it. Its moves are a chain from the last
// to the first (Step::before), so that one that a power cut undid can be taken off its end.

const std::string& MoveProgress::place(std::size_t file) const
{
    const std::size_t last = m_lastMoves[file];
    return last == npos ? m_start.files[file].from : m_start.steps[last].to;
}

/// A rename keeps what a file is known by; a copy on another disk has a mark of its own, which
/// holds from there on.
const FileMark& MoveProgress::mark(std::size_t file) const
{
    for (std::size_t step = m_lastMoves[file]; step != npos; step = m_progress[step].before)
    {
        if (m_progress[step].hasCopy)
            return m_progress[step].copy;
    }
    return m_start.files[file].mark;
}

void MoveProgress::setMark(std::size_t file, const FileMark& mark)
{
    for (std::size_t step = m_lastMoves[file]; step != npos; step = m_progress[step].before)
    {
        if (!m_progress[step].hasCopy)
            continue;
        m_progress[step].copy = mark;
        return;
    }
    m_start.files[file].mark = mark;
}

/// Steps that were added later bring files home; only planned ones give temporary names.
bool MoveProgress::isWaiting(std::size_t file) const
{
    const std::size_t last = m_lastMoves[file];
    return last != npos && last < m_plannedSteps && place(file) != m_start.files[file].to;
}

void MoveProgress::addStep(MoveStep step)
{
    m_start.steps.push_back(std::move(step));
    m_progress.emplace_back();
}

void MoveProgress::begin(std::size_t step, const FolderRights& rights, bool isFree)
{
    m_progress[step] = {State::begun, true, isFree, false, {}, npos, {}};
    if (m_start.steps[step].kind == MoveStep::Kind::removeFolder)
        m_start.steps[step].rights = rights;
}

void MoveProgress::setCopy(std::size_t step, const FileMark& copy)
{
    m_progress[step].hasCopy = true;
    m_progress[step].copy = copy;
}

void MoveProgress::done(std::size_t step)
{
    Step& progress = m_progress[step];
    if (progress.state == State::done)
        return;
    progress.state = State::done;
    if (m_start.steps[step].kind != MoveStep::Kind::move)
        return;
    std::size_t& last = m_lastMoves[m_start.steps[step].file];
    progress.before = last;
    last = step;
    m_moves.push_back(step);
}

void MoveProgress::failed(std::size_t step, const std::string& why)
{
    m_progress[step].state = State::failed;
    m_progress[step].why = why;
}

void MoveProgress::lost(std::size_t step)
{
    Step& progress = m_progress[step];
    const MoveStep& lostStep = m_start.steps[step];
    if (progress.state == State::done && lostStep.kind == MoveStep::Kind::move)
    {
        m_lastMoves[lostStep.file] = progress.before;
        m_moves.erase(std::remove(m_moves.begin(), m_moves.end(), step), m_moves.end());
    }
    progress = {};
    progress.wasBegun = true;
}

std::size_t MoveProgress::arrived() const
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_start.files.size(); ++i)
        count += place(i) == m_start.files[i].to ? 1 : 0;
    return count;
}

std::size_t MoveProgress::arrivedFiles() const
{
    std::vector<std::size_t> records(m_start.files.size());
    for (const Record& record : m_start.records)
        ++records[record.file];
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_start.files.size(); ++i)
    {
        const bool isFolder = m_start.files[i].what == MovedFile::What::folder;
        if (place(i) == m_start.files[i].to)
            count += isFolder ? std::max<std::size_t>(records[i], 1) : 1;
    }
    return count;
}

bool MoveProgress::canBeLost(std::size_t step) const
{
    const MoveStep& lostStep = m_start.steps[step];
    if (state(step) != State::done || lostStep.kind != MoveStep::Kind::move)
        return state(step) == State::done || state(step) == State::begun;
    return m_lastMoves[lostStep.file] == step &&
           std::find(m_moves.rbegin(),
                     m_moves.rend() - static_cast<std::ptrdiff_t>(m_applied),
                     step) != m_moves.rend() - static_cast<std::ptrdiff_t>(m_applied);
}

/// The collection follows moves in the order in which they were done, so a count says which.
bool MoveProgress::setApplied(std::size_t count)
{
    if (count < m_applied || count > m_moves.size())
        return false;
    m_applied = count;
    return true;
}
} // namespace qo::host
