#pragma once

#include "QoColl/Collection/Forward.h"
#include "QoColl/Collection/PathsById.h"
#include "QoColl/Collection/QoFileChangeInfo.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "common/CollPath.h"
#include "common/PathsInfoMap.h"
#include "common/PtrListT.h"

class CQoCollDb;
class IQoProgress;

/// One collection in memory: its records, the physical tree over them and what ties both to the
/// database. There are two, the user's own and that of one foreign source at a time. No call takes
/// a lock: the host sees to it that calls on a collection do not overlap. Long operations poll the
/// progress once per item and stop there when it says so.
class QO_API CQoCollection
{
public:
    static CQoCollection m_ownCollection;
    static CQoCollection m_foreignCollection;
    static const char16_t* const m_localDiskCollID;
    static const char16_t* const m_searchResultCollID;

    /// What load() did, for the caller that asks.
    struct OpResultInfo
    {
        enum EOpType : int
        {
            asItWas = 0,
            newCollection = 1,    ///< it had no stored row
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

    /// Once, before the first load.
    static void initGlobal();
    /// Once, at the end; both collections stay usable, empty.
    static void cleanUpGlobal();
    static bool existForeignCollection();
    static void resetCollectionsCheckState();
    static void ActivateProfilingFor(unsigned long mask);
    static void DumpHpcs();
    static void ResetHpcs();

    /// Reads the collection from its database. The disk is walked only if it was never scanned, its
    /// root folders or user changed, or `rescan` asks for it; what changed is then saved. False,
    /// with an empty collection, after a cancellation or a failure other than one of saving, which
    /// is logged. The database must exist (CQoCollDb::CreateDatabaseIfNotValid). `result` may be
    /// null.
    bool load(const CString& dbPath,
              const CString& collId,
              const CStringArray& rootDirs,
              const CQoPathsInfoMap& pathsInfo,
              bool rescan,
              IQoProgress* progress,
              OpResultInfo* result);

    /// Applies what the host wants changed, in the order of the list, and saves it in one
    /// transaction. Only the collection and its database change: moved files were moved before, and
    /// of what was deleted only folders left empty go. Folders of dirsToAnalyze have the names of
    /// their files analysed anew. False only when no database was ever loaded. After a cancellation
    /// the collection is empty while the database is as it was: the host has to load again. A
    /// failure of saving is logged, and the records it left out keep their states.
    bool applyQoFileChanges(const CQoFileChangeInfoList& changes,
                            const CStringArray& dirsToAnalyze,
                            IQoProgress* progress);
    /// Makes these the root folders: the files of those that are new are read, those of the others
    /// leave, and all is saved. A kind that changed alone is not looked at. Nothing when no
    /// database was ever loaded. After a cancellation as above.
    void setRootDirs(const CStringArray& dirs, const CQoPathsInfoMap& info, IQoProgress* progress);
    /// The folder in the tree, made when absent; null if that fails.
    boost::shared_ptr<CHDDirectory> createNewDeviceDir(const CQoCollPath& path,
                                                       IQoProgress* progress);
    /// Makes a folder for each record, whose path is that of a folder.
    void createCollDirs(const QoFileDbItemArray& files, IQoProgress* progress);
    /// Bring the folders of a device into the tree. The result is always false and says nothing.
    bool loadDeviceDirs(const CString& deviceId,
                        CQoCollPath::EDeviceType type,
                        int depth,
                        IQoProgress* progress);
    bool loadDeviceSubDirs(const CString& path, int depth, IQoProgress* progress);

    /// Drops folders that lie below another of the list, and repetitions; keeps the order.
    static void validateRootDirs(const CStringArray& in, qo::CollPathArray& out);
    static void validateRootDirs(const qo::CollPathArray& in, qo::CollPathArray& out);

    bool loadedSuccesfully() const { return m_loadedSuccesfully; }
    /// No root folders.
    bool isEmpty() const { return m_rootDirs.IsEmpty(); }
    int getFileCount() const;
    bool hasMusicFiles() const;
    void copyFiles(QoFileDbItemArray& files) const;

    /// Null when there is none.
    boost::shared_ptr<CHDFile> getFileByID(int id) const;
    /// The first in path order.
    boost::shared_ptr<CHDFile> getFileByVelmoraID(const CString& velmoraId) const;
    boost::shared_ptr<CHDFile> getFileByPath(const CQoCollPath& path) const;
    boost::shared_ptr<CHDFile> getFileByPath(const CString& path) const;
    boost::shared_ptr<CHDFile> getZombieFile(const CQoCollPath& path) const;

    boost::shared_ptr<CHDDirectory> getDir(const CQoCollPath& path) const;
    boost::shared_ptr<CHDDirectory> getDir(const CString& path) const;
    boost::shared_ptr<CHDDirectory> getDir(const char16_t* path) const;
    /// The root folder that holds the path or equals it.
    boost::shared_ptr<CHDDirectory> getRootDir(const CQoCollPath& path) const;
    /// The nearest folder above the path that the tree holds.
    boost::shared_ptr<CHDDirectory> getParentDir(const CQoCollPath& path) const;
    void getRootDirs(qo::CollPathArray& dirs) const;
    const CPtrListT<CHDDirectory>& getRootDirs() const { return m_rootDirs; }
    bool isDirInCollection(const CQoCollPath& path) const;
    bool isRootDirInCollection(const CQoCollPath& path) const;
    bool isFilePathInCollection(const CQoCollPath& path) const;

