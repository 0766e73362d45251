#include "Analyze/FolderVotes.h"

#include "Analyze/BottomUp.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

namespace qo
{
namespace
{
/// Null or empty: none.
const CString* valueOf(const Voter& voter, CLTObjectType::EType type, CString QoFileDbItem::*field)
{
    if (voter.record)
        return &(voter.record->*field);
    return voter.assocs ? voter.assocs->PLookup(type) : nullptr;
}

/// Two values that differ contradict each other and every further one, so each value need not be
/// held against each other one.
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
    // Of spellings that differ in case the last one counts.
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

/// A title or an album without an artist is not spread.
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
