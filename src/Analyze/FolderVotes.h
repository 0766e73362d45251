#pragma once

#include "Analyze/NSAnalyzer.h"
#include "Analyze/Placement.h"

#include <vector>

struct QoFileDbItem;

namespace qo
{
/// A child of a directory. What it says is read in place: it must not change while votes count.
struct Voter
{
    using AssocMap = CNSAnalyzer::AssocMap;

    const QoFileDbItem* record = nullptr; ///< null for a directory
    const AssocMap* assocs = nullptr;     ///< of a directory; null for one that says nothing
    int itemCount = 0;                    ///< how many items it stands for
};
using Voters = std::vector<Voter>;

enum class EVoteCount : int
{
    whole,             ///< related and unrelated are those of all children
    untilContradicted, ///< or, in a contradicted vote, those up to the contradiction
};

/// The votes of all types; in one walk over the children for each. False after a cancel.
bool countVotes(const Voters& voters,
                EVoteCount count,
                IQoProgress* progress,
                std::vector<FolderVote>& votes);
} // namespace qo
