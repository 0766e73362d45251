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

/// The last two parts of a path with slashes, as all spellings have them; "" for a shorter one.
std::u16string endKey(const CString& path)
{
    const std::u16string_view text = path.view();
    const std::size_t name = text.rfind(u'/');
    if (name == std::u16string_view::npos || name == 0)
        return {};
    const std::size_t folder = text.rfind(u'/', name - 1);
    const std::size_t start = folder == std::u16string_view::npos ? 0 : folder + 1;
    if (start == name)
        return {};
    return std::u16string(sameNameKey(path.Mid(static_cast<int>(start))).view());
}

CString slashed(const CString& path)
{
    CString text = path;
    text.Replace(u'\\', u'/');
    return text;
}

/// How many parts at their ends agree.
int commonEnd(const CString& one, const CString& other)
{
    const CString a = sameNameKey(slashed(one));
    const CString b = sameNameKey(slashed(other));
    int parts = 0;
    for (int i = 1; i <= std::min(a.GetLength(), b.GetLength()); ++i)
    {
        const char16_t c = a[a.GetLength() - i];
        if (c != b[b.GetLength() - i])
            return parts;
        parts += c == u'/' ? 1 : 0;
    }
    return parts + 1;
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
    for (int at = title.Find(u" - "); at > 0; at = title.Find(u" - ", at + 1))
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

template <class KeyOf>
const SongFinder::Index& SongFinder::index(std::optional<Index>& index, KeyOf keyOf)
{
    if (index)
        return *index;
    if (m_all.IsEmpty())
        ownCollection().copyFiles(m_all);
    index.emplace();
    for (const QoFileDbItemPtr& item : m_all)
        if (std::u16string key = keyOf(*item); !key.empty())
            index->emplace(std::move(key), item);
    return *index;
}

QoFileDbItemPtr SongFinder::byId(const CString& id)
{
    if (id.IsEmpty())
        return {};
    const Index& ids = index(
        m_byId, [](const QoFileDbItem& item) { return std::u16string(item.velmoraId.view()); });
    const auto found = ids.find(std::u16string(id.view()));
    return found == ids.end() ? QoFileDbItemPtr() : found->second;
}

QoFileDbItemPtr SongFinder::byPath(const std::string& path)
{
    if (auto item = CollectionChanges::recordOf(fromSystemPath(path)))
        return item;
    for (const CString& form : spellings(path))
        if (auto item = CollectionChanges::recordOf(form))
            return item;
    const Index& keys = index(m_byPath,
                              [](const QoFileDbItem& item)
                              { return std::u16string(sameNameKey(item.path).view()); });
    const std::u16string key(sameNameKey(fromSystemPath(path)).view());
    return keys.count(key) == 1 ? keys.find(key)->second : QoFileDbItemPtr();
}

QoFileDbItemPtr SongFinder::byPathEnd(const std::string& path)
{
    const Index& ends =
        index(m_byEnd, [](const QoFileDbItem& item) { return endKey(slashed(item.path)); });
    const CString text = fromUtf8(path);
    const auto [first, last] = ends.equal_range(endKey(text));
    QoFileDbItemPtr best;
    int most = 0;
    for (auto each = first; each != last; ++each)
    {
        const int parts = commonEnd(each->second->path, text);
        if (parts >= most)
            best = parts > most ? each->second : QoFileDbItemPtr();
        most = std::max(most, parts);
    }
    return best;
}

QoFileDbItemPtr SongFinder::byTags(const CString& artist, const CString& title, int duration)
{
    if (artist.IsEmpty() || title.IsEmpty())
        return {};
    const Index& tags = index(m_byTags,
                              [](const QoFileDbItem& item)
                              {
                                  const bool isMedia = (item.flags & fileFlag::mediaMask) != 0;
                                  return isMedia && !item.artist.IsEmpty() && !item.title.IsEmpty()
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
