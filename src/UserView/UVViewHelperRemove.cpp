#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewHelper.h"

#include <vector>

// A file that leaves: in each pane one way leads down to it, from item to item that it belongs to.

namespace
{
using View = CUVViewHelper;
using ItemType = CUVViewItemType;

template <class X>
CUVViewItem* objectItem(const boost::shared_ptr<X>& object,
                        View::EType type,
                        View::EType groupType,
                        const View::Items& items)
{
    if (!object)
        return nullptr;
    return object->isUnknown() ? items.getItem(groupType, 0) : items.findItem(type, object, false);
}

/// By path, since a directory that has left the tree has forgotten its parents.
CUVViewItem* dirItem(const CQoCollPath& path, const View::Items& items)
{
    for (CUVViewItem* item : items)
    {
        if (!item->isDir())
            continue;
        const auto& dir = static_cast<const CHDDirectory&>(*item->getLinkObj());
        const int depth = dir.getPath().getCount();
        // The name alone excludes most directories.
        const bool isOther =
            depth >= path.getCount() ||
            (depth > 0 && dir.getShortName().CompareNoCase(path.getComponents()[depth - 1]) != 0);
        if (!isOther && path.isSubPathOf(dir.getPath()))
            return item;
    }
    return nullptr;
}

/// The item of the list that the file belongs to; null if there is none.
CUVViewItem* itemOf(const RemoveFileInfo& info, const CQoCollPath& path, const View::Items& items)
{
    if (items.IsEmpty())
        return nullptr;
    const CUVViewItem& first = *items[0];
    if (first.isGenre())
        return objectItem(info.m_genre, ItemType::Genre, ItemType::OtherGenres, items);
    if (first.isArtist())
        return objectItem(info.m_artist, ItemType::Artist, ItemType::OtherArtists, items);
    if (first.isAlbum())
        return objectItem(info.m_album, ItemType::Album, ItemType::OtherAlbums, items);
    if (CUVViewItem* const item = items.findItem(ItemType::File, info.m_file, false))
        return item;
    return dirItem(path, items);
}

void takeOut(View::Items& items, CUVViewItem* item, RemoveFileInfo& info)
{
    items.takeOut(item);
    item->setParent(nullptr);
    info.m_removedItems.addItem(item, false, View::Items::NullItem);
}

View::Items& listOf(CUVViewItem& item, View::Items& top)
{
    return item.getParent() ? item.getParent()->getSubItems() : top;
}
} // namespace

void CUVViewHelper::removeItems(const Subset& subset,
                                const Parents& outside,
                                Items& items,
                                RemoveFileInfo& info)
{
    const CQoCollPath path(info.m_file->getPath());
    std::vector<CUVViewItem*> way;
    for (Items* level = &items; CUVViewItem* const item = itemOf(info, path, *level);)
    {
        way.push_back(item);
        level = &item->getSubItems();
    }
    for (; !way.empty(); way.pop_back())
    {
        CUVViewItem* const item = way.back();
        int own = 0;
        int foreign = 0;
        if (!item->isFile())
            getFileCount(*item, outside, subset, own, foreign);
        item->setFileCounts(own, foreign);
        Items& list = listOf(*item, items);
        if (own + foreign == 0)
        {
            takeOut(list, item, info);
            continue;
        }
        updateViewItemCheckState(*item, outside, subset);
        if (item->isAlbum())
            list.keepSorted(item); // its year may have gone with the file
    }
}

void CUVViewHelper::removeItems(const Subset& subset,
                                const CUVViewItem* leftItem,
                                const CUVViewItem* middleItem,
                                Items* left,
                                Items* middle,
                                Items* right,
                                RemoveFileInfo& info)
{
    // From the right, since what is selected must still be in its pane.
    if (right)
    {
        Parents parents;
        getViewsParentItemsInfo(leftItem, middleItem, parents);
        removeItems(subset, parents, *right, info);
    }
    if (middle)
    {
        Parents parents;
        CUVUtils::getParentItemsInfoCheckParent(leftItem, parents);
        removeItems(subset, parents, *middle, info);
    }
    if (left)
        removeItems(subset, Parents(), *left, info);
}

void CUVViewHelper::removeItemAndEmptyParentItems(Items& items, RemoveFileInfo& info)
{
    CUVViewItem* item = CUVUtils::findFileItem(items, info.m_file);
    while (item)
    {
        CUVViewItem* const parent = item->getParent();
        takeOut(listOf(*item, items), item, info);
        item = parent && parent->getSubItems().IsEmpty() ? parent : nullptr;
    }
}
