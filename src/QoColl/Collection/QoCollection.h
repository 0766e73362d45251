#pragma once

#include "QoColl/Collection/Forward.h"
#include "QoColl/Collection/PathsById.h"
#include "QoColl/Collection/QoFileChangeInfo.h"
#include "QoColl/Collection/subsets/MarkUpkeep.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "common/CollPath.h"
#include "common/PathsInfoMap.h"
#include "common/PtrListT.h"

#include <functional>

class CQoCollDb;
class IQoProgress;

/// One collection in memory: its records, the physical tree over them, and what ties both to the
/// database. There are two: the user's own (m_ownCollection), and that of one foreign source at a
/// time (m_foreignCollection: a device, plug-in or share). No call takes a lock: the host must not
/// let calls on a collection overlap. Long operations ask the progress for a cancel once per item.
///
/// Every change goes one way: it sets the state of records (qo::dbState), createColl() builds trees
/// and logical objects for these records, and saveToDb() writes them in one transaction. A rescan,
/// with a.mp3 and b.mp3 stored, and on the disk b.mp3 with a newer write time and c.mp3:
///
///               a.mp3       b.mp3       c.mp3
///     read      unchanged   unchanged
///     mark      deleted     deleted                 (markDeletedAllFiles)
///     walk      deleted     modified    added       (addFilesFromRootDirs)
///     build     leaves      new object  new object  (createColl)
///     save      DELETE      UPDATE      INSERT      (saveToDb), then all are unchanged
///
/// Files that leave the tree are kept as "zombies" until releaseZombieObjects(), since views may
/// still show them.
class QO_API CQoCollection
{
public:
    static CQoCollection m_ownCollection;
    static CQoCollection m_foreignCollection;
    static const char16_t* const m_localDiskCollID;
    static const char16_t* const m_searchResultCollID;

    /// What load() did.
    struct OpResultInfo
    {
        enum EOpType : int
        {
            asItWas = 0,
            newCollection = 1,    ///< there was no row for it in the database
            existingRescanned = 2 ///< scanned again on request
        };
        int m_opType = asItWas;
        CString m_collId;
        int m_inserted = 0;
        int m_updated = 0;
        int m_deleted = 0;
        bool m_unsupportedExtract = false;
        bool m_extractFailed = false;
    };

    CQoCollection();
    CQoCollection(const CQoCollection&) = delete;
    CQoCollection& operator=(const CQoCollection&) = delete;
    virtual ~CQoCollection();

    /// Must be called once before the first load.
    static void initGlobal();
    /// Must be called once at the end; both collections are empty afterwards and stay usable.
    static void cleanUpGlobal();
    static bool existForeignCollection();
    static void resetCollectionsCheckState();
    static void ActivateProfilingFor(unsigned long mask);
    static void DumpHpcs();
    static void ResetHpcs();

    /// Reads the collection from its database. The disk is walked only if it was never scanned, its
    /// root folders or user changed, or rescan is set; what changed is then saved. False, with an
    /// empty collection, after a cancel or a failure. A failure of saving alone is logged, and the
    /// result is true. The database must exist (CQoCollDb::CreateDatabaseIfNotValid). result may be
    /// null.
    bool load(const CString& dbPath,
              const CString& collId,
              const CStringArray& rootDirs,
              const CQoPathsInfoMap& pathsInfo,
              bool rescan,
              IQoProgress* progress,
              OpResultInfo* result);
    /// Reads the collection as its database has it at one moment. Its root folders are those of the
    /// last scan and `moreRootDirs`, below which a scan that goes on may have stored files already.
    /// Walks nothing and saves nothing, so it can stand beside another process that writes. False
    /// as above.
    bool loadStored(const CString& dbPath,
                    const CString& collId,
                    const CStringArray& moreRootDirs,
                    IQoProgress* progress);

