#pragma once

#include "core/runs/MoveRun.h"
#include "core/runs/StepDisk.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qo::host
{
class MoveProgress;

/// Carries out what is left of a journal: tries all moves, brings home what waits under a temporary
/// name, removes the folders that ran empty.
class MoveRunner
{
public:
    MoveRunner(MoveJournal& journal, const MoveRun::Events& events);

    /// Throws HostError when the journal cannot be written.
    MoveRun::Report run();

    /// Waits until the disks have all the moves. A sentence for each that complains.
    static std::vector<std::string> syncDisks(const MoveProgress& progress);

private:
    using Occupants = std::unordered_map<std::string, std::size_t>; ///< by the key of the place

    bool tryMoves();
    bool isWaitingForDisk();
    bool tryInBatches(const std::vector<std::size_t>& steps);
    bool tryBatch(const std::vector<std::size_t>& batch);
    void perform(std::size_t step);
    void move(std::size_t step);
    void makeFolder(std::size_t step);
    void removeFolder(std::size_t step);
    void writeNote(std::size_t step);
    void removeNote(std::size_t step);
    void dropIdleNotes();
    StepDisk::Outcome tryMove(std::size_t step);
    void noteDone(std::size_t step);
    void keepCount(int error);
    std::string reasonOf(const MoveStep& step, const StepDisk::Outcome& outcome) const;

    /// False when a file still waits under a temporary name.
    bool bringAllHome();
    bool isStillWaiting(std::size_t file) const;
    bool takeAsItIs(std::size_t file);
    void bringHome(std::size_t file, Occupants& occupants);
    bool moveBack(std::size_t file, const std::string& place, Occupants& occupants);

    void removeEmptyFolders();
    void findEmptiedFolders();
    std::size_t lastPhase() const;
    MoveRun::Report report() const;
    bool isStopped();

    MoveJournal& m_journal;
    const MoveProgress& m_progress;
    const MoveRun::Events& m_events;
    StepDisk m_disk;
    bool m_isStopped = false;
    bool m_isSourceAway = false;
    std::size_t m_doneFiles;
    int m_lastError = 0;
    int m_errorsInRow = 0;
    std::unordered_map<std::string, std::string> m_folderTroubles; ///< why not, by folder
    std::unordered_map<std::size_t, std::string> m_fileTroubles;   ///< likewise
    std::unordered_map<std::string, std::size_t> m_taken;          ///< files in places of one key
    std::unordered_set<std::string> m_stuckPlaces;                 ///< of files that do not move
    std::unordered_set<std::string> m_emptied; ///< folders that lost something, or were made
    std::vector<std::string> m_notes;          ///< of this run alone
};
} // namespace qo::host
