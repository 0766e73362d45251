#include "Logical/LTTrack.h"

#include "Logical/LTMember.h"

CLTTrack::~CLTTrack() = default;

CString CLTTrack::toString(bool /*full*/) const
{
    CString text;
    text.Format(u"Tr:%s:%s:%s", getDisplayName(), m_trackNumber, m_year);
    return text;
}

void CLTTrack::setNumberAndYear(const CString& trackNumber, const CString& year)
{
    m_trackNumber = trackNumber;
    m_year = year;
}

void CLTTrack::setArtist(const boost::shared_ptr<CLTArtist>& artist)
{
    qo::setLTMember(m_artist, artist);
}

void CLTTrack::setAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    qo::setLTMember(m_album, album);
}

void CLTTrack::setGenre(const boost::shared_ptr<CLTGenre>& genre)
{
    qo::setLTMember(m_genre, genre);
}

void CLTTrack::setLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    qo::setLTMember(m_lyrics, lyrics);
    noteIfUnused();
}

void CLTTrack::addMusicFile(const boost::shared_ptr<CHDMusicFile>& file)
{
    m_musicFiles.addUnique(file);
}

void CLTTrack::removeMusicFile(const boost::shared_ptr<CHDMusicFile>& file)
{
    m_musicFiles.remove(file);
    noteIfUnused();
}
