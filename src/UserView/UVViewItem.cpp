#include "UserView/UVViewItem.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTManager.h"
#include "Logical/LTTrack.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "UserView/UVUtils.h"
#include "types/CharClass.h"

namespace
{
/// Ascending, and 0, which means that there is none, last.
int compareKnown(int a, int b)
{
    if (a == b)
        return 0;
    if (a == 0 || b == 0)
        return a == 0 ? 1 : -1;
    return a < b ? -1 : 1;
}

int yearOf(const CUVViewItem& item)
{
    const auto album = boost::dynamic_pointer_cast<CLTAlbum>(item.getLinkObj());
    return album ? CQoUtils::getAlbumYear(album) : 0;
}

int trackNumberOf(const CHDMusicFile& file)
{
    return qo::textToInt(file.getDbItem()->trackNumber.view());
}

const boost::shared_ptr<CLTAlbum>* albumOf(const CHDMusicFile& file)
{
    const boost::shared_ptr<CLTTrack>& track = file.getTrack();
    return track && track->getAlbum() ? &track->getAlbum() : nullptr;
}
} // namespace

CUVViewItem::CUVViewItem(EType type, const Link& link, CUVViewItem* parent)
    : m_type(type), m_linkObj(link), m_parent(parent), m_subItems(this)
{
}

CUVViewItem::~CUVViewItem() = default;

CUVViewItem* CUVViewItem::clone() const
{
    auto* const copy = new CUVViewItem(m_type, m_linkObj, nullptr);
    copy->m_name = m_name;
    copy->m_checkState = m_checkState;
    copy->setFileCounts(m_ownFileCount, m_foreignFileCount);
    copy->m_subItems.clone(m_subItems);
    return copy;
}

bool CUVViewItem::isGroup() const noexcept
{
    constexpr int groups =
        CUVViewItemType::OtherGenres | CUVViewItemType::OtherArtists | CUVViewItemType::OtherAlbums;
    return (m_type & groups) != 0;
}

bool CUVViewItem::isEqual(const CUVViewItem* other) const
{
    return other && other->m_type == m_type && other->m_linkObj == m_linkObj;
}

CUVViewItem::Link CUVViewItem::getLinkObj(EType type) const
{
    return type == m_type ? m_linkObj : Link();
}

void CUVViewItem::setFileCounts(int own, int foreign) noexcept
{
    m_ownFileCount = own;
    m_foreignFileCount = foreign;
}

int CUVViewItem::compareTypes(const CUVViewItem* a, const CUVViewItem* b)
{
    if (a->isDir() && b->isFile())
        return -1;
    return a->isFile() && b->isDir() ? 1 : 0;
}

int CUVViewItem::compareAlbums(const CUVViewItem* a, const CUVViewItem* b)
{
    return a->isAlbum() && b->isAlbum() ? compareKnown(yearOf(*a), yearOf(*b)) : 0;
}

int CUVViewItem::compareTracks(const CUVViewItem* a, const CUVViewItem* b)
{
    const CHDMusicFile* const fileA = CUVUtils::musicFileOf(*a);
    const CHDMusicFile* const fileB = fileA ? CUVUtils::musicFileOf(*b) : nullptr;
    if (!fileB)
        return 0;
    const auto* const albumA = albumOf(*fileA);
    const auto* const albumB = albumOf(*fileB);
    if (albumA && albumB && *albumA != *albumB)
    {
        if (const int order = CLTManager::compareLTAlbums(*albumA, *albumB))
            return order;
    }
    return compareKnown(trackNumberOf(*fileA), trackNumberOf(*fileB));
}

int CUVViewItem::compareItems(const CUVViewItem* a, const CUVViewItem* b)
{
    if (const int order = compareTypes(a, b))
        return order;
    if (const int order = compareAlbums(a, b))
        return order;
    if (const int order = compareTracks(a, b))
        return order;
    return a->m_name.CompareNoCase(b->m_name);
}
