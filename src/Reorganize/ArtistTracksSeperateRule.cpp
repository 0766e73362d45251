#include "Reorganize/ArtistTracksSeperateRule.h"

#include "Analyze/MakeOwned.h"
#include "Logical/LTArtist.h"
#include "Reorganize/TrackLimit.h"

const CSeperateRule::Output CArtistTracksSeperateRule::s_outputs[] = {
    {MoreEqualTracks, u"MoreEqualTracks"}, {LessTracks, u"LessTracks"}, {NoArtist, u"NoArtist"}};

CArtistTracksSeperateRule::CArtistTracksSeperateRule(int trackLimit)
    : CSeperateRule(ArtistTracks, s_outputs), m_trackLimit(trackLimit)
{
}

CString CArtistTracksSeperateRule::toString(bool full) const
{
    return qo::trackLimitText(m_trackLimit) + CSeperateRule::toString(full);
}

CSeperateRule* CArtistTracksSeperateRule::clone() const
{
    const auto here = QO_HERE(u".\\Reorganize\\ArtistTracksSeperateRule");
    return qo::makeOwned<CArtistTracksSeperateRule>(here, m_trackLimit).release();
}

int CArtistTracksSeperateRule::getMatchingOutputType(const IQorganizer::TagInfo& /*tag*/) const
{
    return NoArtist;
}

int CArtistTracksSeperateRule::getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const
{
    // -1 means that the file has no artist with a name.
    const int count = qo::trackCountOf<CLTArtist>(*file, CLTObjectType::Artist);
    if (count == -1)
        return NoArtist;
    return count < m_trackLimit ? LessTracks : MoreEqualTracks;
}
