#pragma once

#include "Physical/HDFile.h"

/// A text, by its extension: the lyrics of a track or an album.
class QO_API CHDTextFile final : public CHDFile
{
public:
    CHDTextFile(Key, const boost::shared_ptr<QoFileDbItem>& item) : CHDFile(FT_Text, item) {}
    ~CHDTextFile() override;

    /// The lyrics object, its album with the artist of that, and its track with the genre of that.
    boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const override;
    bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const override;
    void clearLTObjects() override;

    /// For CLTManager only: the file's side of the link. See qo::setLTMember for what it refuses.
    void setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics);
    const boost::shared_ptr<CLTLyrics>& getLyrics() const noexcept { return m_lyrics; }

private:
    boost::shared_ptr<CLTLyrics> m_lyrics;
};
