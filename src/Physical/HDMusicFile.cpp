#include "Physical/HDMusicFile.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTMember.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/DirLTNames.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"

CHDMusicFile::CHDMusicFile(Key, const boost::shared_ptr<QoFileDbItem>& item)
    : CHDFile(FT_Music, item)
{
}

CHDMusicFile::~CHDMusicFile() = default;

boost::shared_ptr<CLTObject> CHDMusicFile::getLTAssoc(CLTObjectType::EType type) const
{
    if (!m_track)
        return {};
    switch (type)
    {
    case CLTObjectType::Album:
        return m_track->getAlbum();
    case CLTObjectType::Artist:
        return m_track->getArtist();
    case CLTObjectType::Genre:
        return m_track->getGenre();
    case CLTObjectType::Lyrics:
        return m_lyrics.get();
    case CLTObjectType::Picture:
        return m_picture.get();
    case CLTObjectType::Track:
        return m_track;
    }
    return {};
}

bool CHDMusicFile::hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const
{
    if (!m_track || !object)
        return false;
    const CLTObjectType::EType type = object->getType();
    return type != CLTObjectType::Lyrics && type != CLTObjectType::Picture &&
           getLTAssoc(type) == object;
}

void CHDMusicFile::clearLTObjects()
{
    m_track.reset();
    m_lyrics.set({});
    m_picture.set({});
}

void CHDMusicFile::setTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::setLTMember(m_track, track);
}

void CHDMusicFile::setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    qo::setLTMember(m_lyrics, lyrics);
}

void CHDMusicFile::setPicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::setLTMember(m_picture, picture);
}

void CHDMusicFile::getLTNames(CDirLTNames& names) const
{
    if (!m_track)
        return;
    if (m_track->getAlbum() && !m_track->getAlbum()->isUnknown())
        names.addAlbum(m_track->getAlbum()->getName());
    if (m_track->getArtist() && !m_track->getArtist()->isUnknown())
        names.addArtist(m_track->getArtist()->getName());
    if (!m_track->isUnknown())
        names.addTitle(m_track->getName());
}

bool CHDMusicFile::hasMusicFilesRec() const
{
    return true;
}

void CHDMusicFile::setFileInfo()
{
    CHDFile::setFileInfo();
    m_tag.mirror(*getDbItem());
}

int CHDMusicFile::getAudioVideoType() const
{
    return isVideo() ? AV_Video : AV_Audio;
}

bool CHDMusicFile::isVideo() const noexcept
{
    return (getDbItem()->flags & qo::fileFlag::video) != 0;
}

bool CHDMusicFile::isPodcast() const
{
    QorganizerDef::VelmoraFileParams params;
    return CVelmoraFileParamsUtils::FromDbParam(getDbItem()->params, params) &&
           params.source == IPostProcessingQueue::sourcePodcast;
}
