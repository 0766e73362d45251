#include "core/playlist/SongFinder.h"

#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/plan/TargetName.h"
#include "core/playlist/SongPlace.h"
#include "core/query/FoldedText.h"

#include <algorithm>
#include <cstdlib>

namespace qo::host
{
namespace
{
constexpr int nearDuration = 3000; ///< milliseconds
constexpr int mostDashes = 16;     ///< in a title that may begin with a part of the artist

/// A path from its end, as all spellings have it, each part ended by a slash. Paths with the same
/// last parts then begin alike.
///
///   "C:\Kino\01.mp3" is "3pm.10/onik/:c/"
std::u16string reversedKey(const CString& path)
{
    CString text = path;
    text.Replace(u'\\', u'/');
    const CString key = sameNameKey(text);
    std::u16string reversed(key.view().rbegin(), key.view().rend());
    reversed += u'/';
    return reversed;
}

/// How many parts at their ends agree.
int commonParts(const std::u16string& one, const std::u16string& other)
{
    const auto end = std::ranges::mismatch(one, other).in1;
    return static_cast<int>(std::count(one.begin(), end, u'/'));
}

std::u16string tagsKey(const CString& artist, const CString& title)
{
    std::u16string key = folded(artist.view());
    key += u'\n';
    appendFolded(title.view(), key);
    return key;
}

/// How far two lengths are apart; none if that is too far. An unknown one agrees with any.
std::optional<int> distance(int one, int other)
{
    if (one <= 0 || other <= 0)
        return nearDuration;
    const long long apart = std::llabs(static_cast<long long>(one) - other);
    return apart <= nearDuration ? std::optional(static_cast<int>(apart)) : std::nullopt;
}

QoFileDbItemPtr
byListedTags(SongFinder& finder, const CString& artist, const CString& title, int duration)
{
    if (auto item = finder.byTags(artist, title, duration))
        return item;
    // "Simon - Half - Song" may be of "Simon" or of "Simon - Half".
    int dashes = 0;
    for (int at = title.Find(u" - "); at > 0 && ++dashes <= mostDashes;
         at = title.Find(u" - ", at + 1))
        if (auto item =
                finder.byTags(artist + u" - " + title.Left(at), title.Mid(at + 3), duration))
            return item;
    return {};
}
} // namespace

const char* wordsOf(FoundBy by)
{
    switch (by)
    {
    case FoundBy::lastingId:
        return "lasting id";
    case FoundBy::path:
        return "path";
    case FoundBy::pathEnd:
        return "end of the path";
    case FoundBy::tags:
        return "tags";
    case FoundBy::nothing:
        break;
    }
    return "nothing";
}

const QoFileDbItemArray& SongFinder::all()
{
    if (m_all.IsEmpty())
        ownCollection().copyFiles(m_all);
    return m_all;
}

template <class Key, class KeyOf>
const SongFinder::Index<Key>& SongFinder::index(std::optional<Index<Key>>& index, KeyOf keyOf)
{
    if (index)
        return *index;
    index.emplace();
    for (const QoFileDbItemPtr& item : all())
        if (Key key = keyOf(*item); key != Key())
            index->emplace(std::move(key), item);
    return *index;
}

QoFileDbItemPtr SongFinder::byId(const CString& id)
{
    if (id.IsEmpty())
        return {};
    const auto& ids = index(m_byId, [](const QoFileDbItem& item) { return item.velmoraId; });
    const auto found = ids.find(id);
    return found == ids.end() ? QoFileDbItemPtr() : found->second;
}

/// Long lists have such paths alone, and the trees are searched folder by folder.
QoFileDbItemPtr SongFinder::byExactPath(const CString& path)
{
    if (!m_byExactPath)
    {
        m_byExactPath.emplace();
        m_byExactPath->reserve(static_cast<std::size_t>(all().GetSize()));
        for (const QoFileDbItemPtr& item : all())
            m_byExactPath->emplace(item->path, item);
    }
    const auto found = m_byExactPath->find(path);
    return found == m_byExactPath->end() ? QoFileDbItemPtr() : found->second;
}

QoFileDbItemPtr SongFinder::byPath(const std::string& path)
{
    if (auto item = byExactPath(fromSystemPath(path)))
        return item;
    if (auto item = CollectionChanges::recordOf(fromSystemPath(path)))
        return item;
    for (const CString& form : spellings(path))
        if (auto item = CollectionChanges::recordOf(form))
            return item;
    const auto& keys = index(m_byPath,
                             [](const QoFileDbItem& item)
                             { return std::u16string(sameNameKey(item.path).view()); });
    const std::u16string key(sameNameKey(fromSystemPath(path)).view());
    return keys.count(key) == 1 ? keys.find(key)->second : QoFileDbItemPtr();
}

QoFileDbItemPtr SongFinder::byPathEnd(const std::string& path)
{
    constexpr int fewestParts = 2; // the folder and the name
    if (!m_byEnd)
    {
        m_byEnd.emplace();
        for (const QoFileDbItemPtr& item : all())
            m_byEnd->emplace_back(reversedKey(item->path), item);
        std::ranges::sort(*m_byEnd, {}, &End::first);
    }
    const std::u16string key = reversedKey(fromUtf8(path));
    const auto place = std::ranges::lower_bound(*m_byEnd, key, {}, &End::first);
    // Those that agree most stand around the place, so two on either side tell the only one.
    const auto first = place - std::min<std::ptrdiff_t>(2, place - m_byEnd->begin());
    const auto last = place + std::min<std::ptrdiff_t>(2, m_byEnd->end() - place);
    QoFileDbItemPtr best;
    int most = fewestParts - 1;
    for (auto each = first; each != last; ++each)
    {
        const int parts = commonParts(each->first, key);
        if (parts > most)
            best = each->second;
        else if (parts == most)
            best.reset();
        most = std::max(most, parts);
    }
    return best;
}

QoFileDbItemPtr SongFinder::byTags(const CString& artist, const CString& title, int duration)
{
    if (artist.IsEmpty() || title.IsEmpty())
        return {};
    const auto& tags = index(m_byTags,
                             [](const QoFileDbItem& item)
                             {
                                 const bool isSong = isMedia(item);
                                 return isSong && !item.artist.IsEmpty() && !item.title.IsEmpty()
                                            ? tagsKey(item.artist, item.title)
                                            : std::u16string();
                             });
    const auto [first, last] = tags.equal_range(tagsKey(artist, title));
    QoFileDbItemPtr best;
    int nearest = 0;
    for (auto each = first; each != last; ++each)
    {
        const std::optional<int> apart = distance(each->second->duration, duration);
        const bool isBetter =
            apart &&
            (!best || *apart < nearest ||
             (*apart == nearest && CQoUtils::comparePaths(each->second->path, best->path) < 0));
        if (!isBetter)
            continue;
        best = each->second;
        nearest = *apart;
    }
    return best;
}

QoFileDbItemPtr findListed(
    SongFinder& finder, const ListedSong& song, const std::string& folder, bool match, FoundBy& by)
{
    const SongPlace place = meaningOf(song.place, folder);
    by = FoundBy::path;
    for (const std::string& path : place.paths)
        if (auto item = finder.byPath(path))
            return item;
    by = FoundBy::pathEnd;
    if (!place.foreign.empty())
        if (auto item = finder.byPathEnd(place.foreign))
            return item;
    if (match)
    {
        by = FoundBy::tags;
        if (auto item = byListedTags(finder, song.artist, song.title, song.duration))
            return item;
        by = FoundBy::pathEnd;
        for (const std::string& path : place.paths)
            if (auto item = finder.byPathEnd(path))
                return item;
    }
    by = FoundBy::nothing;
    return {};
}

QoFileDbItemPtr findRemembered(SongFinder& finder, const StoredEntry& entry, FoundBy& by)
{
    by = FoundBy::lastingId;
    if (auto item = finder.byId(entry.id))
        return item;
    by = FoundBy::path;
    const std::string path = entry.path.IsEmpty() ? "" : toSystemPath(entry.path);
    if (!path.empty())
        if (auto item = finder.byPath(path))
            return item;
    by = FoundBy::tags;
    if (auto item = byListedTags(finder, entry.artist, entry.title, entry.duration))
        return item;
    by = FoundBy::nothing;
    return {};
}
} // namespace qo::host
