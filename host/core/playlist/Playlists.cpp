#include "core/playlist/Playlists.h"

#include "core/base/ClosestName.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/roots/StoredRoots.h"
#include "core/session/Session.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace qo::host
{
namespace
{
constexpr const char16_t* separator = u";";
constexpr std::size_t mostNamesShown = 12;

/// Without a collection of this version there are none; asking the kernel would make a database.
void readAll(DbItemArray<QoPlaylistDbItem>& items)
{
    if (isCollection(Session::databasePath()))
        CMpPlaylistUtils::GetAllUserPlaylists(items);
}

std::vector<int> rowsOf(const CStringArray& tracks)
{
    std::vector<int> rows;
    rows.reserve(static_cast<std::size_t>(tracks.GetSize()));
    for (const CString& track : tracks)
        rows.push_back(textToInt(track.view()));
    return rows;
}

std::vector<int> rowsOf(const std::vector<StoredEntry>& entries)
{
    std::vector<int> rows;
    rows.reserve(entries.size());
    for (const StoredEntry& entry : entries)
        if (entry.row != 0)
            rows.push_back(entry.row);
    return rows;
}

CStringArray tracksOf(const std::vector<StoredEntry>& entries)
{
    CStringArray tracks;
    for (const int row : rowsOf(entries))
        tracks.Add(fromUtf8(std::to_string(row)));
    return tracks;
}

/// The entries of the database's list, each with what is remembered of its row id, in the order of
/// the database. An entry without a file stays after the one that it followed, or comes last if
/// that is no longer in the list.
///
///   remembered 5 "text" 7 9, list 9 5 6: 9 5 "text" 6
class Merge
{
public:
    explicit Merge(std::vector<StoredEntry> remembered) : m_remembered(std::move(remembered))
    {
        for (std::size_t i = 0; i < m_remembered.size(); ++i)
            if (m_remembered[i].row != 0)
                m_byRow[m_remembered[i].row].push_back(i);
        m_isTaken.resize(m_remembered.size());
    }

    std::vector<StoredEntry> run(const std::vector<int>& rows)
    {
        takeTexts(0);
        for (const int row : rows)
        {
            const auto known = m_byRow.find(row);
            if (known == m_byRow.end() || known->second.empty())
            {
                StoredEntry entry;
                entry.row = row;
                m_merged.push_back(entry);
                continue;
            }
            const std::size_t index = known->second.front();
            known->second.pop_front();
            take(index);
            takeTexts(index + 1);
        }
        for (std::size_t i = 0; i < m_remembered.size(); ++i)
            if (m_remembered[i].row == 0 && !m_isTaken[i])
                take(i);
        return std::move(m_merged);
    }

private:
    void take(std::size_t index)
    {
        m_merged.push_back(m_remembered[index]);
        m_isTaken[index] = true;
    }
    void takeTexts(std::size_t index)
    {
        for (; index < m_remembered.size() && m_remembered[index].row == 0; ++index)
            take(index);
    }

    std::vector<StoredEntry> m_remembered;
    std::unordered_map<int, std::deque<std::size_t>> m_byRow;
    std::vector<bool> m_isTaken;
    std::vector<StoredEntry> m_merged;
};

/// #3 is 3; 0 for another text.
int idOf(const std::string& typed)
{
    const bool isId =
        typed.size() > 1 && typed[0] == '#' && std::all_of(typed.begin() + 1, typed.end(), isdigit);
    return isId ? textToInt(fromUtf8(typed.substr(1)).view()) : 0;
}

boost::shared_ptr<QoPlaylistDbItem>
itemOf(int id, const CString& name, const std::vector<StoredEntry>& entries)
{
    auto item = boost::make_shared<QoPlaylistDbItem>();
    item->id = id;
    item->name = name;
    item->tracks = tracksOf(entries);
    return item;
}
} // namespace

Playlists::Playlists() : m_store(Session::folder()) {}

std::vector<Playlists::Facts> Playlists::all() const
{
    DbItemArray<QoPlaylistDbItem> items;
    readAll(items);
    const std::map<int, int> texts = m_store.entriesWithoutFile();
    std::vector<Facts> facts;
    for (const auto& item : items)
    {
        const auto found = texts.find(item->id);
        const int withoutFile = found == texts.end() ? 0 : found->second;
        const bool isBegun = m_store.begunPlaylistChange(item->id).has_value();
        const int entries = isBegun ? static_cast<int>(read(*item).entries.size())
                                    : static_cast<int>(item->tracks.GetSize()) + withoutFile;
        facts.push_back({{item->id, item->name, {}, {}, {}}, entries, withoutFile});
    }
    for (const LivingList& list : m_store.livingLists())
        facts.push_back({{0, list.name, list.query, {}, {}}, 0, 0});
    return facts;
}

Playlist Playlists::read(const QoPlaylistDbItem& item) const
{
    Playlist list{item.id, item.name, {}, m_store.playlistEntries(item.id), {}};
    list.tracks = item.tracks.join(separator);
    const std::vector<int> rows = rowsOf(item.tracks);
    if (rows != rowsOf(list.entries) && m_store.begunPlaylistChange(item.id) != list.tracks)
        list.entries = Merge(std::move(list.entries)).run(rows);
    return list;
}

Playlist Playlists::find(const std::string& typed) const
{
    DbItemArray<QoPlaylistDbItem> items;
    readAll(items);
    const CString name = fromUtf8(typed);
    const QoPlaylistDbItem* found = nullptr;
    const int id = idOf(typed);
    // An id names its list even where another program has made one of such a name.
    for (const auto& item : items)
        if (id != 0 && item->id == id)
            return read(*item);
    for (const auto& item : items)
    {
        if (item->name.CompareNoCase(name) == 0)
        {
            if (found)
                throw HostError(ExitCode::usage,
                                "there are several playlists \"" + typed + "\": name one as #" +
                                    std::to_string(found->id) + " or #" + std::to_string(item->id));
            found = item.get();
        }
    }
    for (const LivingList& list : m_store.livingLists())
        if (!found && list.name.CompareNoCase(name) == 0)
            return {0, list.name, list.query, {}, {}};
    if (found)
        return read(*found);
    std::vector<std::string> names;
    for (const Facts& each : all())
        names.push_back(toUtf8(each.list.name));
    throw HostError(ExitCode::notFound,
                    "there is no playlist \"" + typed + "\"" +
                        (names.empty() || names.size() > mostNamesShown
                             ? suggestionFor(typed, names)
                             : suggestionOrList(typed, names)));
}

void Playlists::needName(const CString& name, const Playlist& own) const
{
    if (CString(name).Trim().IsEmpty())
        throw HostError(ExitCode::usage, "a playlist needs a name");
    if (idOf(toUtf8(name)) != 0)
        throw HostError(ExitCode::usage,
                        "\"" + toUtf8(name) + "\" names a playlist by its id: choose another name");
    for (const Facts& each : all())
    {
        const bool isOwn = own.id == each.list.id && own.name == each.list.name;
        if (!isOwn && each.list.name.CompareNoCase(name) == 0)
            throw HostError(ExitCode::usage,
                            "there is a playlist \"" + toUtf8(each.list.name) + "\" already");
    }
}

Playlist Playlists::make(const CString& name, const std::vector<StoredEntry>& entries)
{
    needFreeName(name);
    // The kernel gives the id. Until the entries are in the store, the list is an empty one.
    const auto item = CMpPlaylistUtils::NewPlaylist(name, QoFileDbItemArray());
    Playlist list{item->id, name, {}, {}, {}};
    setEntries(list, entries);
    return list;
}

void Playlists::makeLiving(const CString& name, const CString& query)
{
    needFreeName(name);
    m_store.replaceLivingList(name, {name, query});
}

void Playlists::setEntries(Playlist& list, const std::vector<StoredEntry>& entries)
{
    m_store.beginPlaylistChange(list.id, list.tracks, entries);
    auto item = itemOf(list.id, list.name, entries);
    CMpPlaylistUtils::UpdatePlaylist(item);
    m_store.endPlaylistChange(list.id);
    list.entries = entries;
    list.tracks = item->tracks.join(separator);
}

void Playlists::rename(const Playlist& list, const CString& name)
{
    needName(name, list);
    if (list.isLiving())
        return m_store.replaceLivingList(list.name, {name, list.query});
    boost::shared_ptr<QoPlaylistDbItem> item;
    if (!CMpPlaylistUtils::GetPlaylist(list.id, item))
        throw HostError(ExitCode::notFound,
                        "the playlist \"" + toUtf8(list.name) + "\" is no longer there");
    item->name = name;
    CMpPlaylistUtils::UpdatePlaylist(item);
}

void Playlists::remove(const Playlist& list)
{
    if (list.isLiving())
        return m_store.replaceLivingList(list.name, {});
    auto item = itemOf(list.id, list.name, {});
    CMpPlaylistUtils::DeletePlaylist(item);
    m_store.forgetPlaylist(list.id);
}

const char* wordOf(EntryState state)
{
    switch (state)
    {
    case EntryState::found:
        return "found";
    case EntryState::otherSong:
        return "other";
    case EntryState::gone:
        return "gone";
    case EntryState::withoutFile:
        break;
    }
    return "text";
}

QoFileDbItemPtr EntryLookup::itemOf(int row)
{
    if (m_own.empty())
    {
        QoFileDbItemArray files;
        ownCollection().copyFiles(files);
        m_own.reserve(static_cast<std::size_t>(files.GetSize()));
        for (const QoFileDbItemPtr& item : files)
            m_own.emplace(item->id, item);
    }
    if (const auto found = m_own.find(row); found != m_own.end())
        return found->second;
    if (!m_database)
        m_database = std::make_unique<CQoCollDb>(Session::databasePath());
    QoFileDbItemPtr item;
    m_database->getFileFromDevice(row, item);
    return item;
}

EntryLookup::Answer EntryLookup::look(const StoredEntry& entry)
{
    if (entry.row == 0)
        return {EntryState::withoutFile, {}};
    const QoFileDbItemPtr item = itemOf(entry.row);
    if (!item)
        return {EntryState::gone, {}};
    const bool isSame = entry.id.IsEmpty() || entry.id == item->velmoraId;
    return {isSame ? EntryState::found : EntryState::otherSong, item};
}

StoredEntry entryOf(const QoFileDbItem& item)
{
    return {item.id, item.velmoraId, item.path, {}, item.title, item.artist, item.duration};
}

std::vector<StoredEntry> entriesOf(const QoFileDbItemArray& files)
{
    std::vector<StoredEntry> entries;
    for (const QoFileDbItemPtr& item : files)
        if (isMedia(*item))
            entries.push_back(entryOf(*item));
    return entries;
}

std::string placeOf(const StoredEntry& entry)
{
    return entry.path.IsEmpty() ? toUtf8(entry.text) : shownPath(entry.path);
}
} // namespace qo::host
