#include "Logical/LTAlbum.h"

#include "Logical/LTLinkList.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTMember.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"

CLTAlbum::~CLTAlbum() = default;

CString CLTAlbum::toString(bool full) const
{
    CString text;
    text.Format(u"Al:%s", CLTObject::toString(full));
    return text;
}

void CLTAlbum::setArtist(const boost::shared_ptr<CLTArtist>& artist)
{
    qo::setLTMember(m_artist, artist);
}

void CLTAlbum::addTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::addLinked(m_tracks, track, &CLTTrack::m_albumStamp);
}

void CLTAlbum::removeTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::removeLinked(m_tracks, track, &CLTTrack::m_albumStamp);
    noteIfUnused();
}

void CLTAlbum::addPicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::addLinked(m_pictures, picture, &CLTPicture::m_albumStamp);
}

void CLTAlbum::removePicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::removeLinked(m_pictures, picture, &CLTPicture::m_albumStamp);
    noteIfUnused();
}

void CLTAlbum::addLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    qo::addLinked(m_lyrics, lyrics, &CLTLyrics::m_albumStamp);
}

void CLTAlbum::removeLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    qo::removeLinked(m_lyrics, lyrics, &CLTLyrics::m_albumStamp);
    noteIfUnused();
}
