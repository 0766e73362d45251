#pragma once

#include "Analyze/NSAnalyzer.h"
#include "Analyze/Placement.h"

#include <vector>

struct QoFileDbItem;

namespace qo
{
/// A child of a directory, as the votes see it: a file with its record, or a sub-directory with the
/// associations that were stored for it. Both are borrowed and must not change during the count.
struct Voter
{
    using AssocMap = CNSAnalyzer::AssocMap;

    const QoFileDbItem* record = nullptr; ///< null for a directory
    const AssocMap* assocs = nullptr;     ///< of a directory; null for one without associations
    int itemCount = 0; ///< items that it stands for: a sub-directory's whole tree
};
using Voters = std::vector<Voter>;

enum class EVoteCount : int
{
    whole,             ///< related and unrelated count all children
    untilContradicted, ///< a contradicted vote stops counting at the contradiction
};

/// Counts for title, album, artist and genre what the children agree on; one vote for each type, in
/// the order of CNSUtils::m_ltAssocsTypes. False after a cancel; the votes are incomplete then.
///
///   Example: three tracks of the artist "Ann", a cover whose record names nobody,
///   UnrelMaxPercent 20. The artist has 3 related and 1 unrelated item: 1 of 4 is 25 percent, so
///   "tooManyWithout". With four tracks it is 1 of 5, and the vote is "agreed".
bool countVotes(const Voters& voters,
                EVoteCount count,
                IQoProgress* progress,
                std::vector<FolderVote>& votes);
} // namespace qo
