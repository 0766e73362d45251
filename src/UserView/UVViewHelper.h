#pragma once

#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "UserView/Forward.h"
#include "UserView/UVAddFileInfo.h"
#include "UserView/UVViewItem.h"

/// Builds the three panes that a host shows, and lets them follow single files: a left view, a
/// middle view of what is selected there, and a right view of what is selected in both. Everything
/// is asked of the subset that is handed in, so only what passes the filter appears. Unknown
/// objects show as one group item, the last of its list.
///
///   left 2, genres with artists   middle 5, albums    right 9, a tree
///     Pop                           Gold (1992)         ABBA
///       ABBA          selected      [unknown]             Gold
///       [unknown]                                           1 Waterloo.mp3
///     [unknown]
///
/// With an AddFileInfo the get... functions add to a list, which must have been built by the same
/// call, what this file brings; a file outside of the subset changes nothing. removeItems() is the
/// counterpart. Static functions without locks: the host keeps calls apart from changes of the
/// collections and of the filter.
class QO_API CUVViewHelper
{
public:
    using EType = CUVViewItemType::EType;
    using ECheckState = CQoCheckState::ECheckState;
    using Type = CQoUtils::ECollectionType;
    using Parents = CQoUtils::ParentItemsInfo;
    using Subset = CQoCollSubset;
    using Items = CUVViewItemList;
    using CheckObjects = CPtrListT<CQoCheckObject>;

    enum EViewType : int
    {
        viewNone = 0,
        leftArtists = 1,
        leftGenreArtists = 2, ///< genres with their artists below
        leftGenres = 3,
        middleArtists = 4,
        middleAlbums = 5,
        leftDirs = 6, ///< the root directories with the tree below them
        middleDirs = 7,
        rightFiles = 8,
        rightTree = 9
    };
    /// How deep the get...Items functions go.
    enum EFlags : int
    {
        withGenres = 1, ///< without effect
        withArtists = 2,
        withAlbums = 4,
        withFiles = 8
    };

    // The panes. Lists are emptied unless add is given; so is the middle one without a middle type.
    static void
    getLeftViewItems(EViewType type, const Subset& subset, Items& items, AddFileInfo* add);
    static void getMiddleViewItems(CUVViewItem* leftItem,
                                   EViewType leftType,
                                   EViewType& middleType,
                                   const Subset& subset,
                                   Items& items,
                                   AddFileInfo* add);
    static void getRightViewItems(const CUVViewItem* leftItem,
                                  const CUVViewItem* middleItem,
                                  EViewType rightType,
                                  const Subset& subset,
                                  Items& items,
                                  AddFileInfo* add);
    static EViewType getMiddleViewType(EViewType leftType, const CUVViewItem* leftItem);
    static void getViewsParentItemsInfo(const CUVViewItem* leftItem,
                                        const CUVViewItem* middleItem,
                                        Parents& parents);

    // The items of one level and, by flags, below. They are added sorted, without counts and marks.
    static void getGenreItems(const Subset& subset, int flags, Items& items);
    static void
    getArtistItems(const Subset& subset, const Parents& parents, int flags, Items& items);
    static void
    getAlbumItems(const Subset& subset, const Parents& parents, int flags, Items& items);
    static void getFileItems(const Subset& subset, const Parents& parents, Items& items);
    /// The sub-directories of one directory, or the root directories for null; with everything
    /// below if recursive.
    static void
    getDirItems(const Subset& subset, const CQoUtils::Dir& dir, bool recursive, Items& items);
    /// The sub-directories alone, or those and the files directly in the directory.
    static void getOnlyDirItems(const Subset& subset, const CQoUtils::Dir& dir, Items& items);
    static void getAllDirItems(const Subset& subset, const CQoUtils::Dir& dir, Items& items);
    /// The root directories of one collection with everything below.
    static void getOwnCollDirsData(const Subset& subset, Items& items);
    static void getForeignCollDirsData(const Subset& subset, Items& items);

    // What one file brings to a list; info.m_item becomes the lowest item.
    static void getNewGenreItems(const Subset& subset, int flags, Items& items, AddFileInfo& info);
    static void getNewArtistItems(int flags, Items& items, AddFileInfo& info);
    static void getNewAlbumItems(int flags, Items& items, AddFileInfo& info);
    static void getNewFileItem(Items& items, AddFileInfo& info);
    static void
    getNewDirItems(const CQoUtils::Dir& dir, bool recursive, Items& items, AddFileInfo& info);

