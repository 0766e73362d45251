#pragma once

#include "Database/src/DbFacade/SQLiteDB.h"
#include "QoColl/Db/Forward.h"
#include "types/Forward.h"

/// The collection database: files, sessions, playlists, collections, streams, shares and inplace
/// files. An object lives for one operation on one thread and has the connection open. Failures
/// are thrown CSQLiteException*, unless stated otherwise; a stored id outside 1 to 2147483647 is
/// one. Reading operations empty their array first.
class QO_API CQoCollDb
{
public:
    struct ConfigInfo
    {
        /// The longest radio recording, in milliseconds, that still counts as a jingle.
        unsigned int maxJingleDuration = 0;
    };

    explicit CQoCollDb(const CString& path);
    virtual ~CQoCollDb();
    CQoCollDb(const CQoCollDb&) = delete;
    CQoCollDb& operator=(const CQoCollDb&) = delete;

    static const char16_t* currentVersion() noexcept; ///< of the schema that is written
    /// The stored version of an existing file; false if there is no file, it is no database or it
    /// bears no version. Changes nothing.
    static bool readVersion(const CString& path, CString& version);
    /// Whether the file has the current version; exists says whether it has any. True, with exists
    /// untouched, if the file cannot be opened. An absent file is made, empty.
    static bool checkVersion(const CString& path, bool& exists);
    /// Leaves a database of the current version alone and makes an absent or empty one. A file that
    /// is no sound database is renamed to "<path>.unreadable-<date>_<time>" and replaced by an
    /// empty one. One of another version is left alone with a line in the log: ask readVersion()
    /// first.
    static void CreateDatabaseIfNotValid(const CString& path, const ConfigInfo& config);

    /// A new transaction, which the caller ends with one of the three operations behind it; each
    /// takes the pointer away.
    CSQLiteDbTransaction* beginTransaction(eSQLiteTransactionType type, eSQLiteEndTransaction end);
    /// The pointer is null even if the commit throws.
    void commitTransaction(CSQLiteDbTransaction*& transaction);
    void rollbackTransaction(CSQLiteDbTransaction*& transaction);
    /// For handlers of a failure: rolls back what SQLite has not rolled back itself.
    void abandonTransaction(CSQLiteDbTransaction*& transaction) noexcept;

    /// Each gives false and leaves the item alone if there is no such file. Lyrics and fingerprint
    /// are not read.
    bool getFileByClipID(const CString& clipUid, QoFileDbItemPtr& item);
    bool getFileFromDevice(int id, QoFileDbItemPtr& item);
    bool getFile(const CString& velmoraId, QoFileDbItemPtr& item);
    /// In path order. Without the filter the rows of every collection.
    void getAllFiles(QoFileDbItemArray& items, bool withLyrics, const CString& collId, bool filter);
    bool hasOwnCollFiles() const;
    /// An id of 0 is replaced by the new row's. Throws if FILE_T has other columns.
    void insertFile(QoFileDbItemPtr& item, const CString& collId);
    /// The whole record but its collection, and the lyrics only if they are loaded.
    void updateFile(QoFileDbItemPtr& item);
    void updateFileFlags(QoFileDbItemPtr& item);
    void updateFileParams(QoFileDbItemPtr& item);
    void deleteFile(QoFileDbItemPtr& item);
    /// Every row of that identity, in every collection.
    void setReviewed(const CString& velmoraId, bool reviewed);
    /// Loads the lyrics of exactly one record; of none if there are more.
    void getLyrics(QoFileDbItemArray& items);
    /// The newest media files of the user's own collection, those of a session; in path order.
    void getLastTracks(int count, QoFileDbItemArray& items);
    void getSessionTracks(int session, QoFileDbItemArray& items);
    /// The identities of the rows of every collection but this one.
    void getVelmoraIdsOfOthers(const CString& collId, CStringArray& ids);
    bool getFPCutInfo(const CString& velmoraId, FpCutInfoDbItem& item);
    /// An unknown identity is logged and changes nothing.
    void setFPCutInfo(const FpCutInfoDbItem& item);

