#pragma once

#include "Logical/RareLink.h"
#include "Physical/Forward.h"
#include "Physical/HDFile.h"
#include "QoColl/Tags/MusicTagEx.h"

/// An audio or video file, by its extension. It links to its track and, through that, to artist,
/// album and genre.
class QO_API CHDMusicFile final : public CHDFile
{
public:
    CHDMusicFile(Key, const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDMusicFile() override;

    /// Artist, album, genre and track come from the track; lyrics and picture are the file's own.
    /// Without a track all are null.
    boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const override;
    /// Whether the object is one of those four; always false for lyrics and pictures.
    bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const override;
    void clearLTObjects() override;
    bool hasMusicFilesRec() const override;
    /// Lets the tag show the record's values as those of the file.
    void setFileInfo() override;
    int getAudioVideoType() const override;

    /// Whether the record's flags say that the file is a video.
    bool isVideo() const noexcept;
    /// Whether the source in the record's parameters is a podcast.
    bool isPodcast() const;

    // For CLTManager only: the file's side of a link. See qo::setLTMember for what a setter
    // refuses.
    void setTrack(const boost::shared_ptr<CLTTrack>& track);
    void setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);
    void setPicture(const boost::shared_ptr<CLTPicture>& picture);
    const boost::shared_ptr<CLTTrack>& getTrack() const noexcept { return m_track; }
    boost::shared_ptr<CLTLyrics> getLyrics() const noexcept { return m_lyrics.get(); }
    boost::shared_ptr<CLTPicture> getPicture() const noexcept { return m_picture.get(); }
    /// Adds the names of the track and its album and artist, as far as these have one.
    void getLTNames(CDirLTNames& names) const;

    /// The tag: the values of the file when the record was last read, and beside them values that a
    /// user has entered.
    CMusicTagEx& getTag() noexcept { return m_tag; }
    const CMusicTagEx& getTag() const noexcept { return m_tag; }

private:
    boost::shared_ptr<CLTTrack> m_track;
    qo::RareLink<CLTLyrics> m_lyrics;
    qo::RareLink<CLTPicture> m_picture;
    CMusicTagEx m_tag;
};
