#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewHelper.h"

// Finding one's way in trees of items.

namespace
{
/// The last item of everything that is shown below this one, or itself.
CUVViewItem* lastBelow(CUVViewItem* item)
{
    while (!item->getSubItems().IsEmpty())
        item = item->getSubItems()[item->getSubItems().GetUpperBound()];
    return item;
}
} // namespace

CUVViewItem* CUVViewHelper::getGenreItem(const Items& items, const CQoUtils::Genre& genre)
{
    return items.findItem(CUVViewItemType::Genre, genre, true);
}

CUVViewItem* CUVViewHelper::getArtistItem(const Items& items, const CQoUtils::Artist& artist)
{
    return items.findItem(CUVViewItemType::Artist, artist, true);
}

CUVViewItem* CUVViewHelper::getAlbumItem(const Items& items, const CQoUtils::Album& album)
{
    return items.findItem(CUVViewItemType::Album, album, true);
}

CUVViewItem* CUVViewHelper::getDirItem(const Items& items, const CQoUtils::Dir& dir)
{
    return items.findItem(CUVViewItemType::Dir, dir, true);
}

CUVViewItem* CUVViewHelper::getFileItem(const Items& items, const CQoUtils::File& file)
{
    return CUVUtils::findFileItem(items, file);
}

CUVViewItem* CUVViewHelper::findDirItem(const Items& items, const CQoCollPath& path)
{
    for (const Items* level = &items; level;)
    {
        const Items* next = nullptr;
        for (CUVViewItem* item : *level)
        {
            if (!item->isDir())
                continue;
            const auto& dir = static_cast<const CHDDirectory&>(*item->getLinkObj());
            if (dir.hasSamePath(path))
                return item;
            if (path.isSubPathOf(dir.getPath()))
                next = &item->getSubItems();
        }
        level = next;
    }
    return nullptr;
}

bool CUVViewHelper::isChildItemRec(const CUVViewItem* item, const CUVViewItem* parent)
{
    return item && parent && item != parent && isSameOrParentItem(parent, item);
}

bool CUVViewHelper::isSameOrParentItem(const CUVViewItem* item, const CUVViewItem* other)
{
    while (other && other != item)
        other = other->getParent();
    return item && other == item;
}

CUVViewItem* CUVViewHelper::getParentSubItem(CUVViewItem* item, const CUVViewItem* parent)
{
    while (item && item->getParent() != parent)
        item = item->getParent();
    return item;
}

CUVViewItem* CUVViewHelper::getPrevViewItem(const Items& items, const CUVViewItem* item)
{
    CUVViewItem* const parent = item->getParent();
    const Items& siblings = parent ? parent->getSubItems() : items;
    const int index = siblings.find(item);
    return index > 0 ? lastBelow(siblings[index - 1]) : parent;
}

CUVViewItem* CUVViewHelper::getPrevLeafItem(const Items& items, const CUVViewItem* item)
{
    CUVViewItem* previous = getPrevViewItem(items, item);
    while (previous && itemHasChildren(previous))
        previous = getPrevViewItem(items, previous);
    return previous;
}

bool CUVViewHelper::itemHasChildren(const CUVViewItem* item)
{
    return item && !item->getSubItems().IsEmpty();
}
