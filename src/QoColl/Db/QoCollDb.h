#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "QoColl/Db/Forward.h"
#include "types/String.h"

#include <memory>

/// The collection database: files, sessions, playlists, collections, streams, shares and inplace
/// files (docs/database.md describes the tables). An object lives for one operation, on one thread,
/// and keeps the connection open. Failures are thrown as CSQLiteException*, which the catcher
/// deletes, unless stated otherwise; a stored id outside of 1 to 2147483647 is such a failure, but
/// lists of files leave such a row out with a line in the log. Functions that fill an array empty
/// it first. Waiting for another process takes up to a minute.
///
///   CQoCollDb db(path);
///   qo::DbTransaction transaction(db);
///   db.insertFile(item, collId);      // sets item->id
///   transaction.commit();
class QO_API CQoCollDb
{
public:
    struct ConfigInfo
    {
        /// The longest radio recording, in milliseconds, that still counts as a jingle.
        unsigned int maxJingleDuration = 0;
    };

    /// Opens the database; an absent file is created, empty and without tables.
    explicit CQoCollDb(const CString& path);
    virtual ~CQoCollDb();
    CQoCollDb(const CQoCollDb&) = delete;
    CQoCollDb& operator=(const CQoCollDb&) = delete;

    static const char16_t* currentVersion() noexcept; ///< of the schema that this version writes
    /// The tables of that schema that hold what people have; the version stands in one of its own.
    static void getTables(CStringArray& tables);
    /// The columns of a table of that schema, in order; none for another table.
    static void getColumns(const CString& table, CStringArray& columns);
    /// The stored version of an existing file. False if there is no file, it is not a database, or
    /// it has no version. Changes nothing.
    static bool readVersion(const CString& path, CString& version);
    /// Whether the file has the current version; exists says whether it has any version. True, with
    /// exists unchanged, if the file cannot be opened. An absent file is created, empty.
    static bool checkVersion(const CString& path, bool& exists);
    /// Makes sure that there is a database of the current version:
    ///
    ///   current version            left as it is
    ///   absent or empty            tables are made
    ///   another version            copied to "<path>.bak", and rebuilt with its rows; those of an
    ///                              older version are brought up to date (docs/database.md)
    ///   not a readable database    renamed to "<path>.unreadable-<date>_<time>", and an empty
    ///                              one is made
    ///
    /// Rows that cannot be carried over are in the copy alone, and only the log says so: whoever
    /// must not lose any compares the tables before and after. One process at a time rebuilds; the
    /// others wait for it up to a minute. All rows are in memory meanwhile.
    static void CreateDatabaseIfNotValid(const CString& path, const ConfigInfo& config);

    /// A new transaction. The caller must end it with one of the next three functions, each of
    /// which sets the pointer to null. qo::DbTransaction does that for a scope.
    CSQLiteDbTransaction* beginTransaction(eSQLiteTransactionType type, eSQLiteEndTransaction end);
    /// The pointer becomes null even if the commit throws.
    void commitTransaction(CSQLiteDbTransaction*& transaction);
    void rollbackTransaction(CSQLiteDbTransaction*& transaction);
    /// For use after a failure: rolls back whatever SQLite has not rolled back itself.
    void abandonTransaction(CSQLiteDbTransaction*& transaction) noexcept;

