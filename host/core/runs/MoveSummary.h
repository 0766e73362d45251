#pragma once

#include "core/runs/MoveProgress.h"

#include <cstddef>
#include <string>

namespace qo::host
{
/// What the journal of a run says, at this moment, to one who only looks: nothing is locked,
/// settled or changed.
struct MoveSummary
{
    std::string undoes;    ///< the id of the run that it takes back, or ""
    std::string kind;      ///< see MoveProgress::Start
    std::size_t moved = 0; ///< files that reached their place
    std::size_t away = 0;  ///< those that did not, an undo's refused ones among them

    /// Throws HostError for what cannot be read or is no journal.
    static MoveSummary read(const std::string& journal);
    static MoveProgress progressOf(const std::string& journal);
};
} // namespace qo::host
