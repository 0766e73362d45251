#pragma once

#include "QoColl/Collection/QoUtilsTypes.h"
#include "QoColl/Db/Records/ItemSource.h"
#include "types/String.h"

class CQoCollPath;
class CStringArray;

/// Static helpers that answer questions about files, paths and the objects of both collections.
/// Handles must not be null unless a comment says so. No locks: the host must not change
/// collections meanwhile.
class QO_API CQoUtils : public qo::QoUtilsTypes
{
public:
    /// For the host's use; the kernel only stores it.
    static CQoCollectionMap m_collectionMap;

    // Collections. Objects without a root folder, or with one that was removed, count as own.
    static ECollectionType getCollection(const CheckObject& object);
    static ECollectionType getCollection(const Files& files);
    static bool collTypesMatch(ECollectionType a, ECollectionType b);
    static bool matchesCollection(const CheckObject& object, ECollectionType type);
    /// The first by path in the own collection, else in the foreign one, else null. Compares every
    /// record.
    static File searchFileInAllCollections(const CString& velmoraId);

    // For filters: the file's bit in each group of EShowType.
    static int getFileAudioVideoType(const File& file);
    static int getFileVelmoraMyMusicType(const File& file);
    static int getFileIsMusicType(const File& file);
    static int getFileReviewedType(const File& file);
    static int getFileImportedType(const File& file);
    static int getFilePurchasedType(const File& file);
    /// Whether the mask has the file's bit of any group.
    static bool isFileVisible(const File& file, int mask);
    static bool existVisibleFiles(const Files& files, int mask);
    /// An object without files is visible only if all types are shown.
    static bool isObjectVisible(const CheckObject& object, const ShowFilterInfo& filter);

    /// By an extension without dot, without regard to case. Music means audio or video.
    static bool isAudioExt(const CString& ext);
    static bool isVideoExt(const CString& ext);
    static bool isMusicExt(const CString& ext);
    static bool isMusicFilePath(const CString& path);
    static bool isPictureFile(const CString& ext);
    static bool isTextFile(const CString& ext);
    /// Extensions that count as music, pictures or texts beside those that the kernel knows, which
    /// are looked up first; for each extension (without dot) its kind. Replaces those of an earlier
    /// call; none at first. To be called before anything is loaded, and while no other thread is
    /// in the kernel. A record that was made before has its kind adjusted when its file is read
    /// again, which IQoScanHost::mustRead() can bring about.
    static void setFurtherExts(const CStringArray& exts, const CArray<EExtKind>& kinds);
    /// What was set for the extension; EK_Other without.
    static EExtKind getFurtherExtKind(const CString& ext);

    // For lists of files. Music files are those of class CHDMusicFile; real files are on a disk,
    // which may be that of a device. The get... functions append.
    static bool existMusicFilesInList(const Files& files);
    static void getMusicFiles(const Files& files, CPtrListT<CHDMusicFile>& musicFiles);
    static int countMusicFiles(const Files& files);
    /// How many files count as music by their records, and how many do not.
    static void getMusicNonMusicTypeFileCount(const Files& files, int& music, int& other);
    static bool existRealFilesInList(const Files& files);
    static void getRealFiles(const Files& files, Files& realFiles);

    /// The path by which the system can reach the file; only drive and network paths have one, and
    /// those on USB devices, for which it is "" while the device is not connected. Otherwise the
    /// first form returns false and leaves real unchanged, and the second returns "".
    static bool getRealPath(const CQoCollPath& path, CString& real);
    static CString getRealPath(const CQoCollPath& path);
    /// The same for a path as text.
    static CString getRealPath(const CString& path);
    /// The present size on the disk in bytes; 0, with a log line, when that cannot be determined.
    static std::int64_t getFileSize(const File& file);
    /// Negative, 0 or positive, without regard to case. This is the order of records and files.
    static int comparePaths(const CString& a, const CString& b);
    /// Appends to added what is only in the first list, and to removed what is only in the second,
    /// both sorted. A caller who asks what is new therefore passes the new list first.
    static void diffPaths(const CStringArray& oldDirs,
                          const CStringArray& newDirs,
                          CStringArray& added,
                          CStringArray& removed);
    /// Splits "05 - Artist - Title.mp3" (a name or a path) into artist and title. Without a '-' the
    /// whole name is the title; a leading number of one or two digits is dropped.
    static void getArtistTitleFromFileName(CString name, CString& artist, CString& title);
    static CString getArtistFromFileName(const CString& name);
    /// Whether the titles in the records are equal without regard to case.
    static bool isSimilarFile(const File& a, const File& b);
    /// Whether the foreign collection has music of that title by the same artist, and the current
    /// subset any file of that artist; file may be null.
    static bool existSimilarFileInForeignCollection(const File& file);