    /// Each returns false and leaves item unchanged if there is no such file. Lyrics and
    /// fingerprint values are not read.
    bool getFileByClipID(const CString& clipUid, QoFileDbItemPtr& item);
    bool getFileFromDevice(int id, QoFileDbItemPtr& item);
    bool getFile(const CString& velmoraId, QoFileDbItemPtr& item);
    /// All files of a collection in path order; without filter those of every collection. One query
    /// of the whole table: seconds for a million rows.
    void getAllFiles(QoFileDbItemArray& items, bool withLyrics, const CString& collId, bool filter);
    /// The same in path order, some at a time; to be used in one transaction and given back before
    /// this object goes.
    std::unique_ptr<qo::FileRuns> fileRuns(const CString& collId) const;
    /// Whether the user's own collection has any file.
    bool hasOwnCollFiles() const;
    /// An id of 0 becomes that of the new row. Throws if FILE_T lacks a column.
    void insertFile(QoFileDbItemPtr& item, const CString& collId);
    /// Inserts records with their ids and collections (collId); those without an id come last.
    void insertFiles(QoFileDbItemArray& items);
    /// Writes the whole record except its collection; the lyrics only if lyricsLoaded is set.
    void updateFile(QoFileDbItemPtr& item);
    /// Each writes one column of the record's row.
    void updateFileFlags(QoFileDbItemPtr& item);
    void updateFileParams(QoFileDbItemPtr& item);
    void deleteFile(QoFileDbItemPtr& item);
    /// Changes every row with that lasting id, in every collection.
    void setReviewed(const CString& velmoraId, bool reviewed);
    /// Loads the lyrics of one record; with more than one record in the array, of none.
    void getLyrics(QoFileDbItemArray& items);
    /// The newest media files of the user's own collection; the files of a session. Both in path
    /// order.
    void getLastTracks(int count, QoFileDbItemArray& items);
    void getSessionTracks(int session, QoFileDbItemArray& items);
    /// The lasting ids of the rows of every collection but this one.
    void getVelmoraIdsOfOthers(const CString& collId, CStringArray& ids);
    /// False, with item unchanged, for an unknown lasting id.
    bool getFPCutInfo(const CString& velmoraId, FpCutInfoDbItem& item);
    /// An unknown lasting id is logged and changes nothing.
    void setFPCutInfo(const FpCutInfoDbItem& item);

    /// False, with item unchanged, if there is none.
    bool getSession(int id, boost::shared_ptr<QoSessionDbItem>& item);
    /// Sorted by source, the newest first; with a limit above 0 at most that many for each source.
    void getAllSessions(CArray<QoSessionQueryItem>& items, int limitPerSource);
    /// Sets the id of the item to that of the new row; so do insertPlaylist, insertInplaceFile and
    /// insertShare.
    void insertSession(boost::shared_ptr<QoSessionDbItem>& item);
    void deleteSession(int id);
    void updateSessionEndTime(boost::shared_ptr<QoSessionDbItem>& item);

    int getUserPlaylistsCount();
    /// The prefix is a pattern for LIKE and becomes part of the statement as it is, so a quote in
    /// it throws.
    void getAllUserPlaylists(DbItemArray<QoPlaylistDbItem>& items, const CString& prefix);
    void insertPlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    void updatePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    void deletePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    bool getPlaylist(int id, boost::shared_ptr<QoPlaylistDbItem>& item);

    void getAllInplaceFiles(DbItemArray<QoInplaceFileDbItem>& items);
    void insertInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    /// Rows are never changed: the first two do nothing, the third returns false.
    void updateInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    void deleteInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item);
    bool getInplaceFile(int id, boost::shared_ptr<QoInplaceFileDbItem>& item);

    /// All shares; in the order of their ids as a rule.
    void getAllShares(DbItemArray<QoShareDbItem>& items);
    void insertShare(boost::shared_ptr<QoShareDbItem>& item);
    void updateShare(boost::shared_ptr<QoShareDbItem>& item);
    void deleteShare(boost::shared_ptr<QoShareDbItem>& item);

    /// If there is none, item becomes a default one and the result is false.
    bool getCollInfo(const CString& collId, CollInfoDbItem& item);
    void setCollInfo(const CString& collId, const CollInfoDbItem& item);
    /// Deletes the collection and all of its files; "" is the user's own collection.
    void deleteColl(const CString& collId);

    void getAcStreams(AcStreamArray& items);
    /// False, with item unchanged, if there is none.
    bool getAcStream(const CString& velmoraId, AcStreamDbItem& item);
    /// Updates the row of the stream's velmoraId, or inserts one.
    void saveAcStream(const AcStreamDbItem& item);
    void saveAcStreams(const AcStreamArray& items);
    /// Deletes the tracks and then the streams.
    void deleteAllAcStreams();
    void insertAcStream(const boost::shared_ptr<AcStreamDbItem>& item);
    void getAcStreamTracks(AcStreamTrackArray& items);
    bool getAcStreamTrack(const CString& trackVelmoraId, AcStreamTrackDbItem& item);
    /// Updates the row of the track's trackVelmoraId, or inserts one.
    void saveAcStreamTrack(const AcStreamTrackDbItem& item);
    void saveAcStreamTracks(const AcStreamTrackArray& items);
    void deleteAllAcStreamTracks();
    void insertAcStreamTrack(const boost::shared_ptr<AcStreamTrackDbItem>& item);
    /// Reads both in one consistent state. A failure is logged; the result is false and the arrays
    /// are empty.
    bool getACStreamData(AcStreamArray& streams, AcStreamTrackArray& tracks);
    /// Replaces both in one transaction; does nothing if streams is empty. A failure is logged.
    void saveACStreamData(const AcStreamArray& streams, const AcStreamTrackArray& tracks);

