#include "Physical/HDPictureFile.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTMember.h"
#include "Logical/LTPicture.h"

CHDPictureFile::~CHDPictureFile() = default;

boost::shared_ptr<CLTObject> CHDPictureFile::getLTAssoc(CLTObjectType::EType type) const
{
    if (!m_picture)
        return {};
    const boost::shared_ptr<CLTAlbum>& album = m_picture->getAlbum();
    switch (type)
    {
    case CLTObjectType::Album:
        return album;
    case CLTObjectType::Artist:
        return album && album->getArtist() ? album->getArtist() : m_picture->getArtist();
    case CLTObjectType::Picture:
        return m_picture;
    default:
        return {};
    }
}

bool CHDPictureFile::hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const
{
    return object && getLTAssoc(object->getType()) == object;
}

void CHDPictureFile::clearLTObjects()
{
    m_picture.reset();
}

void CHDPictureFile::setPicture(const boost::shared_ptr<CLTPicture>& picture)
{
    qo::setLTMember(m_picture, picture);
}
