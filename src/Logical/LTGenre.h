#pragma once

#include "Logical/LTObject.h"
#include "common/QoSortedPtrList.h"

/// A genre. All files without one share the unknown genre.
class QO_API CLTGenre final : public CLTObject
{
public:
    explicit CLTGenre(const CString& name);
    ~CLTGenre() override;

    CString toString(bool full) const override;
    /// True while the genre has tracks.
    bool isUsed() const override { return !m_tracks.IsEmpty(); }

    /// Sorted by address, which has no meaning for a user but makes adding and removing fast in
    /// genres of many thousand tracks.
    const CQoSortedPtrList<CLTTrack>& getTracks() const noexcept { return m_tracks; }

    // For CLTManager only: each sets one side of a link. Adding what is there and removing what is
    // not there do nothing.
    void addTrack(const boost::shared_ptr<CLTTrack>& track);
    void removeTrack(const boost::shared_ptr<CLTTrack>& track);

private:
    CQoSortedPtrList<CLTTrack> m_tracks;
};
