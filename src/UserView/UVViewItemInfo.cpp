#include "UserView/UVViewItemInfo.h"

#include "QoColl/Tags/SimpleMusicTag.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewItem.h"

void CUVViewItemInfo::reset()
{
    *this = CUVViewItemInfo();
}

void CUVViewItemInfo::init(const CUVViewItem* item)
{
    reset();
    if (!item)
        return;
    m_type = item->getType();
    m_name = item->getName();
    m_ownFileCount = item->getOwnFileCount();
    m_foreignFileCount = item->getForeignFileCount();
    SimpleMusicTag tag;
    CUVUtils::getTagInfo(item, tag, m_path);
    m_genre = tag.genre;
    m_artist = tag.artist;
    m_album = tag.album;
    m_title = tag.title;
}

void CUVViewItemInfo::init(const CString& path)
{
    reset();
    m_path = path;
}
