#pragma once

#include "Logical/LTObject.h"
#include "common/PtrListT.h"

/// An artist. Unknown artists are never shared between files.
class QO_API CLTArtist final : public CLTObject
{
public:
    explicit CLTArtist(const CString& name) : CLTObject(CLTObjectType::Artist, name) {}
    ~CLTArtist() override;

    CString toString(bool full) const override;
    /// True while the artist has tracks or pictures; albums alone do not count.
    bool isUsed() const override { return !m_tracks.IsEmpty() || !m_pictures.IsEmpty(); }

    const CPtrListT<CLTAlbum>& getAlbums() const noexcept { return m_albums; }
    const CPtrListT<CLTTrack>& getTracks() const noexcept { return m_tracks; }
    const CPtrListT<CLTPicture>& getPictures() const noexcept { return m_pictures; }

    // For CLTManager only: each sets one side of a link. Adding what is there and removing what is
    // not there do nothing.
    void addAlbum(const boost::shared_ptr<CLTAlbum>& album);
    void removeAlbum(const boost::shared_ptr<CLTAlbum>& album);
    void addTrack(const boost::shared_ptr<CLTTrack>& track);
    void removeTrack(const boost::shared_ptr<CLTTrack>& track);
    void addPicture(const boost::shared_ptr<CLTPicture>& picture);
    void removePicture(const boost::shared_ptr<CLTPicture>& picture);

private:
    CPtrListT<CLTAlbum> m_albums;
    CPtrListT<CLTTrack> m_tracks;
    CPtrListT<CLTPicture> m_pictures;
};
