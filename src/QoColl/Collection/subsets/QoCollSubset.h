#pragma once

#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/subsets/SubsetKeys.h"
#include "common/QoSortedPtrList.h"
#include "types/CriticalSection.h"

#include <functional>
#include <utility>
#include <vector>

namespace qo
{
struct SubsetFile;
} // namespace qo

/// A selection of the files of both collections: those that pass a filter, with the directories,
/// genres, artists and albums that they reach and the numbers of files in each. Views ask only
/// subsets, so a filter costs something when it changes and not once per view.
///
/// Three subsets are kept, each a part of the one before:
///
///   full   every file of both collections
///   text   those with a name in which a word begins with the filter text
///   show   those of the kinds and the collection that the user wants to see
///
/// The current one is the last of them that filters anything. The full subset is built when the
/// current one is first asked for, so who never asks pays nothing. From then on it follows the
/// changes of the collections file by file.
///
/// Unknown objects: each counts its own files, and all of a class are counted together as well,
/// since views show them as one line (see qo::unknownGroup).
///
/// The static functions take the lock m_cs. A subset that they return is used without it: the host
/// must not let views overlap with changes of the collections or the filter.
class QO_API CQoCollSubset
{
public:
    using CheckObject = CQoUtils::CheckObject;
    using Dir = CQoUtils::Dir;
    using File = CQoUtils::File;
    using Files = CQoUtils::Files;
    using Genre = CQoUtils::Genre;
    using Artist = CQoUtils::Artist;
    using Album = CQoUtils::Album;
    using Parents = CQoUtils::ParentItemsInfo;
    using ShowFilterInfo = CQoUtils::ShowFilterInfo;

    enum EFilterType : int
    {
        filterAll = 1, ///< all below, genres and the names of files
        filterArtist = 2,
        filterAlbum = 3,
        filterTrack = 4
    };

    using GenreArtistInfo = qo::GenreArtistInfo;
    using GenreArtistAlbumInfo = qo::GenreArtistAlbumInfo;
    using ArtistAlbumInfo = qo::ArtistAlbumInfo;
    struct FileCountInfo
    {
        int m_ownCount = 0;
        int m_foreignCount = 0;
    };
    /// Albums and tracks, and the years of the albums.
    struct LTOwners
    {
        CPtrListT<CLTObject> objects;
        std::vector<int> years; ///< by index; 0 for a track
    };

    /// Empty. A text subset chooses by names, another one by ShowFilterInfo. The maps start with
    /// that many buckets unless it is 0.
    explicit CQoCollSubset(bool isTextSubset, unsigned hashSize = 0);
    CQoCollSubset(const CQoCollSubset&) = delete;
    CQoCollSubset& operator=(const CQoCollSubset&) = delete;
    virtual ~CQoCollSubset();

    // Membership; false for null. A directory is in the subset when a file below it is.
    virtual bool hasFile(const File& file) const;
    virtual bool hasDir(const Dir& dir) const;
    virtual bool hasGenre(const Genre& genre) const;
    virtual bool hasArtist(const Artist& artist) const;
    virtual bool hasAlbum(const Album& album) const;
    /// False for objects that are none of these.
    virtual bool hasCheckObject(const CheckObject& object) const;
    /// Whether the filter lets files of the collection through at all.
    virtual bool canShowOwnColl() const;
    virtual bool canShowForeignColl() const;

    // How many files of the subset belong to the object and to the genre and artist that are set in
    // parents. Null means all unknown objects of the class together. With parents an unknown object
    // means the same, since combinations are only counted for the group.
    void getGenreFileCount(const Genre& genre, int& own, int& foreign) const;
    void getArtistFileCount(const Artist& artist,
                            int& own,
                            int& foreign,
                            const Parents& parents = {}) const;
    void getAlbumFileCount(const Album& album,
                           int& own,
                           int& foreign,
                           const Parents& parents = {}) const;
    /// The files below the directory.
    void getDirFileCount(const Dir& dir, int& own, int& foreign) const;
    void getFileCount(int& own, int& foreign) const;
    /// Whether the file is in the subset and of the foreign collection.
    bool hasForeignFile(const File& file) const;