    /// Applies changes of the host in the order of the list and saves them in one transaction. Only
    /// the collection and its database change: the host has moved files before, and on the disk
    /// only folders that ran empty are removed. The names of files in dirsToAnalyze are analysed
    /// again. False only when no database was ever loaded. After a cancel the collection is empty
    /// and the database as it was, so the host has to load again. A failure of saving is logged,
    /// and the records keep their states for the next save.
    bool applyQoFileChanges(const CQoFileChangeInfoList& changes,
                            const CStringArray& dirsToAnalyze,
                            IQoProgress* progress);
    /// Replaces the root folders: the files of new ones are read, those of missing ones leave, and
    /// all is saved. A change of the type of a folder alone is ignored. Does nothing when no
    /// database was ever loaded. After a cancel the collection is empty, as above. A share whose
    /// extract cannot be had ends it with a CQoException*, and the collection must be loaded again.
    void setRootDirs(const CStringArray& dirs, const CQoPathsInfoMap& info, IQoProgress* progress);
    /// The folder in the tree; it is made if it is missing. Null if that is not possible.
    boost::shared_ptr<CHDDirectory> createNewDeviceDir(const CQoCollPath& path,
                                                       IQoProgress* progress);
    /// Makes a folder for each record, whose path is that of the folder.
    void createCollDirs(const QoFileDbItemArray& files, IQoProgress* progress);
    /// Bring the folders of a device into the tree. The result is always false and means nothing.
    bool loadDeviceDirs(const CString& deviceId,
                        CQoCollPath::EDeviceType type,
                        int depth,
                        IQoProgress* progress);
    bool loadDeviceSubDirs(const CString& path, int depth, IQoProgress* progress);

    /// Removes folders that are below another one in the list, and repetitions; keeps the order.
    static void validateRootDirs(const CStringArray& in, qo::CollPathArray& out);
    static void validateRootDirs(const qo::CollPathArray& in, qo::CollPathArray& out);

    bool loadedSuccesfully() const { return m_loadedSuccesfully; }
    /// True without root folders.
    bool isEmpty() const { return m_rootDirs.IsEmpty(); }
    int getFileCount() const;
    bool hasMusicFiles() const;
    void copyFiles(QoFileDbItemArray& files) const;

    /// These return null when there is no such file or folder.
    boost::shared_ptr<CHDFile> getFileByID(int id) const;
    /// Compares every record; of several the first by path.
    boost::shared_ptr<CHDFile> getFileByVelmoraID(const CString& velmoraId) const;
    boost::shared_ptr<CHDFile> getFileByPath(const CQoCollPath& path) const;
    boost::shared_ptr<CHDFile> getFileByPath(const CString& path) const;
    boost::shared_ptr<CHDFile> getZombieFile(const CQoCollPath& path) const;

    boost::shared_ptr<CHDDirectory> getDir(const CQoCollPath& path) const;
    boost::shared_ptr<CHDDirectory> getDir(const CString& path) const;
    boost::shared_ptr<CHDDirectory> getDir(const char16_t* path) const;
    /// The root folder that contains or equals the path.
    boost::shared_ptr<CHDDirectory> getRootDir(const CQoCollPath& path) const;
    /// The nearest folder above the path that is in the tree.
    boost::shared_ptr<CHDDirectory> getParentDir(const CQoCollPath& path) const;
    void getRootDirs(qo::CollPathArray& dirs) const;
    const CPtrListT<CHDDirectory>& getRootDirs() const { return m_rootDirs; }
    bool isDirInCollection(const CQoCollPath& path) const;
    bool isRootDirInCollection(const CQoCollPath& path) const;
    bool isFilePathInCollection(const CQoCollPath& path) const;

    /// Adds root folders, in order, with the types that info has for them.
    void addRootDirs(const CStringArray& paths, const CQoPathsInfoMap& info);

    const CollInfoDbItem& getCollInfo() const { return m_collInfo; }
    /// Says that all root folders were looked through just now; stored with the next save.
    void setScanned();

