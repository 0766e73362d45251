#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewHelper.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

// The items of one level: all of a subset, or what one file brings.

namespace
{
using View = CUVViewHelper;
using ItemType = CUVViewItemType;
using Artists = std::vector<CQoUtils::Artist>;

CString groupName()
{
    return qo::unknownGroup<CLTArtist>()->getDisplayName();
}

/// Adds items for objects in the order of their names, so that each is added at the end. Returns
/// whether there were unknown ones, for which null stands as well.
template <class X>
bool addKnown(std::vector<boost::shared_ptr<X>> objects, View::EType type, View::Items& items)
{
    const auto isUnknown = [](const boost::shared_ptr<X>& object)
    { return !object || object->isUnknown(); };
    const auto known = std::partition(objects.begin(), objects.end(), isUnknown);
    std::sort(known,
              objects.end(),
              [](const auto& a, const auto& b)
              { return a->getName().CompareNoCase(b->getName()) < 0; });
    for (auto object = known; object != objects.end(); ++object)
        items.addNewItem(type, (*object)->getName(), *object, true, View::Items::NullItem);
    return known != objects.begin();
}

/// What a list of items is about, for the level below.
View::Parents withItem(const View::Parents& parents, const CUVViewItem& item)
{
    View::Parents below = parents;
    CUVUtils::getParentItemsInfo(&item, below);
    return below;
}

void addArtistLevel(const View::Subset& subset,
                    const View::Parents& parents,
                    Artists artists,
                    int flags,
                    View::Items& items)
{
    if (addKnown(std::move(artists), ItemType::Artist, items))
        View::addOtherItem(ItemType::OtherArtists, items);
    if ((flags & View::withAlbums) == 0)
        return;
    for (CUVViewItem* item : items)
        View::getAlbumItems(subset, withItem(parents, *item), flags, item->getSubItems());
}

/// The albums of the artist that have files, in any order; null for unknown ones.
std::vector<CQoUtils::Album> albumsOf(const View::Subset& subset, const View::Parents& parents)
{
    const CQoUtils::Artist& artist = parents.m_artist;
    if (!parents.m_hasArtist || !artist || artist->isUnknown())
        return subset.getAlbumsOf(parents);
    // An artist has few albums, while the subset counts those of all artists.
    std::vector<CQoUtils::Album> albums;
    for (const auto& album : artist->getAlbums())
    {
        int own = 0;
        int foreign = 0;
        subset.getAlbumFileCount(album, own, foreign, parents);
        if (own + foreign > 0)
            albums.push_back(album);
    }
    return albums;
}

void addDirs(const View::Subset& subset,
             const CPtrListT<CHDDirectory>& dirs,
             bool recursive,
             View::Items& items)
{
    // Not recursive, since paths that come from devices may have any depth.
    std::vector<std::pair<const CPtrListT<CHDDirectory>*, View::Items*>> waiting{{&dirs, &items}};
    while (!waiting.empty())
    {
        const auto [from, to] = waiting.back();
        waiting.pop_back();
        for (const auto& dir : *from)
        {
            if (!subset.hasDir(dir))
                continue;
            CUVViewItem* const item = to->addNewItem(
                ItemType::Dir, dir->getShortName(), dir, true, View::Items::NullItem);
            if (recursive && !dir->getSubDirs().IsEmpty())
                waiting.emplace_back(&dir->getSubDirs(), &item->getSubItems());
        }
    }
}

/// The item of a file's object: its own, the group item if it is unknown, or null without one.
template <class X>
CUVViewItem* itemFor(const boost::shared_ptr<X>& object,
                     View::EType type,
                     View::EType groupType,
                     View::Items& items)
{
    if (!object)
        return nullptr;
    return object->isUnknown()
               ? View::addOtherItem(groupType, items)
               : items.checkAddItem(type, object->getName(), object, true, View::Items::NullItem);
}
} // namespace

void CUVViewHelper::getGenreItems(const Subset& subset, int flags, Items& items)
{
    const auto& genres = subset.getGenres();
    if (addKnown(
            std::vector<CQoUtils::Genre>(genres.begin(), genres.end()), ItemType::Genre, items))
        addOtherItem(ItemType::OtherGenres, items);
    if ((flags & withArtists) == 0)
        return;
    std::unordered_map<const CLTGenre*, Artists> artists; // null for the unknown genres
    for (auto& [genre, artist] : subset.getGenreArtists())
        artists[genre.get()].push_back(artist);
    for (CUVViewItem* item : items)
    {
        const auto* const genre = static_cast<const CLTGenre*>(item->getLinkObj().get());
        addArtistLevel(subset, withItem({}, *item), artists[genre], flags, item->getSubItems());
    }
}

void CUVViewHelper::getArtistItems(const Subset& subset,
                                   const Parents& parents,
                                   int flags,
                                   Items& items)
{
    const auto& all = subset.getArtists();
    addArtistLevel(subset,
                   parents,
                   parents.m_hasGenre ? subset.getArtistsOf(parents.m_genre)
                                      : Artists(all.begin(), all.end()),
                   flags,
                   items);
}

void CUVViewHelper::getAlbumItems(const Subset& subset,
                                  const Parents& parents,
                                  int flags,
                                  Items& items)
{
    bool hasUnknown = false;
    for (const CQoUtils::Album& album : albumsOf(subset, parents))
    {
        const bool isKnown = album && !album->isUnknown();
        hasUnknown = hasUnknown || !isKnown;
        if (isKnown)
            items.addNewItem(ItemType::Album, album->getName(), album, true, Items::NullItem);
    }
    if (hasUnknown)
        addOtherItem(ItemType::OtherAlbums, items);
    if ((flags & withFiles) == 0)
        return;
    for (CUVViewItem* item : items)
        getFileItems(subset, withItem(parents, *item), item->getSubItems());
}

