#pragma once

#include "Logical/LTObject.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"

/// A picture file that belongs to an album, or to an artist when no album fits.
class QO_API CLTPicture final : public CLTObject
{
public:
    CLTPicture() : CLTObject(CLTObjectType::Picture, CString()) {}
    ~CLTPicture() override;

    CString toString(bool full) const override;
    /// True while there are files.
    bool isUsed() const override { return !m_files.IsEmpty(); }

    const boost::shared_ptr<CLTAlbum>& getAlbum() const noexcept { return m_album; }
    const boost::shared_ptr<CLTArtist>& getArtist() const noexcept { return m_artist; }
    const CPtrListT<CHDPictureFile>& getFiles() const noexcept { return m_files; }

    // For CLTManager only: each sets one side of a link. Adding what is there and removing what is
    // not there do nothing.
    void setAlbum(const boost::shared_ptr<CLTAlbum>& album);
    void setArtist(const boost::shared_ptr<CLTArtist>& artist);
    void addFile(const boost::shared_ptr<CHDPictureFile>& file);
    void removeFile(const boost::shared_ptr<CHDPictureFile>& file);

private:
    friend class CLTAlbum;

    boost::shared_ptr<CLTAlbum> m_album;
    boost::shared_ptr<CLTArtist> m_artist;
    CPtrListT<CHDPictureFile> m_files;
    qo::LinkStamp m_albumStamp = qo::neverLinked;
};
