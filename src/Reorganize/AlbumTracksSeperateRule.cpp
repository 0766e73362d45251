#include "Reorganize/AlbumTracksSeperateRule.h"

#include "Analyze/MakeOwned.h"
#include "Logical/LTAlbum.h"
#include "Reorganize/TrackLimit.h"

const CSeperateRule::Output CAlbumTracksSeperateRule::s_outputs[] = {
    {MoreEqualTracks, u"MoreEqualTracks"}, {LessTracks, u"LessTracks"}, {NoAlbum, u"NoAlbum"}};

CAlbumTracksSeperateRule::CAlbumTracksSeperateRule(int trackLimit)
    : CSeperateRule(AlbumTracks, s_outputs), m_trackLimit(trackLimit)
{
}

CString CAlbumTracksSeperateRule::toString(bool full) const
{
    return qo::trackLimitText(m_trackLimit) + CSeperateRule::toString(full);
}

CSeperateRule* CAlbumTracksSeperateRule::clone() const
{
    const auto here = QO_HERE(u".\\Reorganize\\AlbumTracksSeperateRule");
    return qo::makeOwned<CAlbumTracksSeperateRule>(here, m_trackLimit).release();
}

int CAlbumTracksSeperateRule::getMatchingOutputType(const IQorganizer::TagInfo& /*tag*/) const
{
    return NoAlbum;
}

int CAlbumTracksSeperateRule::getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const
{
    // -1 means that the file has no album with a name.
    const int count = qo::trackCountOf<CLTAlbum>(*file, CLTObjectType::Album);
    if (count == -1)
        return NoAlbum;
    return count < m_trackLimit ? LessTracks : MoreEqualTracks;
}
