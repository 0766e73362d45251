#include "Physical/HDTextFile.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTMember.h"
#include "Logical/LTTrack.h"

CHDTextFile::~CHDTextFile() = default;

boost::shared_ptr<CLTObject> CHDTextFile::getLTAssoc(CLTObjectType::EType type) const
{
    if (!m_lyrics)
        return {};
    const boost::shared_ptr<CLTAlbum>& album = m_lyrics->getAlbum();
    const boost::shared_ptr<CLTTrack>& track = m_lyrics->getTrack();
    switch (type)
    {
    case CLTObjectType::Album:
        return album;
    case CLTObjectType::Artist:
        return album ? album->getArtist() : boost::shared_ptr<CLTArtist>();
    case CLTObjectType::Genre:
        return track ? track->getGenre() : boost::shared_ptr<CLTGenre>();
    case CLTObjectType::Lyrics:
        return m_lyrics;
    case CLTObjectType::Track:
        return track;
    default:
        return {};
    }
}

bool CHDTextFile::hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const
{
    return object && getLTAssoc(object->getType()) == object;
}

void CHDTextFile::clearLTObjects()
{
    m_lyrics.reset();
}

void CHDTextFile::setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    qo::setLTMember(m_lyrics, lyrics);
}