    // One item, which is made unless it is there.
    static CUVViewItem* addGenreItem(const CQoUtils::Genre& genre, Items& items);
    static CUVViewItem* addArtistItem(const CQoUtils::Artist& artist, Items& items);
    static CUVViewItem* addAlbumItem(const CQoUtils::Album& album, Items& items);
    static CUVViewItem* addDirItem(const CQoUtils::Dir& dir, Items& items);
    static CUVViewItem* addFileItem(const CQoUtils::File& file, Items& items);
    /// The group item of that type.
    static CUVViewItem* addOtherItem(EType type, Items& items);
    /// Items for the artist and, below, the album that are set; the lowest one.
    static CUVViewItem* addParentItems(const Parents& parents, bool withAlbum, Items& items);

    /// Lets a pane follow a file that has left the subset: its item leaves, and so do the items of
    /// objects that have no file there any more; counts and marks of the others are corrected.
    static void
    removeItems(const Subset& subset, const Parents& outside, Items& items, RemoveFileInfo& info);
    /// The same for all three panes. Null for a pane that does not exist.
    static void removeItems(const Subset& subset,
                            const CUVViewItem* leftItem,
                            const CUVViewItem* middleItem,
                            Items* left,
                            Items* middle,
                            Items* right,
                            RemoveFileInfo& info);
    /// Takes out the file's item and each item above it that has no children then.
    static void removeItemAndEmptyParentItems(Items& items, RemoveFileInfo& info);

    // Counts and marks. `outside` is what other panes have selected.
    static void finishGetViewItems(const Subset& subset,
                                   Items& items,
                                   AddFileInfo* add,
                                   const Parents& outside);
    static void getFileCount(const CUVViewItem& item,
                             const Parents& outside,
                             const Subset& subset,
                             int& own,
                             int& foreign);
    /// Of all items and those below.
    static void computeFileCount(const Subset& subset, Items& items, const Parents& outside);
    /// Of the item and those above it.
    static void
    updateParentViewItemsFileCount(const Subset& subset, CUVViewItem* item, const Parents& outside);
    /// The objects that a mark on the item sets: its files in the subset, or its link where that
    /// means the same.
    static void getCheckTargets(const CUVViewItem& item,
                                const Parents& outside,
                                const Subset& subset,
                                CheckObjects& targets);
    static void
    updateViewItemCheckState(CUVViewItem& item, const Parents& outside, const Subset& subset);
    static void
    updateViewItemsCheckState(const Subset& subset, Items& items, const Parents& outside);
    static void updateParentViewItemsCheckState(const Subset& subset,
                                                CUVViewItem* item,
                                                const Parents& outside);
    /// Sets the mark of what the item stands for in the subset, in both trees, and corrects the
    /// items below and above it. Other panes must be updated by the caller.
    static void setCheckState(CUVViewItem& item,
                              ECheckState state,
                              const Parents& outside,
                              const Subset& subset);
    /// A checked item becomes unchecked, any other one checked.
    static void toggleCheckState(CUVViewItem& item, const Parents& outside, const Subset& subset);

    // The collection of what an item stands for: exactly, by its targets; fast, by its counts; and
    // for players, which know files alone.
    static Type
    getCollectionMO(const CUVViewItem& item, const CUVViewItem* parent, const Subset& subset);
    static Type getCollectionMOFast(const CUVViewItem& item);
    static Type getCollectionMP(const CUVViewItem& item);

    // Finding one's way. Null if there is no such item. Lists are looked through with all below.
    static CUVViewItem* getGenreItem(const Items& items, const CQoUtils::Genre& genre);
    static CUVViewItem* getArtistItem(const Items& items, const CQoUtils::Artist& artist);
    static CUVViewItem* getAlbumItem(const Items& items, const CQoUtils::Album& album);
    static CUVViewItem* getDirItem(const Items& items, const CQoUtils::Dir& dir);
    static CUVViewItem* getFileItem(const Items& items, const CQoUtils::File& file);
    /// By path, following the directories down.
    static CUVViewItem* findDirItem(const Items& items, const CQoCollPath& path);
    static bool isChildItemRec(const CUVViewItem* item, const CUVViewItem* parent);
    static bool isSameOrParentItem(const CUVViewItem* item, const CUVViewItem* other);
    /// The child of `parent` in which the item is.
    static CUVViewItem* getParentSubItem(CUVViewItem* item, const CUVViewItem* parent);
    /// The item before this one when everything is unfolded.
    static CUVViewItem* getPrevViewItem(const Items& items, const CUVViewItem* item);
    /// The nearest one before it that has no children.
    static CUVViewItem* getPrevLeafItem(const Items& items, const CUVViewItem* item);
    static bool itemHasChildren(const CUVViewItem* item);
};
