#pragma once

#include "Physical/HDFile.h"
#include "QoColl/Tags/MusicTagEx.h"

/// An audio or video file, by its extension.
class QO_API CHDMusicFile final : public CHDFile
{
public:
    CHDMusicFile(Key, const boost::shared_ptr<QoFileDbItem>& item);

    bool hasMusicFilesRec() const override;
    /// Gives the tag the record's values as the file's own.
    void setFileInfo() override;
    int getAudioVideoType() const override;

    /// By the record's flags.
    bool isVideo() const noexcept;
    /// By the source in the record's parameters.
    bool isPodcast() const;

    /// What the file said when the record was last taken over, beside any pending edit.
    CMusicTagEx& getTag() noexcept { return m_tag; }
    const CMusicTagEx& getTag() const noexcept { return m_tag; }

private:
    CMusicTagEx m_tag;
};
