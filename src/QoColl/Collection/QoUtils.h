#pragma once

#include "QoColl/Collection/QoUtilsTypes.h"
#include "QoColl/Db/Records/ItemSource.h"
#include "types/String.h"

class CQoCollPath;
class CStringArray;

/// Questions about files, paths and the objects of the collections. Handles must not be null unless
/// it says so. No locks: the host keeps calls apart from those that change collections.
class QO_API CQoUtils : public qo::QoUtilsTypes
{
public:
    /// For the host; the kernel only keeps it.
    static CQoCollectionMap m_collectionMap;

    // Collections. What hangs on no root folder, or on one that was taken out, counts as own.
    static ECollectionType getCollection(const CheckObject& object);
    static ECollectionType getCollection(const Files& files);
    static bool collTypesMatch(ECollectionType a, ECollectionType b);
    static bool matchesCollection(const CheckObject& object, ECollectionType type);
    /// The first by path in the own collection, else in the foreign one, else null.
    static File searchFileInAllCollections(const CString& velmoraId);

    // What a filter shows: the file's bit of each group of EShowType.
    static int getFileAudioVideoType(const File& file);
    static int getFileVelmoraMyMusicType(const File& file);
    static int getFileIsMusicType(const File& file);
    static int getFileReviewedType(const File& file);
    static int getFileImportedType(const File& file);
    static int getFilePurchasedType(const File& file);
    static bool existVisibleFiles(const Files& files, int mask);
    /// Unless everything is shown, an object without files is not visible.
    static bool isObjectVisible(const CheckObject& object, const ShowFilterInfo& filter);

    /// By an extension without dot, without regard to case. Music is audio or video.
    static bool isAudioExt(const CString& ext);
    static bool isVideoExt(const CString& ext);
    static bool isMusicExt(const CString& ext);
    static bool isMusicFilePath(const CString& path);
    static bool isPictureFile(const CString& ext);
    static bool isTextFile(const CString& ext);

    // Of a list. Music files are those of class CHDMusicFile; real files lie on a disk, be it that
    // of a device. The get... forms append.
    static bool existMusicFilesInList(const Files& files);
    static void getMusicFiles(const Files& files, CPtrListT<CHDMusicFile>& musicFiles);
    static int countMusicFiles(const Files& files);
    /// How many count as music by their records, and how many do not.
    static void getMusicNonMusicTypeFileCount(const Files& files, int& music, int& other);
    static bool existRealFilesInList(const Files& files);
    static void getRealFiles(const Files& files, Files& realFiles);

    /// The path under which the system can reach the file: only for drive and network paths. False
    /// leaves real alone; the other form is then empty.
    static bool getRealPath(const CQoCollPath& path, CString& real);
    static CString getRealPath(const CQoCollPath& path);
    /// The same for a path in string form, which needs no parsing.
    static CString getRealPath(const CString& path);
    /// Bytes on the disk now; 0, and a line in the log, when the system cannot tell.
    static std::int64_t getFileSize(const File& file);
    /// Negative, 0 or positive, without regard to case. The order of records and files.
    static int comparePaths(const CString& a, const CString& b);
    /// Appends to added what only the first list has and to removed what only the second has, each
    /// sorted; so callers who ask what is new pass the new list first.
    static void diffPaths(const CStringArray& oldDirs,
                          const CStringArray& newDirs,
                          CStringArray& added,
                          CStringArray& removed);
    /// Splits "05 - Artist - Title.mp3", a name or a path. Without a '-' all of it is the title; a
    /// number of one or two digits ahead is dropped.
    static void getArtistTitleFromFileName(CString name, CString& artist, CString& title);
    static CString getArtistFromFileName(const CString& name);
    /// By the titles in the records alone, without regard to case.
    static bool isSimilarFile(const File& a, const File& b);
    /// Whether the foreign collection has music of that title by the same artist; file may be null.
    static bool existSimilarFileInForeignCollection(const File& file);

