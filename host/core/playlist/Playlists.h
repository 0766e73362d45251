#pragma once

#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Player.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace qo::host
{
/// A playlist of the kernel with what the host remembers of its entries, or a living list.
struct Playlist
{
    int id = 0; ///< 0 for a living list
    CString name;
    CString query; ///< of a living list
    std::vector<StoredEntry> entries;
    CString tracks; ///< the list in the collection's database, as it was read

    bool isLiving() const { return id == 0; }
};

/// Playlists. The collection's database has their names and row ids; the host's store has the song
/// that each entry means, and entries without a file. Another program may change the former at any
/// time: what the store knows of an entry stays with its row id. Names that differ in case alone
/// are taken for one. Changes need the lock. All of this is for the kernel's thread and throws
/// HostError, and what the database layer throws.
///
/// A change first goes into the store, together with the list as it was, then into the collection's
/// database, and then ends in the store. One that was cut short is seen by that, and counts as
/// made: the entries of the store hold as long as the database has the list as it was.
class Playlists
{
public:
    Playlists();

    /// Every playlist without its entries, and then the living lists.
    struct Facts
    {
        Playlist list;
        int entries = 0;
        int withoutFile = 0;
    };
    std::vector<Facts> all() const;
    /// As "#3" by its id, or by its name. Throws HostError with a suggestion for what there is not.
    Playlist find(const std::string& typed) const;
    /// Throws HostError for a name that a list other than the given one has, or that none can have.
    void needName(const CString& name, const Playlist& own) const;
    void needFreeName(const CString& name) const { needName(name, {}); }

    /// Both need a free name.
    Playlist make(const CString& name, const std::vector<StoredEntry>& entries);
    void makeLiving(const CString& name, const CString& query);
    /// A living list has no entries.
    void setEntries(Playlist& list, const std::vector<StoredEntry>& entries);
    void rename(const Playlist& list, const CString& name);
    void remove(const Playlist& list);

private:
    Playlist read(const QoPlaylistDbItem& item) const;

    HostStore m_store;
};

/// What an entry means now.
enum class EntryState
{
    found,
    otherSong,  ///< its row id is that of another song
    gone,       ///< its row is no longer there
    withoutFile ///< it never had a row
};
/// The word for JSON: "found", "other", "gone", "text".
const char* wordOf(EntryState state);

/// Looks entries up in the loaded collection, and in the database for rows of devices and shares.
/// On the kernel's thread.
class EntryLookup
{
public:
    struct Answer
    {
        EntryState state;
        QoFileDbItemPtr item; ///< what the row is; null where there is none
    };
    Answer look(const StoredEntry& entry);

private:
    QoFileDbItemPtr itemOf(int row);

    std::unordered_map<int, QoFileDbItemPtr>
        m_own;                             ///< the user's own files, once one was asked for
    std::unique_ptr<CQoCollDb> m_database; ///< opened for the first row that is not the user's own
};

/// The entry that means this file.
StoredEntry entryOf(const QoFileDbItem& item);
/// Entries that mean these files; what is no music or video is left out.
std::vector<StoredEntry> entriesOf(const QoFileDbItemArray& files);
/// The place that an entry remembers, as a person sees it.
std::string placeOf(const StoredEntry& entry);
} // namespace qo::host
