#pragma once

#include "Logical/LTObject.h"
#include "common/PtrListT.h"

/// An album of one artist. Unknown albums, and albums of unknown artists, are never shared.
class QO_API CLTAlbum final : public CLTObject
{
public:
    explicit CLTAlbum(const CString& name) : CLTObject(CLTObjectType::Album, name) {}
    ~CLTAlbum() override;

    CString toString(bool full) const override;
    /// True while the album has tracks, pictures or lyrics.
    bool isUsed() const override
    {
        return !m_tracks.IsEmpty() || !m_pictures.IsEmpty() || !m_lyrics.IsEmpty();
    }

    const CPtrListT<CLTTrack>& getTracks() const noexcept { return m_tracks; }
    const CPtrListT<CLTPicture>& getPictures() const noexcept { return m_pictures; }
    const CPtrListT<CLTLyrics>& getLyrics() const noexcept { return m_lyrics; }
    /// Null after the last of its tracks was released, when a picture or lyrics still keep the
    /// album.
    const boost::shared_ptr<CLTArtist>& getArtist() const noexcept { return m_artist; }

    // For CLTManager only: each sets one side of a link. Adding what is there and removing what is
    // not there do nothing.
    void setArtist(const boost::shared_ptr<CLTArtist>& artist);
    void addTrack(const boost::shared_ptr<CLTTrack>& track);
    void removeTrack(const boost::shared_ptr<CLTTrack>& track);
    void addPicture(const boost::shared_ptr<CLTPicture>& picture);
    void removePicture(const boost::shared_ptr<CLTPicture>& picture);
    void addLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);
    void removeLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);

private:
    CPtrListT<CLTTrack> m_tracks;
    CPtrListT<CLTPicture> m_pictures;
    CPtrListT<CLTLyrics> m_lyrics;
    boost::shared_ptr<CLTArtist> m_artist;
};
