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
    /// By tracks.
    bool isUsed() const override { return !m_tracks.IsEmpty(); }

    /// In the order of their addresses, which says nothing.
    const CQoSortedPtrList<CLTTrack>& getTracks() const noexcept { return m_tracks; }

    // For CLTManager: one side of a link. Adding twice and removing what is absent do nothing.
    void addTrack(const boost::shared_ptr<CLTTrack>& track);
    void removeTrack(const boost::shared_ptr<CLTTrack>& track);

private:
    CQoSortedPtrList<CLTTrack> m_tracks;
};
