#include "core/base/HostFiles.h"
#include "core/store/HostStore.h"
#include "core/store/StoreSchema.h"

#include <QoKernel/Inside.h>

// What the store knows of playlists.

namespace qo::host
{
namespace
{
void deleteOfList(CSQLiteDB& db, const char16_t* text, int playlist)
{
    CSQLiteStatement statement = db.CompileStatement(text);
    statement.BindInt(1, playlist);
    statement.ExecuteDML();
}

void deleteEntries(CSQLiteDB& db, int playlist)
{
    deleteOfList(db, u"DELETE FROM PLAYLIST_ENTRY_T WHERE PE_LIST = ?1", playlist);
}

void deleteChange(CSQLiteDB& db, int playlist)
{
    deleteOfList(db, u"DELETE FROM PLAYLIST_CHANGE_T WHERE PC_LIST = ?1", playlist);
}

void insertEntries(CSQLiteDB& db, int playlist, const std::vector<StoredEntry>& entries)
{
    CSQLiteStatement statement = db.CompileStatement(
        u"INSERT INTO PLAYLIST_ENTRY_T (PE_LIST, PE_POSITION, PE_ROW, PE_ID, PE_PATH, PE_TEXT, "
        u"PE_TITLE, PE_ARTIST, PE_DURATION) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
    int position = 0;
    for (const StoredEntry& entry : entries)
    {
        statement.BindInt(1, playlist);
        statement.BindInt(2, ++position);
        statement.BindInt(3, entry.row);
        statement.BindText(4, entry.id);
        statement.BindText(5, lastingPath(entry.path));
        statement.BindText(6, entry.text);
        statement.BindText(7, entry.title);
        statement.BindText(8, entry.artist);
        statement.BindInt(9, entry.duration);
        statement.ExecuteDML();
    }
}

bool hasPlaylists(CSQLiteDB& db)
{
    return storeSchema::has(db, storeSchema::playlists);
}
} // namespace

std::vector<StoredEntry> HostStore::playlistEntries(int playlist) const
{
    std::vector<StoredEntry> entries;
    read(
        [&](CSQLiteDB& db)
        {
            if (!hasPlaylists(db))
                return;
            CSQLiteStatement statement = db.CompileStatement(
                u"SELECT PE_ROW, PE_ID, PE_PATH, PE_TEXT, PE_TITLE, PE_ARTIST, PE_DURATION FROM "
                u"PLAYLIST_ENTRY_T WHERE PE_LIST = ?1 ORDER BY PE_POSITION");
            statement.BindInt(1, playlist);
            CSQLiteQueryResult row = statement.ExecuteQuery();
            for (; !row.Eof(); row.NextRow())
                entries.push_back({row.GetIntField(0),
                                   CString(row.textView(1)),
                                   CString(row.textView(2)),
                                   CString(row.textView(3)),
                                   CString(row.textView(4)),
                                   CString(row.textView(5)),
                                   row.GetIntField(6)});
        });
    return entries;
}

void HostStore::beginPlaylistChange(int playlist,
                                    const CString& tracks,
                                    const std::vector<StoredEntry>& entries)
{
    write(
        [&](CSQLiteDB& db)
        {
            deleteEntries(db, playlist);
            insertEntries(db, playlist, entries);
            CSQLiteStatement statement = db.CompileStatement(
                u"INSERT OR REPLACE INTO PLAYLIST_CHANGE_T (PC_LIST, PC_TRACKS) VALUES (?1, ?2)");
            statement.BindInt(1, playlist);
            statement.BindText(2, tracks);
            statement.ExecuteDML();
        });
}

void HostStore::endPlaylistChange(int playlist)
{
    write([playlist](CSQLiteDB& db) { deleteChange(db, playlist); });
}

std::optional<CString> HostStore::begunPlaylistChange(int playlist) const
{
    std::optional<CString> tracks;
    read(
        [&](CSQLiteDB& db)
        {
            if (!hasPlaylists(db))
                return;
            CSQLiteStatement statement =
                db.CompileStatement(u"SELECT PC_TRACKS FROM PLAYLIST_CHANGE_T WHERE PC_LIST = ?1");
            statement.BindInt(1, playlist);
            const CSQLiteQueryResult row = statement.ExecuteQuery();
            if (!row.Eof())
                tracks = CString(row.textView(0));
        });
    return tracks;
}

void HostStore::forgetPlaylist(int playlist)
{
    write(
        [playlist](CSQLiteDB& db)
        {
            deleteEntries(db, playlist);
            deleteChange(db, playlist);
        });
}

std::map<int, int> HostStore::entriesWithoutFile() const
{
    std::map<int, int> counts;
    read(
        [&counts](CSQLiteDB& db)
        {
            if (!hasPlaylists(db))
                return;
            CSQLiteStatement statement =
                db.CompileStatement(u"SELECT PE_LIST, count(*) FROM PLAYLIST_ENTRY_T WHERE PE_ROW "
                                    u"= 0 GROUP BY PE_LIST");
            CSQLiteQueryResult row = statement.ExecuteQuery();
            for (; !row.Eof(); row.NextRow())
                counts[row.GetIntField(0)] = row.GetIntField(1);
        });
    return counts;
}

std::vector<LivingList> HostStore::livingLists() const
{
    std::vector<LivingList> lists;
    read(
        [&lists](CSQLiteDB& db)
        {
            if (!hasPlaylists(db))
                return;
            CSQLiteStatement statement =
                db.CompileStatement(u"SELECT LL_NAME, LL_QUERY FROM LIVING_LIST_T ORDER BY rowid");
            CSQLiteQueryResult row = statement.ExecuteQuery();
            for (; !row.Eof(); row.NextRow())
                lists.push_back({CString(row.textView(0)), CString(row.textView(1))});
        });
    return lists;
}

void HostStore::replaceLivingList(const CString& formerName, const LivingList& list)
{
    write(
        [&](CSQLiteDB& db)
        {
            CSQLiteStatement removal =
                db.CompileStatement(u"DELETE FROM LIVING_LIST_T WHERE LL_NAME = ?1");
            removal.BindText(1, formerName);
            removal.ExecuteDML();
            if (list.name.IsEmpty())
                return;
            CSQLiteStatement statement =
                db.CompileStatement(u"INSERT OR REPLACE INTO LIVING_LIST_T (LL_NAME, LL_QUERY) "
                                    u"VALUES (?1, ?2)");
            statement.BindText(1, list.name);
            statement.BindText(2, list.query);
            statement.ExecuteDML();
        });
}
} // namespace qo::host
