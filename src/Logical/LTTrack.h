#pragma once

#include "Logical/LTObject.h"
#include "Logical/RareLink.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"

/// One music file as a piece of music. Every file gets a track of its own, even when an equal one
/// exists; equal tracks stand side by side in CLTManager's list.
class QO_API CLTTrack final : public CLTObject
{
public:
    explicit CLTTrack(const CString& title) : CLTObject(CLTObjectType::Track, title) {}
    ~CLTTrack() override;

    CString toString(bool full) const override;
    /// True while there is a file or lyrics.
    bool isUsed() const override { return !m_musicFiles.IsEmpty() || m_lyrics; }

    /// The text of the tag: "3", "03" or "3/12".
    const CString& getTrackNumber() const noexcept { return m_trackNumber; }
    const CString& getYear() const noexcept { return m_year; }
    const CPtrListT<CHDMusicFile>& getMusicFiles() const noexcept { return m_musicFiles; }
    const boost::shared_ptr<CLTArtist>& getArtist() const noexcept { return m_artist; }
    const boost::shared_ptr<CLTAlbum>& getAlbum() const noexcept { return m_album; }
    const boost::shared_ptr<CLTGenre>& getGenre() const noexcept { return m_genre; }
    boost::shared_ptr<CLTLyrics> getLyrics() const noexcept { return m_lyrics.get(); }

    // For CLTManager only: each sets one side of a link. See qo::setLTMember for what a setter
    // refuses.
    void setNumberAndYear(const CString& trackNumber, const CString& year);
    void setArtist(const boost::shared_ptr<CLTArtist>& artist);
    void setAlbum(const boost::shared_ptr<CLTAlbum>& album);
    void setGenre(const boost::shared_ptr<CLTGenre>& genre);
    void setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);
    void addMusicFile(const boost::shared_ptr<CHDMusicFile>& file);
    void removeMusicFile(const boost::shared_ptr<CHDMusicFile>& file);

private:
    friend class CLTAlbum;

    CString m_trackNumber;
    CString m_year;
    [[no_unique_address]] CPtrListT<CHDMusicFile> m_musicFiles;
    qo::LinkStamp m_albumStamp = qo::neverLinked; ///< in the padding of the list
    boost::shared_ptr<CLTArtist> m_artist;
    boost::shared_ptr<CLTAlbum> m_album;
    boost::shared_ptr<CLTGenre> m_genre;
    qo::RareLink<CLTLyrics> m_lyrics;
};
