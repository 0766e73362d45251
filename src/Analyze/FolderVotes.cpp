#include "Analyze/FolderVotes.h"

#include "Analyze/BottomUp.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

// One vote: the value of the first child that has one becomes the candidate, and each further child
// agrees, goes without a value, or contradicts. A contradiction decides at once. An agreed value
// must still have few enough children without it, and titles and albums need an agreed artist.

namespace qo
{
namespace
{
/// The value that the child votes for; null or empty means that it has none.
const CString* valueOf(const Voter& voter, CLTObjectType::EType type, CString QoFileDbItem::*field)
{
    if (voter.record)
        return &(voter.record->*field);
    return voter.assocs ? voter.assocs->PLookup(type) : nullptr;
}

/// Counts one child. Comparing with the candidate alone is enough: any two values that differ make
/// a contradiction, whatever comes after them.
void addToVote(const CString* value, int itemCount, FolderVote& vote)
{
    if (!value || value->IsEmpty())
    {
        vote.unrelated += itemCount;
        return;
    }
    const bool isFirst = vote.result == EVoteResult::noValue;
    const bool isSame = isFirst || value->CompareNoCase(vote.value) == 0;
    (isSame ? vote.related : vote.unrelated) += itemCount;
    if (!isSame && vote.result == EVoteResult::agreed)
    {
        vote.result = EVoteResult::contradicted;
        vote.contradictingValue = *value;
    }
    if (vote.result == EVoteResult::contradicted)
        return;
    // Of spellings that differ in case the last one is kept.
    vote.result = EVoteResult::agreed;
    vote.value = *value;
}

bool countVote(const Voters& voters, EVoteCount count, IQoProgress* progress, FolderVote& vote)
{
    CString QoFileDbItem::*const field = CHDFile::getLTAssocField(vote.type);
    for (const Voter& voter : voters)
    {
        if (isCanceled(progress))
            return false;
        if (count == EVoteCount::whole || vote.result != EVoteResult::contradicted)
            addToVote(valueOf(voter, vote.type, field), voter.itemCount, vote);
    }
    if (vote.result == EVoteResult::agreed &&
        !CNSAnalyzer::isUnrelAssocAccepted(vote.unrelated, vote.related))
        vote.result = EVoteResult::tooManyWithout;
    return true;
}

/// A title or an album is spread only together with an artist; a genre stands for itself.
void dropWithoutArtist(std::vector<FolderVote>& votes)
{
    for (const FolderVote& vote : votes)
    {
        if (vote.type == CLTObjectType::Artist && vote.result == EVoteResult::agreed)
            return;
    }
    for (FolderVote& vote : votes)
    {
        if (vote.type != CLTObjectType::Genre && vote.result == EVoteResult::agreed)
            vote.result = EVoteResult::withoutArtist;
    }
}
} // namespace

bool countVotes(const Voters& voters,
                EVoteCount count,
                IQoProgress* progress,
                std::vector<FolderVote>& votes)
{
    votes.clear();
    for (const CLTObjectType::EType type : CNSUtils::m_ltAssocsTypes)
    {
        if (isCanceled(progress))
            return false;
        FolderVote& vote = votes.emplace_back();
        vote.type = type;
        if (!countVote(voters, count, progress, vote))
            return false;
    }
    dropWithoutArtist(votes);
    return true;
}
} // namespace qo
