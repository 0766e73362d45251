#pragma once

#include "Physical/Forward.h"
#include "QoColl/Db/Records/Forward.h"
#include "common/PtrListT.h"
#include "types/Export.h"
#include "types/String.h"

/// Playlists of the user, and the lists that the player makes by itself. A track of a playlist is
/// the decimal row id of a file's record, so a playlist is only as valid as those ids: SQLite gives
/// the id of a deleted row to a new one.
///
/// Each call opens the collection's usual database (CQoPaths::getQoDbFilePath()) for itself, so
/// calls may come from any thread. CSQLiteException* goes to the caller. Functions that fill an
/// array empty it first.
class QO_API CMpPlaylistUtils
{
public:
    /// Store a new playlist with the files in their order, and return its record with the new id.
    /// Any name will do, also one that another playlist has.
    static boost::shared_ptr<QoPlaylistDbItem> NewPlaylist(const CString& name,
                                                           const CPtrListT<CHDMusicFile>& files);
    static boost::shared_ptr<QoPlaylistDbItem> NewPlaylist(const CString& name,
                                                           const QoFileDbItemArray& files);
    /// False, with item unchanged, if there is none.
    static bool GetPlaylist(int id, boost::shared_ptr<QoPlaylistDbItem>& item);
    static void UpdatePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    static void DeletePlaylist(boost::shared_ptr<QoPlaylistDbItem>& item);
    static int GetUserPlaylistsCount();
    static void GetAllUserPlaylists(DbItemArray<QoPlaylistDbItem>& items);

    /// The newest media files of the user's own collection.
    static void GetLastFiles(int count, QoFileDbItemArray& items);
    static bool HasLastFiles();
    static void GetSessionFiles(int session, QoFileDbItemArray& items);

    /// The base with the first positive number that no playlist has after it. The names are looked
    /// up with LIKE: "%" and "_" in the base stand for other characters, and a quote throws.
    ///
    ///   "List1", "list3" and "Listen" exist: "List2"
    static CString GetNextDefaultPlaylist(const CString& base);
};