    /// Adds folders as roots, in order, with the kinds that `info` has for them.
    void addRootDirs(const CStringArray& paths, const CQoPathsInfoMap& info);

    const CollInfoDbItem& getCollInfo() const { return m_collInfo; }

    /// Files that left the tree stay valid until this call.
    void releaseZombieObjects();
    void clearCollection(IQoProgress* progress);
    void resetCheckState();

protected:
    // Load and save
    void clear(bool cleanLogical);
    bool loadFromDb(const CStringArray& rootDirs,
                    const CQoPathsInfoMap& pathsInfo,
                    bool rescan,
                    IQoProgress* progress,
                    OpResultInfo* result);
    bool checkUpdateCollInfo(const qo::CollPathArray& rootDirs, bool forRescan);
    bool updateCollInfo();
    bool checkCollInfoChanged();
    bool checkDBLoaded() const;
    void saveDbChanges(CQoCollDb& db, IQoProgress* progress, OpResultInfo* result);
    void
    saveToDb(QoFileDbItemArray& files, CQoCollDb& db, IQoProgress* progress, OpResultInfo* result);
    /// Notes the records that were sent, and those that got their id here.
    void writeChanges(QoFileDbItemArray& files,
                      CQoCollDb& db,
                      IQoProgress* progress,
                      QoFileDbItemArray& written,
                      QoFileDbItemArray& gotIds);
    void buildFileDbItemsMaps();
    void addToFileDbItemsMaps(const QoFileDbItemPtr& item);
    void removeFromFileDbItemsMaps(const QoFileDbItemPtr& item);
    void clearFileDbItemsMaps();

    // Changes on disk
    /// With knownWereMarked every record was marked as deleted before the walk, so that those the
    /// walk met need no second examination.
    void checkPhysicalChanges(QoFileDbItemArray& files,
                              CQoFileChangeInfo::ESetImportedAction action,
                              IQoProgress* progress,
                              bool knownWereMarked);
    void checkKnownFile(QoFileDbItemPtr& item, QoFileDbItemArray& files, IQoProgress* progress);
    void markGone(QoFileDbItemPtr& item, QoFileDbItemArray& files, const char16_t* message);
    void addFilesFromRootDirs(const qo::CollPathArray& dirs,
                              CQoFileChangeInfo::ESetImportedAction action,
                              QoFileDbItemArray& files,
                              IQoProgress* progress);
    void getFilesFromDisk(const CQoCollPath& rootDir, qo::FoundFiles& found, IQoProgress* progress);
    QoFileDbItemPtr makeNewRecord(const CString& path,
                                  CQoFileChangeInfo::ESetImportedAction action) const;
    QoFileDbItemPtr
    addRecord(const CString& path, CQoFileChangeInfo::ESetImportedAction action, int index);
    /// Null for a second file of that name.
    QoFileDbItemPtr recordOfKnown(const qo::FoundFile& file, int index);
    /// Whether the record changed. seenModified is the write time that a walk has just seen, or
    /// null.
    bool checkUpdateFileInfo(QoFileDbItemPtr& item,
                             IQoProgress* progress,
                             bool readTag,
                             const FILETIME* seenModified);
    bool checkDiskFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag);
    bool checkLogicalPluginFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag);
    bool checkPhysicalPluginFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag);
    void markDeletedAllFiles(IQoProgress* progress);
    void markFilesAsDeletedRec(const boost::shared_ptr<CHDDirectory>& dir);
    void markDeletedFilesFromDirs(const qo::CollPathArray& dirs);
    void setMusicAndVideoFlags(const QoFileDbItemPtr& item) const;
    void setImported(const QoFileDbItemPtr& item,
                     CQoFileChangeInfo::ESetImportedAction action) const;
    CQoPathInfo::EType getSubDirPathInfo(const CQoCollPath& path) const;

    // Changes of the host; each says whether the record is to be built and saved
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
    void saveOrClear(IQoProgress* progress);
    void dropRootDirs(const qo::CollPathArray& dirs);

    // The tree
    void addRootDirs(const qo::CollPathArray& paths, const CQoPathsInfoMap& info);
    void addDirRec(boost::shared_ptr<CHDDirectory>& dir, boost::shared_ptr<CHDDirectory>& parent);
    boost::shared_ptr<CHDDirectory> findCreateDir(const CQoCollPath& path, bool asRootDir);
    void createColl(QoFileDbItemArray& files,
                    const qo::CollPathArray& dirsToAnalyze,
                    IQoProgress* progress);
    void cleanupColl(QoFileDbItemArray& files, IQoProgress* progress);
    void createHDObjects(QoFileDbItemArray& files, IQoProgress* progress);
    void detectLogicalStuff(const qo::CollPathArray& dirs,
                            const QoFileDbItemArray& files,
                            IQoProgress* progress);
    void createLTObjects(const QoFileDbItemArray& files, IQoProgress* progress);
    bool canDetectLogicalStuff() const;
    void removeFileFromColl(const CString& path, bool removeEmptyDirs);

private:
    CString m_dbPath;
    CString m_collId; ///< empty for the own collection
    CollInfoDbItem m_collInfo;
    QoFileDbItemArray m_fileDbItems; ///< all records, sorted by path
    qo::PathsById m_fileIdMap;
    CPtrListT<CHDDirectory> m_rootDirs;
    CQoPathsInfoMap m_pathsInfoMap;
    CPtrListT<CHDDirectory> m_zombieDirs;
    CPtrListT<CHDFile> m_zombieFiles;
    bool m_loadedSuccesfully = false;
};