    // All in the subset, sorted by address, which has no meaning for a user. Unknown objects are
    // among them.
    const CQoSortedPtrList<CHDFile>& getFiles() const noexcept { return m_files; }
    const CQoSortedPtrList<CHDDirectory>& getDirs() const noexcept { return m_dirs; }
    const CQoSortedPtrList<CLTGenre>& getGenres() const noexcept { return m_genres; }
    const CQoSortedPtrList<CLTArtist>& getArtists() const noexcept { return m_artists; }
    const CQoSortedPtrList<CLTAlbum>& getAlbums() const noexcept { return m_albums; }

    /// Visits the files that belong to the genre, artist and album that are set in parents, until a
    /// visit returns false. Looks at every file of the subset.
    void visitFiles(const Parents& parents, const std::function<bool(const File&)>& visit) const;
    /// The artists that files of the genre have; null for the unknown ones. genre null means the
    /// group of the unknown ones.
    std::vector<Artist> getArtistsOf(const Genre& genre) const;
    /// The same for all genres at once: each pair of genre and artist that some file has.
    std::vector<std::pair<Genre, Artist>> getGenreArtists() const;
    /// The albums that files of the genre and of the artist have, as far as these are set in
    /// parents; null for the unknown ones.
    std::vector<Album> getAlbumsOf(const Parents& parents) const;

    // The subsets of both collections

    /// To be called when the collections have changed: forgets all subsets.
    static void refreshSubsets();
    /// The same when nothing has changed but files that removeFile() was called for, and these new
    /// ones. Subsets in use follow these changes alone.
    static void refreshSubsets(const Files& added);
    /// Frees everything, at the end of the program.
    static void clearSubsets();
    /// Sets the filter; the text is folded to lower case. Setting the same again costs nothing.
    static void setFilterInfo(CString text, EFilterType type, const ShowFilterInfo& info);
    static void updateCrtSubset();
    /// Valid until the filter or a collection changes.
    static const CQoCollSubset& getCrtSubset();
    static const CQoCollSubset& getFullSubset();

    /// Whether subsets are in use, so that they must follow what happens to files.
    static bool isFollowing();
    /// To be called before a file leaves its directory.
    static void removeFile(const File& file);
    /// To be called before more changes than single files: forgets all subsets.
    static void stopFollowing();
    /// To be called with files that are about to be released, and afterwards with the result. The
    /// links of pictures and texts, and the years of albums, hang on what is released with a file.
    static LTOwners ownersOf(const Files& files);
    static void recountAfterRelease(const LTOwners& before);

    /// Which files left and joined the collections since the last call, for views that follow.
    /// False if that is not known, or a file went to another directory, after which views must be
    /// built anew; both lists are empty then.
    /// Of a file that was read again the old object left and a new one joined.
    static bool takeChanges(Files& removed, Files& added);

protected:
    void clear();
    void fixFilter();
    void setFilterText(const CString& text, EFilterType type);
    void setShowFilterInfo(const ShowFilterInfo& info);

    static void incDecFileCount(FileCountInfo& info, bool inc, int collection, int times = 1);
    // Each returns whether the object has thereby entered or left the subset.
    bool incDecGenreFileCount(const CLTGenre* genre, bool inc, int collection, int times);
    bool incDecArtistFileCount(
        const CLTArtist* artist, const CLTGenre* genre, bool inc, int collection, int times);
    bool incDecAlbumFileCount(const CLTAlbum* album,
                              const CLTGenre* genre,
                              const CLTArtist* artist,
                              bool inc,
                              int collection,
                              int times);
    /// One of these by the type of the object; genre and artist are those of the file.
    bool incDecLTObjectFileCount(const CLTObject& object,
                                 const CLTGenre* genre,
                                 const CLTArtist* artist,
                                 bool inc,
                                 int collection,
                                 int times);
    /// The logical objects of a file; null where it has none.
    static void getLTAssocs(
        const File& file, Genre& genre, Artist& artist, Album& album, CQoUtils::Track& track);
    /// The names in which a filter of that type is sought.
    static void getFileSearchStrings(const File& file, EFilterType type, CStringArray& strings);
    static bool filterTypeMatches(EFilterType wanted, EFilterType field);
    bool stringStartMatchesFilter(const CString& word) const;
    bool stringMatchesFilter(const CString& text) const;
    bool stringsMatchFilter(const CStringArray& strings) const;
    /// For a text subset by names, else by kind and collection.
    bool fileMatchesFilter(const File& file) const;

