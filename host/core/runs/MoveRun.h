#pragma once

#include "core/plan/ReorganizePlan.h"
#include "core/runs/MoveProgress.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qo::host
{
class MoveJournal;

/// Files on their way to other places, each step of it noted in a journal before and after, so that
/// a run that was cut short at any point goes on, or is taken back, from the journal alone. Nothing
/// is ever overwritten: a file is renamed only where no name stands; to another file system it is
/// copied, the copy is made durable and compared, and only then the source removed. Where files
/// change places, and where names differ in case or in Unicode form alone, they go through a
/// temporary name beside the source. Folders are made as they are needed, a target only when the
/// kept folder above it stands; those that run empty are removed at the end, up to the first that
/// is kept. Knows nothing of the collection. Not for
/// several threads at once.
class MoveRun
{
public:
    /// The folders that nothing may leave, and those in which files may lie at first besides. No
    /// targets: those that the journal names itself, which whoever edits it may change.
    struct Bounds
    {
        std::vector<std::string> targets;
        std::vector<std::string> sources;
    };

    /// What the caller wants to hear. All may be empty.
    struct Events
    {
        std::function<bool()> stop; ///< asked before each step and while a copy runs
        std::function<void(std::size_t done, std::size_t all, const std::string& path)> progress;
        Bounds bounds;
    };

    struct Failure
    {
        std::string from;
        std::string to;
        std::string reason; ///< a clause that a person reads: "the file has changed since the plan"
    };

    struct Report
    {
        std::size_t moved = 0; ///< files, with those in moved folders, that reached their place, in
                               ///< this run and those before
        std::vector<Failure> failures;
        /// Otherwise it can go on: it was stopped, or a disk is away, as a note then says.
        bool isFinished = false;
        std::vector<std::string> notes; ///< sentences about what is left to be done by hand
    };

    /// Where a file is now, and where the collection believes it to be.
    struct Place
    {
        std::size_t file = 0; ///< its number in the run
        std::string from;     ///< the place that the collection knows
        std::string to;       ///< where the file is; after a stop it may be a temporary name
    };

    /// Begins a journal at that path, which must be free, for the files of the plan that are to
    /// move: from the targets and kept folders into the targets. Throws HostError with nothing
    /// done.
    static std::unique_ptr<MoveRun> begin(const std::string& journal, const ReorganizePlan& plan);
    /// Begins a journal that takes back what another one, finished or not, has done: files go back
    /// to where they were at first, folders that were removed are made again and those that were
    /// made are removed. A file that has changed since stays, and so does what depends on it; they
    /// are the first failures of the report. Throws HostError, with no journal made, when there are
    /// files to go back and none can. What an undo has left away a later one of the same journal
    /// may take back.
    static std::unique_ptr<MoveRun> beginUndo(const std::string& journal,
                                              const std::string& ofJournal);
    /// What that journal would begin with; nothing is changed. Throws HostError likewise.
    static MoveProgress::Start startOfUndo(const std::string& ofJournal);
    /// Begins a journal of any other kind.
    static std::unique_ptr<MoveRun> begin(const std::string& journal, MoveProgress::Start start);
    /// Takes up a journal where it stopped. Throws HostError for what is no journal.
    static std::unique_ptr<MoveRun> open(const std::string& journal);
    ~MoveRun();

    /// Goes on to the end, or to the stop. Stays open also when no file could be moved and some are
    /// not where they were, and when one still waits under a temporary name. Looks at every source
    /// again just before it moves; one that is not as it was stays, with what depends on it, and
    /// the rest goes on. Throws HostError when the journal itself cannot be written: then nothing
    /// further is done.
    Report run(const Events& events);

    bool isFinished() const;
    /// The files that are elsewhere than the collection knows, each once.
    std::vector<Place> notApplied() const;
    /// Waits until the disks have all the moves, so that what the collection knows of them stays
    /// true in a power cut. What the disks complain of becomes a note.
    void sync();
    /// Notes, durably, that the collection knows all that notApplied() gave. Does sync() when
    /// nobody did since the last run().
    void setApplied();
    const MoveProgress::Start& start() const;
    /// Ends a run that was stopped before it did anything; false if it did.
    bool dropIfUntouched();
    /// Whether the file has reached its last place.
    bool hasArrived(std::size_t file) const;
    /// How many files have reached their place in all.
    std::size_t moved() const;
    /// How many have not, with those that an undo had to leave where they were from the beginning.
    std::size_t refused() const;
    /// For the list of runs.
    std::string undoes() const; ///< the id of the run that this one takes back, or ""

private:
    explicit MoveRun(std::unique_ptr<MoveJournal> journal);

    std::unique_ptr<MoveJournal> m_journal;
    bool m_isSynced = false;
};
} // namespace qo::host
