#pragma once

#include "core/runs/MoveStep.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace qo::host
{
/// What a run wants to do and how far it is. Knows no file. Numbers of files and steps must be
/// valid.
class MoveProgress
{
public:
    /// A file that was refused before the run began.
    struct Refusal
    {
        std::string from;
        std::string to;
        std::string why;
    };

    /// A record that goes with a file of the run, or lies in a folder of it.
    struct Record
    {
        std::size_t file = 0;
        std::string below; ///< the path from the folder; "" for the file itself
        std::string id;    ///< lasting
        std::map<std::string, std::string> values; ///< what a new record gets if it has to be made
    };

    /// What stands at the beginning.
    struct Start
    {
        std::string id;
        std::string kind;   ///< the command that began it: "mv", "rm", "add"; "" for a plan
        std::string undoes; ///< the id of the run that is taken back, or ""
        std::vector<std::string> targets; ///< the folders that nothing may leave; none: no limit
        std::vector<std::string> keptFolders;
        std::vector<Refusal> refusals;
        std::vector<MovedFile> files;
        std::vector<Record> records; ///< of what has others than MovedFile::recordId
        std::vector<MoveStep> steps;
    };

    enum class State : std::uint8_t
    {
        waiting,
        begun, ///< the disk may have it
        done,
        skipped, ///< not needed: the folder was there, or is not empty
        failed
    };
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    MoveProgress() = default;
    explicit MoveProgress(Start start);

    const Start& start() const { return m_start; }
    const std::vector<MovedFile>& files() const { return m_start.files; }
    const MovedFile& file(std::size_t file) const { return m_start.files[file]; }
    /// Those of the start, then those that were added.
    std::size_t stepCount() const { return m_start.steps.size(); }
    std::size_t plannedSteps() const { return m_plannedSteps; }
    /// The rights of a folder to be removed are known from its beginning on.
    const MoveStep& step(std::size_t step) const { return m_start.steps[step]; }
    State state(std::size_t step) const { return m_progress[step].state; }
    bool isOpen(std::size_t step) const
    {
        return state(step) != State::done && state(step) != State::skipped;
    }
    const std::string& why(std::size_t step) const { return m_progress[step].why; }
    /// Whether it was begun and not done, or made a copy: something may be left in the folder in
    /// which copies grow.
    bool mayHaveCopy(std::size_t step) const
    {
        return m_progress[step].wasBegun && (state(step) != State::done || copy(step));
    }
    /// Whether no name of the file stood at the step's place when it was begun last.
    bool wasFree(std::size_t step) const { return m_progress[step].wasFree; }
    /// The copy that a move has made; null for none.
    const FileMark* copy(std::size_t step) const;

    /// Where the file is, and as what it is known there.
    const std::string& place(std::size_t file) const;
    const FileMark& mark(std::size_t file) const;
    /// Whether it lies under the temporary name that a planned step has given it.
    bool isWaiting(std::size_t file) const;
    /// How many files are where they shall be; a folder that moves as a whole counts once.
    std::size_t arrived() const;
    /// The same with all the records that such a folder holds.
    std::size_t arrivedFiles() const;
    /// The step that brought it there, npos for none, and the one before a step.
    std::size_t lastMove(std::size_t file) const { return m_lastMoves[file]; }
    std::size_t moveBefore(std::size_t step) const { return m_progress[step].before; }

    /// Steps that moved a file, in the order in which they were done, and how many of them the
    /// collection knows.
    const std::vector<std::size_t>& moves() const { return m_moves; }
    std::size_t applied() const { return m_applied; }

    /// All moves were tried: what is left is to put things in order.
    bool isTried() const { return m_isTried; }
    bool isFinished() const { return m_isFinished; }
    const std::vector<std::string>& notes() const { return m_notes; }

    /// The file is known as that from now on.
    void setMark(std::size_t file, const FileMark& mark);
    void addStep(MoveStep step);
    void begin(std::size_t step, const FolderRights& rights, bool isFree);
    void setCopy(std::size_t step, const FileMark& copy);
    void done(std::size_t step);
    void skipped(std::size_t step) { m_progress[step].state = State::skipped; }
    void failed(std::size_t step, const std::string& why);
    /// The disk does not have it after all. Not for what canBeLost() denies: of a file's moves only
    /// the last, and none that the collection knows.
    void lost(std::size_t step);
    bool canBeLost(std::size_t step) const;
    void addNote(const std::string& note) { m_notes.push_back(note); }
    void tried() { m_isTried = true; }
    /// False, with nothing changed, for a count that cannot be.
    bool setApplied(std::size_t count);
    void finished() { m_isFinished = true; }

private:
    struct Step
    {
        State state = State::waiting;
        bool wasBegun = false;
        bool wasFree = false;
        bool hasCopy = false;
        FileMark copy;
        std::size_t before = npos; ///< of a move: the one before it of the same file
        std::string why;
    };

    Start m_start;
    std::size_t m_plannedSteps = 0;
    std::vector<Step> m_progress;
    std::vector<std::size_t> m_lastMoves; ///< by file
    std::vector<std::size_t> m_moves;
    std::size_t m_applied = 0;
    bool m_isTried = false;
    bool m_isFinished = false;
    std::vector<std::string> m_notes;
};
} // namespace qo::host
