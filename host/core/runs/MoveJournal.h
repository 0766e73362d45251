#pragma once

#include "core/runs/MoveProgress.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qo::host
{
class JournalFile;

/// The progress of a run in a file of JSON lines, which has every change before the call
/// returns; what is called durable the disk has by then. One process at a time has a journal. All
/// calls throw HostError when the file cannot be written. Not for several threads at once.
class MoveJournal
{
public:
    /// Durable. The path must be free.
    static std::unique_ptr<MoveJournal> make(const std::string& path, MoveProgress::Start start);
    /// Throws HostError also for what is no journal.
    static std::unique_ptr<MoveJournal> open(const std::string& path);
    ~MoveJournal();

    const std::string& path() const;
    const MoveProgress& progress() const { return m_progress; }

    /// A step that the start did not know; its number.
    std::size_t addStep(const MoveStep& step);
    /// Steps that will be done next, all at once. Durable. Notes of each move whether its new place
    /// is free of other names of its file, which those of a file with hard links may be.
    void begin(const std::vector<std::size_t>& steps);
    /// How a step went. A copy is noted, durably, before it is put in its place.
    void copied(std::size_t step, const FileMark& copy);
    void done(std::size_t step);
    void skipped(std::size_t step);
    void failed(std::size_t step, const std::string& why);
    void lost(std::size_t step);

    /// Where the file is it lies as that.
    void known(std::size_t file, const FileMark& mark);
    void note(const std::string& sentence);
    void tried();
    void applied();  ///< the collection knows all moves; durable
    void finished(); ///< durable

private:
    MoveJournal(std::unique_ptr<JournalFile> file, MoveProgress progress);

    std::unique_ptr<JournalFile> m_file;
    MoveProgress m_progress;
};
} // namespace qo::host