    /// The host that decides and hears what IQoScanHost names; null for none. It must live until
    /// another takes its place.
    void setScanHost(IQoScanHost* host);

    /// Frees the files and folders that left the tree; they are valid until then.
    void releaseZombieObjects();
    void clearCollection(IQoProgress* progress);
    void resetCheckState();

protected:
    // Load and save
    /// Releases all objects and records; with cleanLogical also the logical objects that nothing
    /// uses then. Must come after the last use of any handle by the caller: zombies are freed too.
    void clear(bool cleanLogical);
    void releaseZombies();
    /// load() without its handling of exceptions; false or an exception after a failure.
    bool loadFromDb(const CStringArray& rootDirs,
                    const CQoPathsInfoMap& pathsInfo,
                    bool rescan,
                    IQoProgress* progress,
                    OpResultInfo* result);
    /// Empties the collection, lets `read` fill it and ends what that throws.
    bool runLoad(const CString& dbPath,
                 const CString& collId,
                 IQoProgress* progress,
                 OpResultInfo* result,
                 const std::function<bool()>& read);
    bool readStored(const CStringArray& moreRootDirs, IQoProgress* progress);
    /// Takes root folders and user into m_collInfo; true if these, or a missing scan time, ask for
    /// a walk. forRescan only words the log line.
    bool checkUpdateCollInfo(const qo::CollPathArray& rootDirs, bool forRescan);
    bool updateCollInfo();
    bool checkCollInfoChanged();
    /// True after load() was called once, since then there is a database path.
    bool checkDBLoaded() const;
    /// saveToDb() for all records, with its duration in the log.
    void saveDbChanges(CQoCollDb& db, IQoProgress* progress, OpResultInfo* result);
    /// Writes the records that are not unchanged in one transaction. A failure of the database is
    /// logged and changes neither ids nor states; any other exception passes through. Does nothing
    /// after a cancel.
    void
    saveToDb(QoFileDbItemArray& files, CQoCollDb& db, IQoProgress* progress, OpResultInfo* result);
    /// Lists in written the records that were sent to the database, and in gotIds those that got
    /// their id.
    void writeChanges(QoFileDbItemArray& files,
                      CQoCollDb& db,
                      IQoProgress* progress,
                      QoFileDbItemArray& written,
                      QoFileDbItemArray& gotIds);
    /// The map from id to path is kept in step with m_fileDbItems by these.
    void buildFileDbItemsMaps();
    void addToFileDbItemsMaps(const QoFileDbItemPtr& item);
    void removeFromFileDbItemsMaps(const QoFileDbItemPtr& item);
    void clearFileDbItemsMaps();

