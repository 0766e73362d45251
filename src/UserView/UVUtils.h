#pragma once

#include "Logical/LTObjectType.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Tags/Forward.h"
#include "UserView/Forward.h"

#include <functional>
#include <vector>

class CStringArray;

/// Questions about view items: which objects and files stand behind them. The forms with a list ask
/// for each item in its order; a file that several items show counts once. Files are those of the
/// subset, by default the current one. Nothing is changed. Items may be null where a pointer is
/// taken, which stands for nothing selected. No locks: the host keeps calls apart.
class QO_API CUVUtils
{
public:
    using Type = CQoUtils::ECollectionType;
    using Parents = CQoUtils::ParentItemsInfo;
    using Files = CQoUtils::Files;
    using MusicFiles = CPtrListT<CHDMusicFile>;
    using SearchResults = CPtrListT<CHDSearchResult>;
    using OfflineFiles = CPtrListT<CHDOfflineFile>;
    using LTObject = boost::shared_ptr<CLTObject>;

    /// A track as a player wants it.
    struct Track
    {
        CString m_artist;
        CString m_title;
        CString m_album;
        CString m_genre;
        CString m_trackNumber;
        CString m_year;
        CString m_path;
    };

    // What is selected with an item. Cells that are set stay.
    /// The item's own object.
    static void getParentItemsInfo(const CUVViewItem* item, Parents& parents);
    /// Also those of the items above it: of an artist that is shown below a genre, that genre.
    static void getParentItemsInfoCheckParent(const CUVViewItem* item, Parents& parents);
    /// Of the selections in two panes; the middle one comes first.
    static void getViewDataParentItemsInfo(const CUVViewItem* leftItem,
                                           const CUVViewItem* middleItem,
                                           Parents& parents);

    /// The object behind the item; of a group item its files.
    static void getLinkedObjects(const CUVViewItem* item,
                                 CPtrListT<CQoCheckObject>& objects,
                                 const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getLinkedObjects(const CUVViewItemList& items,
                                 CPtrListT<CQoCheckObject>& objects,
                                 const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    /// The texts that the item and those above it say; of a file all of its tag. path is that of a
    /// file or directory, else "".
    static void getTagInfo(const CUVViewItem* item, SimpleMusicTag& tag, CString& path);
    /// Null if there is no such item in the list or below.
    static CUVViewItem* findFileItem(const CUVViewItemList& items, const CQoUtils::File& file);
    static CUVViewItem* findSearchResultItem(const CUVViewItemList& items,
                                             const boost::shared_ptr<CHDSearchResult>& result);

    // The object behind one item; null for items of other kinds.
    static CQoUtils::File getItemFile(const CUVViewItem* item, bool musicOnly = false);
    static boost::shared_ptr<CHDMusicFile> getItemMusicFile(const CUVViewItem* item);
    static boost::shared_ptr<CHDOfflineFile> getItemOfflineFile(const CUVViewItem* item);
    static boost::shared_ptr<CHDInplaceConvertedFile>
    getItemInplaceConvertedFile(const CUVViewItem* item);
    static boost::shared_ptr<CHDSearchResult> getItemSearchResult(const CUVViewItem* item);
    /// The same as getItemMusicFile() without a handle.
    static const CHDMusicFile* musicFileOf(const CUVViewItem& item);

    /// Visits the files of the subset that the item stands for, until a visit returns false. The
    /// items above it and `outside`, which is what other panes have selected, narrow them.
    static void visitFiles(const CUVViewItem* item,
                           const Parents& outside,
                           const CQoCollSubset& subset,
                           const std::function<bool(const CQoUtils::File&)>& visit);
    /// The same for what is selected alone.
    static void visitFiles(const Parents& parents,
                           const CQoCollSubset& subset,
                           const std::function<bool(const CQoUtils::File&)>& visit);

    // Files behind items, of one collection or both; appended unless they are there. ITEMS is const
    // CUVViewItem* or a const CUVViewItemList&.
    template <class ITEMS>
    static int getMusicFilesCount(const ITEMS& items,
                                  Type type,
                                  const CQoCollSubset& subset = CQoCollSubset::getCrtSubset())
    {
        MusicFiles files;
        getMusicFiles(items, type, files, subset);
        return files.GetSize();
    }
    static void getMusicFiles(const CUVViewItem* item,
                              Type type,
                              MusicFiles& files,
                              const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getMusicFiles(const CUVViewItemList& items,
                              Type type,
                              MusicFiles& files,
                              const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static bool hasMusicFiles(const CUVViewItem* item,
                              Type type,
                              const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static bool hasMusicFiles(const CUVViewItemList& items,
                              Type type,
                              const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    /// Adds the numbers of files and music files, and their bytes by the records if size is not
    /// null.
    static void getHDFilesInfo(const CUVViewItem* item,
                               Type type,
                               int& fileCount,
                               int& musicCount,
                               std::int64_t* size,
                               const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getHDFilesInfo(const CUVViewItemList& items,
                               Type type,
                               int& fileCount,
                               int& musicCount,
                               std::int64_t* size,
                               const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getHDFiles(const CUVViewItem* item,
                           Type type,
                           Files& files,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getHDFiles(const CUVViewItemList& items,
                           Type type,
                           Files& files,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static bool hasHDFiles(const CUVViewItem* item,
                           Type type,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static bool hasHDFiles(const CUVViewItemList& items,
                           Type type,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());

    // Of items that are such files themselves.
    static void getHDSearchResults(const CUVViewItem* item, SearchResults& results);
    static void getHDSearchResults(const CUVViewItemList& items, SearchResults& results);
    static bool hasHDSearchResults(const CUVViewItem* item);
    static bool hasHDSearchResults(const CUVViewItemList& items);
    static void getHDOfflineFiles(const CUVViewItem* item, OfflineFiles& files);
    static void getHDOfflineFiles(const CUVViewItemList& items, OfflineFiles& files);
    static bool hasHDOfflineFiles(const CUVViewItem* item);
    static bool hasHDOfflineFiles(const CUVViewItemList& items);

    /// Either may become null.
    static void
    getLinks(const CUVViewItem* item, LTObject& logical, boost::shared_ptr<CHDObject>& physical);
    /// The logical object behind the item: its link, of a file its track, or else its picture or
    /// lyrics.
    static LTObject getLTLink(const CUVViewItem* item);
    /// The object of that type that goes with it: the artist of an album; artist and genre of a
    /// track; else itself or null. A track does not lead to its album.
    static LTObject getLTLink(const CUVViewItem* item, CLTObjectType::EType type);
    static bool hasLTLink(const CUVViewItem* item, CLTObjectType::EType type);

    /// The known artists of the items' files, each once, in their order.
    static void getArtists(const CUVViewItem* item,
                           CStringArray& artists,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getArtists(const CUVViewItemList& items,
                           CStringArray& artists,
                           const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    /// One for each music file, by its record.
    static void getTracks(const CUVViewItem* item,
                          std::vector<Track>& tracks,
                          const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    static void getTracks(const CUVViewItemList& items,
                          std::vector<Track>& tracks,
                          const CQoCollSubset& subset = CQoCollSubset::getCrtSubset());
    /// Negative, 0 or positive; an album without a year comes last.
    static int compareAlbumsYears(const CQoUtils::Album& a, const CQoUtils::Album& b);
};