protected:
    void bindParams(QoFileDbItemPtr& item, int mask, CSQLiteStatement& statement);
    void extractFileDbItem(QoFileDbItemPtr& item, CSQLiteQueryResult& result);
    /// A mask without some of its bits.
    unsigned long formatBindMask(unsigned long mask, unsigned long remove);

private:
    friend class QoCollDbInspector;

    /// Reads the version into m_version; see the static function. Failures that say nothing about
    /// the content, such as a lock, throw.
    bool checkVersion(bool& exists);
    /// Switches the file to write-ahead mode, in which readers and a writer do not block each
    /// other. A failure is logged.
    void setWriteAheadLogging();
    /// Remove and create all tables, within the caller's transaction.
    void dropTables();
    void createTables();
    /// Copies the database, with everything that is committed, to "<path>.bak"; a failure is
    /// logged.
    void createBackup();
    /// Reads the rows of "<path>.bak" and inserts them, all or none. False if there is no such file
    /// or they cannot be inserted; the tables are empty then.
    bool importBackup();
    /// Runs the steps that lead from the version of the rows to the current one; a step that fails
    /// is logged, and the next one follows.
    void applyUpdates(const ConfigInfo& config);
    void applyUpdate1();
    void applyUpdateRadioRecordingTimeAndJingleFlag(const ConfigInfo& config);
    void applyUpdateShareLinkNotSavedBefore();
    void applyUpdateOppositeShareAndInitiator();
    void applyUpdateMusicAndVideoFlags();
    /// Writes all shares in one transaction.
    void updateShares(DbItemArray<QoShareDbItem>& shares);
    /// Without the configuration, a database of another version is left as it is. False if there is
    /// still something to be done: the file has another version, or is not a database.
    static bool makeIfNotValid(const CString& path, const ConfigInfo* config);
    /// Makes the tables anew, and keeps the rows if there are some. Sets m_unreadable if a file
    /// without a version turns out to be damaged.
    void recreate(bool hasVersion, const ConfigInfo& config);
    bool makeTables(bool hasVersion); ///< false if another process has made them meanwhile
    /// Gives the connection as much memory for pages as a save of a file of this size needs.
    void fitCache();
    CSQLiteStatement compileFileInsert();
    CSQLiteStatement& insertOfNewFile();
    CSQLiteStatement& updateOfFile(bool withLyrics);
    void runFileInsert(CSQLiteStatement& statement, QoFileDbItemPtr& item, const CString& collId);
    /// Reads the first row of a query; false, with item unchanged, if there is none.
    bool extractFirst(CSQLiteStatement& statement, QoFileDbItemPtr& item);
    /// The id of the row just inserted; if it does not fit into an int, deletes the row and throws.
    int takeRowId(const char16_t* table);

    std::unique_ptr<CSQLiteDB> m_connection; ///< hosts need not know the facade
    CSQLiteDB& m_db;                         ///< the same
    // What a save runs for each record is compiled once: for a row of many columns that costs as
    // much as running it.
    std::unique_ptr<CSQLiteStatement> m_insertOfNew;
    std::unique_ptr<CSQLiteStatement> m_updates[2]; ///< without lyrics and with them
    int m_insertsSinceFit = 0;
    CString m_version;         ///< as checkVersion() has read it
    bool m_unreadable = false; ///< the file turned out not to be a database
    bool m_isTableChecked = false;
    bool m_hasOtherColumns = false; ///< FILE_T has columns that this version does not know
};
