#pragma once

#include "Reorganize/SeperateRule.h"

/// Separates files by the number of tracks that the collection has of their album.
class QO_API CAlbumTracksSeperateRule final : public CSeperateRule
{
public:
    enum EOutputType : int
    {
        MoreEqualTracks = 1,
        LessTracks = 2,
        NoAlbum = 3 ///< no album, or one without a name
    };

    /// With trackLimit tracks or more the output is MoreEqualTracks.
    explicit CAlbumTracksSeperateRule(int trackLimit);

    CString toString(bool full) const override;
    CSeperateRule* clone() const override;
    /// Always NoAlbum, since a tag alone says nothing about numbers of tracks.
    int getMatchingOutputType(const IQorganizer::TagInfo& tag) const override;
    int getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const override;

    int m_trackLimit;

private:
    static const Output s_outputs[];
};
