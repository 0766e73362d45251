#include "Logical/LTArtist.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTLinkList.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"

CLTArtist::~CLTArtist() = default;

CString CLTArtist::toString(bool full) const
{
    CString text;
    text.Format(u"Ar:%s", CLTObject::toString(full));
    return text;
}

void CLTArtist::addAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    qo::addLinked(m_albums, album, &CLTAlbum::m_artistStamp);
}

void CLTArtist::removeAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    qo::removeLinked(m_albums, album, &CLTAlbum::m_artistStamp);
}

void CLTArtist::addTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::addLinked(m_tracks, track, &CLTTrack::m_artistStamp);
}

void CLTArtist::removeTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::removeLinked(m_tracks, track, &CLTTrack::m_artistStamp);
    noteIfUnused();
}

void CLTArtist::addPicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::addLinked(m_pictures, picture, &CLTPicture::m_artistStamp);
}

void CLTArtist::removePicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::removeLinked(m_pictures, picture, &CLTPicture::m_artistStamp);
    noteIfUnused();
}