    /// The directory itself, or the one that holds the file; null for a file outside a tree.
    static Dir getDir(const boost::shared_ptr<CHDObject>& object);
    /// The highest directory above; null for a file outside a tree.
    static Dir getRootDir(const boost::shared_ptr<CHDObject>& object);
    static Dir getRootDir(const Dir& dir);
    /// What lies directly in the directory, with `recursive` also deeper; appended, each ahead of
    /// what is below it.
    static void getDirFiles(const Dir& dir, bool recursive, Files& files);
    static void getDirSubDirs(const Dir& dir, bool recursive, CPtrListT<CHDDirectory>& dirs);

    // Orders for sorted lists: by kind, then by path or name without regard to case, and at last by
    // address, so that such a list holds each object once. Directories stand ahead of files.
    static int compareHDObjectsByType(const boost::shared_ptr<CHDObject>& a,
                                      const boost::shared_ptr<CHDObject>& b);
    static int compareLTObjectsByType(const boost::shared_ptr<CLTObject>& a,
                                      const boost::shared_ptr<CLTObject>& b);
    static int compareCheckObjectByType(const CheckObject& a, const CheckObject& b);

    // The files behind objects, appended unless they are in the list already: of a directory all
    // that lies below it, of a logical object all files whose getLTAssoc() of its type it is.
    // Objects outside the trees have none.
    static void getLinkedFiles(const CheckObject& object, Files& files);
    static void getTrackFiles(const Track& track, Files& files);
    static void getAlbumFiles(const Album& album, Files& files);
    static void getArtistFiles(const Artist& artist, Files& files);
    static void getGenreFiles(const Genre& genre, Files& files);
    static void getLyricsFiles(const boost::shared_ptr<CLTLyrics>& lyrics, Files& files);
    static void getPictureFiles(const boost::shared_ptr<CLTPicture>& picture, Files& files);
    /// What a drag of the objects carries.
    static void getDraggedFiles(const CPtrListT<CQoCheckObject>& objects, Files& files);
    static void getDraggedMusicFiles(const CPtrListT<CQoCheckObject>& objects,
                                     CPtrListT<CHDMusicFile>& files);

    // How many files are linked to the object, and of those only the ones that also belong to the
    // genre, artist and album that parents sets.
    static int getTrackFileCount(const Track& track, const ParentItemsInfo& parents = {});
    static int getAlbumFileCount(const Album& album, const ParentItemsInfo& parents = {});
    static int getArtistFileCount(const Artist& artist, const ParentItemsInfo& parents = {});
    static int getGenreFileCount(const Genre& genre, const ParentItemsInfo& parents = {});
    // The sums over a list.
    static int getTracksFileCount(const CPtrListT<CLTTrack>& tracks,
                                  const ParentItemsInfo& parents = {});
    static int getAlbumsFileCount(const CPtrListT<CLTAlbum>& albums,
                                  const ParentItemsInfo& parents = {});
    static int getArtistsFileCount(const CPtrListT<CLTArtist>& artists,
                                   const ParentItemsInfo& parents = {});
    static int getGenresFileCount(const CPtrListT<CLTGenre>& genres,
                                  const ParentItemsInfo& parents = {});
    /// Sets the cells of target that are not set, in order, from those of source.
    static void copyMissingParentItemsInfo(ParentItemsInfo& target, const ParentItemsInfo& source);

    /// The year of its first track that gives one; 0 if none does.
    static int getAlbumYear(const Album& album);
    /// By which way the artist's files that are not music came in: sourceNone if there are none,
    /// sourceSeveral if it is not the same for all.
    static eItemSource getArtistNonMusicFilesSource(const Artist& artist);
    /// Where the picture of the file's tag was put; empty unless it is still there.
    static CString getTagPictureTempPath(const File& file);
    /// The first tag picture of its tracks, else the first picture file of the album that lies on a
    /// disk; empty unless it exists.
    static CString getAlbumCoverPath(const Album& album);

    /// Take the objects out of the tree, with the logical objects that they alone gave a reason,
    /// and so end the cycle of handles between parent and child: the one way to free a tree. An
    /// object that somebody else holds lives on without its parent. Costs are linear and no
    /// recursion follows the depth of the tree.
    static void releaseHDFile(const File& file);
    static void releaseHDDir(const Dir& dir);
    /// The list is empty afterwards.
    static void releaseHDDirs(CPtrListT<CHDDirectory>& dirs);
};
