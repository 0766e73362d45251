#pragma once

#include "Analyze/NSAnalyzer.h"
#include "Analyze/Placement.h"

namespace qo
{
/// How many items each child stands for, in the order of the children.
using ItemCounts = std::vector<int>;

/// The votes of all types; in one walk over the children for each. False after a cancel.
bool countVotes(const CNSAnalyzer::ObjectList& children,
                const ItemCounts& itemCounts,
                CMapStringToPtr& store,
                IQoProgress* progress,
                std::vector<FolderVote>& votes);
} // namespace qo
