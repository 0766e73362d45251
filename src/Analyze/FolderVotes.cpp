#include "Analyze/FolderVotes.h"

#include "Analyze/BottomUp.h"
#include "Analyze/NSUtils.h"

namespace qo
{
namespace
{
void addToVote(const CString& value, int itemCount, FolderVote& vote)
{
    if (value.IsEmpty())
    {
        vote.unrelated += itemCount;
        return;
    }
    const bool isFirst = vote.result == EVoteResult::noValue;
    const bool isSame =
        isFirst || value.sharesBufferWith(vote.value) || value.CompareNoCase(vote.value) == 0;
    (isSame ? vote.related : vote.unrelated) += itemCount;
    if (!isSame && vote.result == EVoteResult::agreed)
    {
        vote.result = EVoteResult::contradicted;
        vote.contradictingValue = value;
    }
    if (vote.result == EVoteResult::contradicted)
        return;
    // Of spellings that differ in case the last one counts.
    vote.result = EVoteResult::agreed;
    vote.value = value;
}

/// Two values that differ contradict each other and every further one, so each value need not be
/// held against each other one.
bool countVote(const CNSAnalyzer::ObjectList& children,
               const ItemCounts& itemCounts,
               CMapStringToPtr& store,
               IQoProgress* progress,
               FolderVote& vote)
{
    std::size_t index = 0;
    for (const boost::shared_ptr<CHDObject>& child : children)
    {
        if (isCanceled(progress))
            return false;
        addToVote(CNSAnalyzer::getHDObjectAssoc(child, vote.type, store), itemCounts[index], vote);
        ++index;
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

bool countVotes(const CNSAnalyzer::ObjectList& children,
                const ItemCounts& itemCounts,
                CMapStringToPtr& store,
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
        if (!countVote(children, itemCounts, store, progress, vote))
            return false;
    }
    dropWithoutArtist(votes);
    return true;
}
} // namespace qo
