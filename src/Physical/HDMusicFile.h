#pragma once

#include "Analyze/Forward.h"
#include "Physical/HDFile.h"
#include "QoColl/Tags/MusicTagEx.h"

/// An audio or video file, by its extension.
class QO_API CHDMusicFile final : public CHDFile
{
public:
    CHDMusicFile(Key, const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDMusicFile() override;

    /// Everything but lyrics and picture comes from the track; without one all are null.
    boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const override;
    /// Never for lyrics and pictures.
    bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const override;
    void clearLTObjects() override;
    bool hasMusicFilesRec() const override;
    /// Gives the tag the record's values as the file's own.
    void setFileInfo() override;
    int getAudioVideoType() const override;

    /// By the record's flags.
    bool isVideo() const noexcept;
    /// By the source in the record's parameters.
    bool isPodcast() const;

    // For CLTManager: the file's side of a link, see qo::setLTMember for what a setter refuses.
    void setTrack(const boost::shared_ptr<CLTTrack>& track);
    void setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);
    void setPicture(const boost::shared_ptr<CLTPicture>& picture);
    const boost::shared_ptr<CLTTrack>& getTrack() const noexcept { return m_track; }
    const boost::shared_ptr<CLTLyrics>& getLyrics() const noexcept { return m_lyrics; }
    const boost::shared_ptr<CLTPicture>& getPicture() const noexcept { return m_picture; }
    /// Adds the names of the album, artist and track, as far as they have one.
    void getLTNames(CDirLTNames& names) const;

    /// What the file said when the record was last taken over, beside any pending edit.
    CMusicTagEx& getTag() noexcept { return m_tag; }
    const CMusicTagEx& getTag() const noexcept { return m_tag; }

private:
    boost::shared_ptr<CLTTrack> m_track;
    boost::shared_ptr<CLTLyrics> m_lyrics;
    boost::shared_ptr<CLTPicture> m_picture;
    CMusicTagEx m_tag;
};
