#include "Logical/LTPicture.h"

#include "Logical/LTMember.h"

CLTPicture::~CLTPicture() = default;

CString CLTPicture::toString(bool /*full*/) const
{
    return u"Pic";
}

void CLTPicture::setAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    qo::setLTMember(m_album, album);
}

void CLTPicture::setArtist(const boost::shared_ptr<CLTArtist>& artist)
{
    qo::setLTMember(m_artist, artist);
}

void CLTPicture::addFile(const boost::shared_ptr<CHDPictureFile>& file)
{
    m_files.addUnique(file);
}

void CLTPicture::removeFile(const boost::shared_ptr<CHDPictureFile>& file)
{
    m_files.remove(file);
    noteIfUnused();
}