    /// Does nothing when the file is already in (add) or not in (otherwise).
    void addRemoveFile(const File& file, bool add);
    void addRemoveFiles(const Files& files, bool add);
    /// Adds those of the files that match the filter.
    void checkAddFiles(const Files& files);

private:
    /// The files below a directory of one collection. The directory above is kept, since a
    /// directory that leaves its collection forgets its parent.
    struct DirFileCount
    {
        int m_count = 0;
        const CHDDirectory* m_parent = nullptr;
    };
    using DirCounts = CMap<const CHDDirectory*, DirFileCount>;
    /// Neighbouring files that are counted alike.
    struct Run
    {
        const File* file;
        qo::FileAssocs assocs;
        int times;
    };
    struct NewMembers;

    void countRun(const Run& run, bool inc, NewMembers* members);
    void addRemoveParentDirs(const Run& run, bool inc, NewMembers* members);
    static qo::FileAssocs assocsOf(const File& file);
    /// The same without asking for the collection.
    static qo::FileAssocs linksOf(const File& file);
    /// Fills an empty subset with files in ascending order of their addresses.
    void fill(const std::vector<qo::SubsetFile>& files);
    Files filesWithout(const std::vector<qo::SubsetFile>& others) const;
    /// Whether the file is counted under other objects than it has now.
    bool needsRecount(const File& file) const;
    template <class Key>
    static bool
    incDecKey(CMap<Key, FileCountInfo>& map, const Key& key, bool inc, int collection, int times);

    static void addDirsToSubsets(const CPtrListT<CHDDirectory>& dirs,
                                 std::vector<qo::SubsetFile>& files);
    static void ensureFull();
    static void fillText();
    static void fillShow(const CQoCollSubset& base);
    static void forgetAll();
    static bool countChange();
    static void leaveSubsets(const File& file);
    static void joinSubsets(const File& file);
    static void noteChange(const File& file, bool isAdded);
    /// Counts the pictures and texts of albums and tracks again where their objects changed.
    static void recountCompanions(const CPtrListT<CLTObject>& owners);

    static CQoCollSubset m_emptySubset;
    static CQoCollSubset m_fullSubset;
    static CQoCollSubset m_textSubset;
    static CQoCollSubset m_showSubset;
    static const CQoCollSubset* m_pCrtSubset;
    static CString s_filterText;
    static EFilterType s_filterType;
    static ShowFilterInfo s_showFilterInfo;
    static CCriticalSection m_cs;

    bool m_isTextSubset;
    bool m_isBuilt = false;
    CString m_filterText;
    EFilterType m_filterType = filterAll;
    ShowFilterInfo m_showFilterInfo;
    CQoSortedPtrList<CHDFile> m_files;
    CArray<qo::FileAssocs> m_assocs; ///< of each file, at the same index
    CQoSortedPtrList<CHDDirectory> m_dirs;
    CQoSortedPtrList<CLTGenre> m_genres;
    CQoSortedPtrList<CLTArtist> m_artists;
    CQoSortedPtrList<CLTAlbum> m_albums;
    int m_ownFileCount = 0;
    int m_foreignFileCount = 0;
    // Combinations are counted for groups (qo::groupOf), and under null for "any".
    DirCounts m_ownDirCounts;
    DirCounts m_foreignDirCounts;
    CMap<const CLTGenre*, FileCountInfo> m_genreCounts;
    CMap<const CLTArtist*, FileCountInfo> m_artistCounts;
    CMap<GenreArtistInfo, FileCountInfo> m_genreArtistCounts;
    CMap<GenreArtistAlbumInfo, FileCountInfo> m_genreArtistAlbumCounts;
    CMap<ArtistAlbumInfo, FileCountInfo> m_artistAlbumCounts;
};