    // Changes on disk
    /// Walks all root folders, and then looks at every record that the walk did not settle. Records
    /// that changed are added to files. knownWereMarked: every record was marked as deleted
    /// before the walk, so a record that the walk found was examined by it and is left alone.
    void checkPhysicalChanges(QoFileDbItemArray& files,
                              CQoFileChangeInfo::ESetImportedAction action,
                              IQoProgress* progress,
                              bool knownWereMarked);
    /// Marks a known record as deleted if its file is gone, and reads it again if it is newer.
    void checkKnownFile(QoFileDbItemPtr& item, QoFileDbItemArray& files, IQoProgress* progress);
    /// Sets the state to deleted, and logs the message with the path.
    void markGone(QoFileDbItemPtr& item, QoFileDbItemArray& files, const char16_t* message);
    /// Walks these folders: known files are compared, new ones get a record. What was found and is
    /// not in files yet is added there, sorted by path.
    void addFilesFromRootDirs(const qo::CollPathArray& dirs,
                              CQoFileChangeInfo::ESetImportedAction action,
                              QoFileDbItemArray& files,
                              IQoProgress* progress);
    /// Lists the files of one root folder with their write times. Stops at a cancel. False when the
    /// folder is on a device that is not connected, or that left meanwhile. Folders of a device
    /// that cannot be read are noted.
    bool getFilesFromDisk(const CQoCollPath& rootDir, qo::FoundFiles& found, IQoProgress* progress);
    /// Lists a root folder in any place: on a disk as found, elsewhere as records that the source
    /// filled.
    void listRootDir(const CQoCollPath& rootDir,
                     qo::FoundFiles& found,
                     QoFileDbItemArray& listed,
                     IQoProgress* progress);
    /// Lets the records below the folder stay, and tells the host why.
    void noteUnlisted(const CQoCollPath& dir, const CString& cause);
    /// False when the source did not list all.
    bool listFarDir(const CQoCollPath& rootDir, QoFileDbItemArray& listed, IQoProgress* progress);
    bool listShare(const CQoCollPath& rootDir, QoFileDbItemArray& listed, IQoProgress* progress);
    /// A record in the state added, with flags by extension and folder type; it is in no list yet.
    /// listed is a record that the source filled, which it is then, or null.
    QoFileDbItemPtr makeNewRecord(const CString& path,
                                  const QoFileDbItemPtr& listed,
                                  CQoFileChangeInfo::ESetImportedAction action) const;
    /// What addFilesFromRootDirs() needs for each file.
    struct TakeIn;
    /// Takes a file that was found into m_fileDbItems and, if it is not there yet, into the list of
    /// what was found. listed as above.
    void takeFound(const qo::FoundFile& file, const QoFileDbItemPtr& listed, TakeIn& to);
    QoFileDbItemPtr addRecord(const CString& path,
                              const QoFileDbItemPtr& listed,
                              CQoFileChangeInfo::ESetImportedAction action,
                              int index);
    /// Null for a second file of that name (they differ in case alone).
    QoFileDbItemPtr
    recordOfKnown(const qo::FoundFile& file, const QoFileDbItemPtr& listed, int index);
    /// Whether the record changed. seen is what a walk has just seen of the file, and listed what
    /// its source said of it; both are null when there was no walk.
    bool checkUpdateFileInfo(QoFileDbItemPtr& item,
                             IQoProgress* progress,
                             bool readTag,
                             const qo::FileInfo* seen,
                             const QoFileDbItem* listed = nullptr);
    /// Reads write time and, for a file that is new or to be read again, size and tag. False, with
    /// a log line, if the file cannot be reached; the record stays as it is then.
    bool
    checkDiskFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag, const qo::FileInfo* seen);
    void keepUnmetFiles();
    /// Marks records that lie below no root folder as deleted.
    void dropStrangers(const QoFileDbItemArray& files);
    /// listed is what the device said of the file while it was listed; with null it is asked.
    bool checkWpdFilePhysicalChanges(QoFileDbItemPtr& item,
                                     IQoProgress* progress,
                                     const QoFileDbItem* listed);
    bool checkLogicalPluginFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag);
    bool checkPhysicalPluginFilePhysicalChanges(QoFileDbItemPtr& item,
                                                bool readTag,
                                                const QoFileDbItem* listed);
    /// Mark records as deleted, so that what a walk does not find leaves with the next save.
    void markDeletedAllFiles(IQoProgress* progress);
    void markFilesAsDeletedRec(const boost::shared_ptr<CHDDirectory>& dir);
    void markDeletedFilesFromDirs(const qo::CollPathArray& dirs);
    /// Sets the flags music, audio and video by extension and by the type of the root folder.
    void setMusicAndVideoFlags(const QoFileDbItemPtr& item) const;
    void followFurtherExt(const QoFileDbItemPtr& item) const;
    void setImported(const QoFileDbItemPtr& item,
                     CQoFileChangeInfo::ESetImportedAction action) const;
    /// The type of the root folder above the path; audioIsMusic without one.
    CQoPathInfo::EType getSubDirPathInfo(const CString& path) const;

    // Changes of the host. Each returns whether the record must be built and saved. item is the
    // record of the path or null; index is its position, or the position where it belongs.
    bool applyChange(const CQoFileChangeInfo& change,
                     QoFileDbItemPtr& item,
                     int index,
                     IQoProgress* progress);
    bool applyAddVelmoraFile(const CQoFileChangeInfo& change,
                             QoFileDbItemPtr& item,
                             int index,
                             IQoProgress* progress);
    bool applyScan(const CQoFileChangeInfo& change,
                   QoFileDbItemPtr& item,
                   int index,
                   IQoProgress* progress);
    bool applyMove(const CQoFileChangeInfo& change,
                   QoFileDbItemPtr& item,
                   int index,
                   IQoProgress* progress);
    /// Saves all changes; after a cancel it clears the collection instead.
    void saveOrClear(IQoProgress* progress);
    /// Marks the files of these root folders as deleted; the folders become zombies.
    void dropRootDirs(const qo::CollPathArray& dirs);

    // The tree
    void addRootDirs(const qo::CollPathArray& paths, const CQoPathsInfoMap& info);
    /// Links dir below parent and makes the folders between them.
    void addDirRec(boost::shared_ptr<CHDDirectory>& dir, boost::shared_ptr<CHDDirectory>& parent);
    /// The folder of that path; it is made if missing. A new folder above a present root folder
    /// takes its place. Null if asRootDir and the path is already below a root folder.
    boost::shared_ptr<CHDDirectory> findCreateDir(const CQoCollPath& path, bool asRootDir);
    /// Rebuilds everything that depends on these records, and analyses the names in dirsToAnalyze.
    /// To be followed by a save. The states of records are not reset here.
    void createColl(QoFileDbItemArray& files,
                    const qo::CollPathArray& dirsToAnalyze,
                    IQoProgress* progress);
    /// Takes the records of stored files into an empty collection.
    void takeStored(qo::StoredFiles& stored, IQoProgress* progress);
    void takeStored(const QoFileDbItemArray& files);
    /// The same, and builds the trees while they come, as createColl() would with all of them at
    /// once. Those that lie below no root folder can be dropped without a word.
    void buildStored(qo::StoredFiles& stored, bool drop, IQoProgress* progress);
    /// The passes of createColl(), in this order.
    void cleanupColl(QoFileDbItemArray& files, IQoProgress* progress);
    void createHDObjects(QoFileDbItemArray& files, IQoProgress* progress);
    void detectLogicalStuff(const qo::CollPathArray& dirs,
                            const QoFileDbItemArray& files,
                            IQoProgress* progress);
    void createLTObjects(const QoFileDbItemArray& files, IQoProgress* progress);
    /// Lets check marks and subsets follow with the files that were built.
    void followBuilt(const QoFileDbItemArray& files);
    /// Whether names are analysed: in the own collection, and in a foreign one on a disk, a
    /// portable device or a physical plug-in, if it has one root folder.
    bool canDetectLogicalStuff() const;
    /// Takes the file out of the tree, together with folders that are empty then, and keeps it as a
    /// zombie. With removeEmptyDirs the empty folders are removed from the disk too.
    void removeFileFromColl(const CString& path, bool removeEmptyDirs);

private:
    CString m_dbPath;
    CString m_collId; ///< "" for the own collection
    CollInfoDbItem m_collInfo;
    QoFileDbItemArray m_fileDbItems; ///< all records, sorted by path
    qo::PathsById m_fileIdMap;
    CPtrListT<CHDDirectory> m_rootDirs;
    CQoPathsInfoMap m_pathsInfoMap;
    CPtrListT<CHDDirectory> m_zombieDirs;
    CPtrListT<CHDFile> m_zombieFiles;
    qo::MarkUpkeep m_marks;
    qo::CollPathArray m_unlistedDirs; ///< of the last walk, those that were not listed to the end
    bool m_hasVanished = false;       ///< one of them could not be reached any more
    bool m_loadedSuccesfully = false; ///< of load(); a change sets it, a canceled one clears it
    IQoScanHost* m_scanHost;          ///< never null
};