    /// The directory itself, or the directory of the file; null for a file outside of a tree.
    static Dir getDir(const boost::shared_ptr<CHDObject>& object);
    /// The topmost directory; null for a file outside of a tree.
    static Dir getRootDir(const boost::shared_ptr<CHDObject>& object);
    static Dir getRootDir(const Dir& dir);
    /// Append what is directly in the directory or, if recursive, everything below it, parents
    /// first.
    static void getDirFiles(const Dir& dir, bool recursive, Files& files);
    static void getDirSubDirs(const Dir& dir, bool recursive, CPtrListT<CHDDirectory>& dirs);

    // Orders for sorted lists: by kind, then by path or name without regard to case, and last by
    // address, so that such a list holds each object once. Directories come before files.
    static int compareHDObjectsByType(const boost::shared_ptr<CHDObject>& a,
                                      const boost::shared_ptr<CHDObject>& b);
    static int compareLTObjectsByType(const boost::shared_ptr<CLTObject>& a,
                                      const boost::shared_ptr<CLTObject>& b);
    static int compareCheckObjectByType(const CheckObject& a, const CheckObject& b);

    // The files of objects, appended unless they are in the list already: of a directory all files
    // below it, of a logical object all files whose getLTAssoc() for its type gives that object.
    // Objects outside of the trees have none.
    static void getLinkedFiles(const CheckObject& object, Files& files);
    static void getTrackFiles(const Track& track, Files& files);
    static void getAlbumFiles(const Album& album, Files& files);
    static void getArtistFiles(const Artist& artist, Files& files);
    static void getGenreFiles(const Genre& genre, Files& files);
    static void getLyricsFiles(const boost::shared_ptr<CLTLyrics>& lyrics, Files& files);
    static void getPictureFiles(const boost::shared_ptr<CLTPicture>& picture, Files& files);
    /// The files that a drag of these objects moves.
    static void getDraggedFiles(const CPtrListT<CQoCheckObject>& objects, Files& files);
    static void getDraggedMusicFiles(const CPtrListT<CQoCheckObject>& objects,
                                     CPtrListT<CHDMusicFile>& files);

    // How many files are linked to the object; with parents only those that also belong to the
    // genre, artist and album set there.
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
    /// Copies each cell of source to target if it is set there and not yet set in target.
    static void copyMissingParentItemsInfo(ParentItemsInfo& target, const ParentItemsInfo& source);

    /// The year of its first track that has one; 0 if none has.
    static int getAlbumYear(const Album& album);
    /// The source of the artist's media files that do not count as music: sourceNone if there are
    /// none, sourceSeveral if they have different sources.
    static eItemSource getArtistNonMusicFilesSource(const Artist& artist);
    /// The path of the picture that was extracted from the file's tag; "" unless it still exists.
    static CString getTagPictureTempPath(const File& file);
    /// The first tag picture of its tracks, else the first picture file of the album on a disk; ""
    /// unless it exists.
    static CString getAlbumCoverPath(const Album& album);

    /// Take objects out of the tree together with the logical objects that nothing else needs. This
    /// breaks the cycle of handles between parent and child and is the only way to free a tree. An
    /// object that another caller holds lives on without a parent. Costs are linear, without
    /// recursion.
    static void releaseHDFile(const File& file);
    static void releaseHDDir(const Dir& dir);
    /// Releases all and empties the list.
    static void releaseHDDirs(CPtrListT<CHDDirectory>& dirs);
};
