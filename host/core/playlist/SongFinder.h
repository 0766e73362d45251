#pragma once

#include "core/playlist/PlaylistText.h"
#include "core/store/StoreRows.h"

#include <QoKernel/Collection.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qo::host
{
/// By what a song was found.
enum class FoundBy
{
    nothing,
    lastingId,
    path,
    pathEnd, ///< the last folders of the path and the name
    tags
};

/// The word for messages and JSON: "lasting id", "path", "end of the path", "tags".
const char* wordsOf(FoundBy by);

/// Finds songs in the loaded collection. Each kind of look-up that needs an index makes it when it
/// is first used, in time that is in proportion to the collection. Every function returns null for
/// nothing. On the kernel's thread; not to be used after a change of the collection.
class SongFinder
{
public:
    QoFileDbItemPtr byId(const CString& id);
    /// A path of the collection in any case or Unicode form. Where several files differ in the form
    /// alone, only the exact one is found.
    QoFileDbItemPtr byPath(const std::string& path);
    /// The only file whose last folder and name are those of the path, with slashes; of several the
    /// only one with the most folders.
    ///
    ///   "C:/Music/Kino/Album/01.mp3" finds /home/ann/Music/Kino/Album/01.mp3
    QoFileDbItemPtr byPathEnd(const std::string& path);
    /// Without regard to case and accents. Where both lengths are known, they may differ by three
    /// seconds. The nearest length counts, then the first path. Nothing without artist and title.
    QoFileDbItemPtr byTags(const CString& artist, const CString& title, int duration);

private:
    template <class Key>
    using Index = std::unordered_multimap<Key, QoFileDbItemPtr>;
    using End = std::pair<std::u16string, QoFileDbItemPtr>;

    template <class Key, class KeyOf>
    const Index<Key>& index(std::optional<Index<Key>>& index, KeyOf keyOf);

    const QoFileDbItemArray& all();
    QoFileDbItemPtr byExactPath(const CString& path);

    QoFileDbItemArray m_all;
    std::optional<std::unordered_map<FilePath, QoFileDbItemPtr>> m_byExactPath;
    std::optional<Index<LastingId>> m_byId;
    std::optional<Index<std::u16string>> m_byPath;
    std::optional<std::vector<End>> m_byEnd; ///< sorted by the paths from their ends
    std::optional<Index<std::u16string>> m_byTags;
};

/// The song that a list names; places are seen from the folder. Tags are asked only with `match`,
/// and so is the end of a path, unless it is one of another system.
QoFileDbItemPtr findListed(
    SongFinder& finder, const ListedSong& song, const std::string& folder, bool match, FoundBy& by);
/// The song that an entry remembers: by its lasting id, its path, or artist, title and length.
QoFileDbItemPtr findRemembered(SongFinder& finder, const StoredEntry& entry, FoundBy& by);
} // namespace qo::host
