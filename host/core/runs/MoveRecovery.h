#pragma once

#include "core/runs/MoveJournal.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qo::host
{
/// Brings a journal into line with the disk after its process was ended or the power was cut: what
/// has begun is looked for under both its names, and what the journal calls done is looked for too,
/// since the two may lie on different disks. What a copy has left half-way is removed. Afterwards
/// every file is in one place, the one that the journal says, as far as others have not touched it.
class MoveRecovery
{
public:
    explicit MoveRecovery(MoveJournal& journal);

    /// Throws HostError when the journal cannot be written.
    void settle();

    /// The name of the folder in which the copy of a step grows.
    static std::string stagingName(const std::string& runId, std::size_t step);

private:
    void removeCopiesBegun() const;
    void followDisks();
    void findDisks();
    bool isSameDisk(const FileMark& now, const FileMark& mark) const;
    bool isFileAt(const std::string& path, const FileMark& mark, MovedFile::What what) const;
    bool isUnchangedAt(const std::string& path, const FileMark& mark) const;
    void findLostMoves();
    void findLostMove(std::size_t file);
    bool hasTwinAt(const std::string& path, std::size_t file) const;
    bool hasTwinComeTo(const std::string& path, std::size_t file) const;
    void settleStep(std::size_t step);
    bool isStepDone(std::size_t step) const;
    bool settleMove(std::size_t step) const;
    bool hasGoneOn(std::size_t step) const;
    bool settleCopy(const MoveStep& step, const FileMark& mark, const FileMark& copy) const;

    MoveJournal& m_journal;
    std::unordered_set<std::uint64_t> m_disks; ///< those that the places of the run are on
    std::unordered_map<std::size_t, std::vector<std::size_t>> m_begun; ///< moves, by file
};
} // namespace qo::host
