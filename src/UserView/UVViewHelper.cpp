#include "UserView/UVViewHelper.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "UserView/UVUtils.h"

// The three panes. The items of single levels are made in UVViewHelperItems.cpp, counts and marks
// are in UVViewHelperCounts.cpp, leaving files in UVViewHelperRemove.cpp.

namespace
{
using View = CUVViewHelper;

bool isOutside(const AddFileInfo* add, const CQoCollSubset& subset)
{
    return add && !subset.hasFile(add->m_file);
}

void addArtists(const View::Subset& subset,
                const View::Parents& parents,
                int flags,
                View::Items& items,
                AddFileInfo* add)
{
    if (!add)
        View::getArtistItems(subset, parents, flags, items);
    else if (add->belongsTo(parents))
        View::getNewArtistItems(flags, items, *add);
}

void addAlbums(const View::Subset& subset,
               const View::Parents& parents,
               int flags,
               View::Items& items,
               AddFileInfo* add)
{
    if (!add)
        View::getAlbumItems(subset, parents, flags, items);
    else if (add->belongsTo(parents))
        View::getNewAlbumItems(flags, items, *add);
}

void addFiles(const View::Subset& subset,
              const View::Parents& parents,
              View::Items& items,
              AddFileInfo* add)
{
    if (!add)
        View::getFileItems(subset, parents, items);
    else if (add->belongsTo(parents))
        View::getNewFileItem(items, *add);
}

/// The files directly in the directory.
void addDirFiles(const View::Subset& subset,
                 const CQoUtils::Dir& dir,
                 View::Items& items,
                 AddFileInfo* add)
{
    if (add)
    {
        if (add->m_file->getParentDir() == dir)
            View::getNewFileItem(items, *add);
        return;
    }
    for (const auto& file : dir->getFiles())
    {
        if (subset.hasFile(file))
            items.addNewItem(
                CUVViewItemType::File, file->getFileName(), file, true, View::Items::NullItem);
    }
}

/// The tree below a selected genre, artist or album.
void addTree(const CUVViewItem& deciding,
             const View::Parents& parents,
             const View::Subset& subset,
             View::Items& items,
             AddFileInfo* add)
{
    constexpr int flags = View::withAlbums | View::withFiles;
    if (deciding.isGenre())
        return addArtists(subset, parents, add ? flags | View::withArtists : flags, items, add);
    if (add && !add->belongsTo(parents))
        return;
    CUVViewItem* const top = View::addParentItems(parents, deciding.isAlbum(), items);
    if (deciding.isArtist())
        addAlbums(subset, parents, flags, top->getSubItems(), add);
    else
        addFiles(subset, parents, top->getSubItems(), add);
    if (add && !add->m_item)
        add->m_item = top; // a picture of the artist has no album to stand below
}
} // namespace

void CUVViewHelper::getLeftViewItems(EViewType type,
                                     const Subset& subset,
                                     Items& items,
                                     AddFileInfo* add)
{
    if (isOutside(add, subset))
        return;
    if (add)
        add->m_item = nullptr;
    else
        items.clear();
    switch (type)
    {
    case leftArtists:
        addArtists(subset, {}, 0, items, add);
        break;
    case leftGenreArtists:
    case leftGenres:
    {
        const int flags = type == leftGenreArtists ? withGenres | withArtists : withGenres;
        if (add)
            getNewGenreItems(subset, flags, items, *add);
        else
            getGenreItems(subset, flags, items);
        break;
    }
    case leftDirs:
        if (add)
            getNewDirItems({}, true, items, *add);
        else
            getDirItems(subset, {}, true, items);
        break;
    default:
        return;
    }
    finishGetViewItems(subset, items, add, {});
}

CUVViewHelper::EViewType CUVViewHelper::getMiddleViewType(EViewType leftType,
                                                          const CUVViewItem* leftItem)
{
    switch (leftType)
    {
    case leftArtists:
        return middleAlbums;
    case leftGenreArtists:
        if (leftItem && leftItem->isGenre())
            return middleArtists;
        return leftItem && leftItem->isArtist() ? middleAlbums : viewNone;
    case leftGenres:
        return middleArtists;
    case leftDirs:
        return middleDirs;
    default:
        return viewNone;
    }
}

void CUVViewHelper::getMiddleViewItems(CUVViewItem* leftItem,
                                       EViewType leftType,
                                       EViewType& middleType,
                                       const Subset& subset,
                                       Items& items,
                                       AddFileInfo* add)
{
    middleType = getMiddleViewType(leftType, leftItem);
    if (isOutside(add, subset))
        return;
    if (add)
        add->m_item = nullptr;
    else
        items.clear();
    if (!leftItem)
        return;
    Parents parents;
    CUVUtils::getParentItemsInfoCheckParent(leftItem, parents);
    if (middleType == middleArtists)
        addArtists(subset, parents, withArtists | withAlbums, items, add);
    else if (middleType == middleAlbums)
        addAlbums(subset, parents, withAlbums, items, add);
    else if (middleType == middleDirs && parents.m_dir && add)
        getNewDirItems(parents.m_dir, false, items, *add);
    else if (middleType == middleDirs && parents.m_dir)
        getDirItems(subset, parents.m_dir, false, items);
    else
        return;
    finishGetViewItems(subset, items, add, parents);
}

void CUVViewHelper::getRightViewItems(const CUVViewItem* leftItem,
                                      const CUVViewItem* middleItem,
                                      EViewType rightType,
                                      const Subset& subset,
                                      Items& items,
                                      AddFileInfo* add)
{
    if (isOutside(add, subset))
        return;
    if (add)
        add->m_item = nullptr;
    else
        items.clear();
    const CUVViewItem* const deciding = middleItem ? middleItem : leftItem;
    if (!deciding || (rightType != rightFiles && rightType != rightTree))
        return;
    Parents parents;
    getViewsParentItemsInfo(leftItem, middleItem, parents);
    if (deciding->isDir() && parents.m_dir)
        addDirFiles(subset, parents.m_dir, items, add);
    else if (!deciding->isGenre() && !deciding->isArtist() && !deciding->isAlbum())
        return;
    else if (rightType == rightFiles)
        addFiles(subset, parents, items, add);
    else
        addTree(*deciding, parents, subset, items, add);
    finishGetViewItems(subset, items, add, parents);
}

void CUVViewHelper::getViewsParentItemsInfo(const CUVViewItem* leftItem,
                                            const CUVViewItem* middleItem,
                                            Parents& parents)
{
    CUVUtils::getViewDataParentItemsInfo(leftItem, middleItem, parents);
}

void CUVViewHelper::finishGetViewItems(const Subset& subset,
                                       Items& items,
                                       AddFileInfo* add,
                                       const Parents& outside)
{
    if (!add)
    {
        computeFileCount(subset, items, outside);
        updateViewItemsCheckState(subset, items, outside);
        return;
    }
    if (!add->m_item)
        return;
    updateParentViewItemsFileCount(subset, add->m_item, outside);
    updateParentViewItemsCheckState(subset, add->m_item, outside);
}