    bool getSession(int id, boost::shared_ptr<QoSessionDbItem>& item);
    /// By source, newest first; with a limit above 0 at most that many for each source.
    void getAllSessions(CArray<QoSessionQueryItem>& items, int limitPerSource);
    void insertSession(boost::shared_ptr<QoSessionDbItem>& item);
    void deleteSession(int id);
    void updateSessionEndTime(boost::shared_ptr<QoSessionDbItem>& item);

    int getUserPlaylistsCount();
    /// The prefix is a LIKE pattern and stands in the statement as it is: a quote in it throws.
    void getAllUserPlaylists(DbItemArray<QoPlaylistDbItem>& items, const CString& prefix);
    void insertPlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    void updatePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    void deletePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    bool getPlaylist(int id, boost::shared_ptr<QoPlaylistDbItem>& item);

    void getAllInplaceFiles(DbItemArray<QoInplaceFileDbItem>& items);
    void insertInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    /// Rows are read newest first and never changed: these two do nothing, the third is false.
    void updateInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    void deleteInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    bool getInplaceFile(int id, boost::shared_ptr<QoInplaceFileDbItem>& item);

    void getAllShares(DbItemArray<QoShareDbItem>& items);
    void insertShare(boost::shared_ptr<QoShareDbItem>& item);
    void updateShare(boost::shared_ptr<QoShareDbItem>& item);
    void deleteShare(boost::shared_ptr<QoShareDbItem>& item);

    /// Not found gives a default item and false.
    bool getCollInfo(const CString& collId, CollInfoDbItem& item);
    void setCollInfo(const CString& collId, const CollInfoDbItem& item);
    /// Also deletes the collection's files: the empty id wipes the user's own.
    void deleteColl(const CString& collId);

    void getAcStreams(AcStreamArray& items);
    bool getAcStream(const CString& velmoraId, AcStreamDbItem& item);
    void saveAcStream(const AcStreamDbItem& item);
    void saveAcStreams(const AcStreamArray& items);
    /// The streams and, before them, their tracks.
    void deleteAllAcStreams();
    void insertAcStream(const boost::shared_ptr<AcStreamDbItem>& item);
    void getAcStreamTracks(AcStreamTrackArray& items);
    bool getAcStreamTrack(const CString& trackVelmoraId, AcStreamTrackDbItem& item);
    void saveAcStreamTrack(const AcStreamTrackDbItem& item);
    void saveAcStreamTracks(const AcStreamTrackArray& items);
    void deleteAllAcStreamTracks();
    void insertAcStreamTrack(const boost::shared_ptr<AcStreamTrackDbItem>& item);
    /// A consistent read of both; a failure is logged and gives false and empty arrays.
    bool getACStreamData(AcStreamArray& streams, AcStreamTrackArray& tracks);
    /// Replaces both in one transaction, unless streams is empty. A failure is logged.
    void saveACStreamData(const AcStreamArray& streams, const AcStreamTrackArray& tracks);

protected:
    void bindParams(QoFileDbItemPtr& item, int mask, CSQLiteStatement& statement);
    void extractFileDbItem(QoFileDbItemPtr& item, CSQLiteQueryResult& result);
    unsigned long formatBindMask(unsigned long mask, unsigned long remove);

private:
    friend class QoCollDbInspector;

    bool checkVersion(bool& exists);
    void setWriteAheadLogging();
    void dropTables();
    void createTables();
    /// Copies the file, with all that is committed, to "<path>.bak"; a failure is logged.
    void createBackup();
    static bool makeIfNotValid(const CString& path); ///< false if the file is unreadable
    void recreate();   ///< makes empty tables in write-ahead mode, unless the file is unreadable
    bool makeTables(); ///< false if there is nothing to make
    /// The record of a query's first row, or false.
    bool extractFirst(CSQLiteStatement& statement, QoFileDbItemPtr& item);
    /// Sees to it that a row id fits the records' int, or deletes the row and throws.
    int takeRowId(const char16_t* table);

    CSQLiteDB m_db;
    CString m_version;         ///< as checkVersion() read it
    bool m_unreadable = false; ///< the file was found to be no sound database
    bool m_isTableChecked = false;
};