void CUVViewHelper::getFileItems(const Subset& subset, const Parents& parents, Items& items)
{
    CUVUtils::visitFiles(parents,
                         subset,
                         [&](const CQoUtils::File& file)
                         {
                             items.addNewItem(
                                 ItemType::File, file->getFileName(), file, true, Items::NullItem);
                             return true;
                         });
}

void CUVViewHelper::getDirItems(const Subset& subset,
                                const CQoUtils::Dir& dir,
                                bool recursive,
                                Items& items)
{
    if (dir)
        return addDirs(subset, dir->getSubDirs(), recursive, items);
    addDirs(subset, CQoCollection::m_ownCollection.getRootDirs(), recursive, items);
    addDirs(subset, CQoCollection::m_foreignCollection.getRootDirs(), recursive, items);
}

void CUVViewHelper::getOnlyDirItems(const Subset& subset, const CQoUtils::Dir& dir, Items& items)
{
    getDirItems(subset, dir, false, items);
}

void CUVViewHelper::getAllDirItems(const Subset& subset, const CQoUtils::Dir& dir, Items& items)
{
    getDirItems(subset, dir, false, items);
    for (const auto& file : dir->getFiles())
    {
        if (subset.hasFile(file))
            items.addNewItem(ItemType::File, file->getFileName(), file, true, Items::NullItem);
    }
}

void CUVViewHelper::getOwnCollDirsData(const Subset& subset, Items& items)
{
    addDirs(subset, CQoCollection::m_ownCollection.getRootDirs(), true, items);
}

void CUVViewHelper::getForeignCollDirsData(const Subset& subset, Items& items)
{
    addDirs(subset, CQoCollection::m_foreignCollection.getRootDirs(), true, items);
}

void CUVViewHelper::getNewGenreItems(const Subset&, int flags, Items& items, AddFileInfo& info)
{
    CUVViewItem* const item = itemFor(info.m_genre, ItemType::Genre, ItemType::OtherGenres, items);
    info.m_item = item;
    if (item && (flags & withArtists) != 0)
        getNewArtistItems(flags, item->getSubItems(), info);
}

void CUVViewHelper::getNewArtistItems(int flags, Items& items, AddFileInfo& info)
{
    CUVViewItem* const item =
        itemFor(info.m_artist, ItemType::Artist, ItemType::OtherArtists, items);
    if (!item)
        return;
    info.m_item = item;
    if ((flags & withAlbums) != 0)
        getNewAlbumItems(flags, item->getSubItems(), info);
}

void CUVViewHelper::getNewAlbumItems(int flags, Items& items, AddFileInfo& info)
{
    CUVViewItem* const item = itemFor(info.m_album, ItemType::Album, ItemType::OtherAlbums, items);
    if (!item)
        return;
    items.keepSorted(item); // the file may have brought another year
    info.m_item = item;
    if ((flags & withFiles) != 0)
        getNewFileItem(item->getSubItems(), info);
}

void CUVViewHelper::getNewFileItem(Items& items, AddFileInfo& info)
{
    info.m_item = addFileItem(info.m_file, items);
}

void CUVViewHelper::getNewDirItems(const CQoUtils::Dir& dir,
                                   bool recursive,
                                   Items& items,
                                   AddFileInfo& info)
{
    std::vector<CQoUtils::Dir> upwards;
    CQoUtils::Dir next = info.m_file->getParentDir();
    for (; next && next != dir; next = next->getParentDir())
        upwards.push_back(next);
    if (next != dir)
        return; // the file does not lie below the directory
    Items* level = &items;
    while (!upwards.empty())
    {
        info.m_item = addDirItem(upwards.back(), *level);
        level = &info.m_item->getSubItems();
        upwards.pop_back();
        if (!recursive)
            return;
    }
}

CUVViewItem* CUVViewHelper::addGenreItem(const CQoUtils::Genre& genre, Items& items)
{
    return itemFor(genre, ItemType::Genre, ItemType::OtherGenres, items);
}

CUVViewItem* CUVViewHelper::addArtistItem(const CQoUtils::Artist& artist, Items& items)
{
    return itemFor(artist, ItemType::Artist, ItemType::OtherArtists, items);
}

CUVViewItem* CUVViewHelper::addAlbumItem(const CQoUtils::Album& album, Items& items)
{
    return itemFor(album, ItemType::Album, ItemType::OtherAlbums, items);
}

CUVViewItem* CUVViewHelper::addDirItem(const CQoUtils::Dir& dir, Items& items)
{
    return items.checkAddItem(ItemType::Dir, dir->getShortName(), dir, true, Items::NullItem);
}

CUVViewItem* CUVViewHelper::addFileItem(const CQoUtils::File& file, Items& items)
{
    return items.checkAddItem(ItemType::File, file->getFileName(), file, true, Items::NullItem);
}

CUVViewItem* CUVViewHelper::addOtherItem(EType type, Items& items)
{
    // If there is one, it is the last.
    CUVViewItem* const last = items.IsEmpty() ? nullptr : items[items.GetUpperBound()];
    if (last && last->getType() == type)
        return last;
    return items.addNewItem(type, groupName(), {}, false, Items::NullItem);
}

CUVViewItem* CUVViewHelper::addParentItems(const Parents& parents, bool withAlbum, Items& items)
{
    const auto orGroup = [](auto add, const auto& object, EType groupType, Items& to)
    { return object ? add(object, to) : addOtherItem(groupType, to); };
    CUVViewItem* const artist =
        orGroup(addArtistItem, parents.m_artist, ItemType::OtherArtists, items);
    if (!withAlbum)
        return artist;
    return orGroup(addAlbumItem, parents.m_album, ItemType::OtherAlbums, artist->getSubItems());
}
