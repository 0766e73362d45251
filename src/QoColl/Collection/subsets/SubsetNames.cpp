#include "QoColl/Collection/subsets/SubsetNames.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTTrack.h"
#include "Physical/HDMusicFile.h"
#include "types/CharClass.h"

#include <algorithm>

namespace qo
{
namespace
{
/// What is sought in the names: any word for an empty filter.
std::u16string patternOf(const CString& filter)
{
    return u" " + std::u16string(filter.view());
}

/// Whether a word begins here: a blank before something else than a blank.
bool hasWord(std::u16string_view name)
{
    return name.find_first_not_of(u' ') != std::u16string_view::npos;
}

/// The next place of the pattern, which has at least two units, or npos. Looks at two units at a
/// time, which excludes nearly everything.
std::size_t findNext(std::u16string_view text, std::u16string_view pattern, std::size_t from)
{
    if (text.size() < pattern.size())
        return std::u16string_view::npos;
    const char16_t* const start = text.data();
    const char16_t* const end = start + (text.size() - pattern.size() + 1);
    const char16_t first = pattern[0];
    const char16_t second = pattern[1];
    for (const char16_t* at = start + from; at < end; ++at)
    {
        if (at[1] == second && at[0] == first && std::u16string_view(at, pattern.size()) == pattern)
            return static_cast<std::size_t>(at - start);
    }
    return std::u16string_view::npos;
}
} // namespace

void SubsetNames::Pool::add(std::u16string_view name)
{
    if (!name.empty())
    {
        m_text += u' ';
        const std::size_t start = m_text.size();
        m_text += name;
        for (std::size_t i = start; i < m_text.size(); ++i)
            m_text[i] = toLower(m_text[i]);
    }
    m_ends.push_back(m_text.size());
}

bool SubsetNames::Pool::matches(int index, std::u16string_view pattern) const
{
    const std::size_t start = startOf(index);
    const std::u16string_view name =
        std::u16string_view(m_text).substr(start, m_ends[index] - start);
    if (pattern.size() == 1)
        return hasWord(name);
    return findNext(name, pattern, 0) != std::u16string_view::npos;
}

std::vector<char> SubsetNames::Pool::matchAll(std::u16string_view pattern) const
{
    std::vector<char> found(m_ends.size());
    if (pattern.size() == 1)
    {
        for (int i = 0; i < count(); ++i)
            found[i] = matches(i, pattern) ? 1 : 0;
        return found;
    }
    int index = 0;
    for (std::size_t at = findNext(m_text, pattern, 0); at != std::u16string::npos;)
    {
        while (m_ends[index] <= at)
            ++index;
        found[index] = 1;
        // The rest of this name changes nothing.
        at = findNext(m_text, pattern, m_ends[index]);
    }
    return found;
}

int SubsetNames::Shared::indexOf(const CLTObject* object,
                                 const CHDFile& file,
                                 CLTObjectType::EType type)
{
    if (!object || object->isUnknown())
        return noName;
    if (object == last)
        return lastIndex;
    const auto entry = indexes.try_emplace(object, names.count());
    if (entry.second)
    {
        names.add(object->getName().view());
        objects.push_back(file.getLTAssoc(type));
    }
    last = object;
    lastIndex = entry.first->second;
    return lastIndex;
}

void SubsetNames::append(const boost::shared_ptr<CHDFile>& file, const FileAssocs& assocs)
{
    Row row{file, file.get(), assocs, noName, noName, noName};
    row.genre = m_genres.indexOf(assocs.genre, *file, CLTObjectType::Genre);
    row.artist = m_artists.indexOf(assocs.artist, *file, CLTObjectType::Artist);
    row.album = m_albums.indexOf(assocs.album, *file, CLTObjectType::Album);
    m_rows.push_back(std::move(row));
    const auto track = file->getLTAssoc(CLTObjectType::Track);
    m_titles.add(track ? track->getName().view() : std::u16string_view());
    m_fileTitles.add(file->getFileTitle().view());
}

void SubsetNames::build(const CPtrListT<CHDFile>& files, const CArray<FileAssocs>& assocs)
{
    clear();
    m_rows.reserve(static_cast<std::size_t>(files.GetSize()));
    for (int i = 0; i < files.GetSize(); ++i)
        append(files[i], assocs[i]);
    m_builtRows = files.GetSize();
    m_isBuilt = true;
}

void SubsetNames::add(const boost::shared_ptr<CHDFile>& file, const FileAssocs& assocs)
{
    append(file, assocs);
    m_lastType = {};
}

void SubsetNames::remove(const CHDFile* file)
{
    m_lastType = {};
    const auto builtEnd = m_rows.begin() + m_builtRows;
    // A row that was removed keeps its place, and a new file may have got its address.
    const auto isBefore = [](const Row& row, const CHDFile* key)
    { return std::less<>()(row.key, key); };
    auto row = std::lower_bound(m_rows.begin(), builtEnd, file, isBefore);
    if (row == builtEnd || row->file.get() != file)
        row = std::find_if(
            builtEnd, m_rows.end(), [file](const Row& other) { return other.file.get() == file; });
    if (row != m_rows.end())
        row->file.reset();
}

std::vector<SubsetFile> SubsetNames::match(const CString& filter, CQoCollSubset::EFilterType type)
{
    const std::u16string pattern = patternOf(filter);
    const bool continues = type == m_lastType && !m_lastFilter.IsEmpty() &&
                           filter.view().starts_with(m_lastFilter.view());
    if (filter.Find(u' ') != -1)
        m_found.clear();
    else if (continues)
        narrowRows(pattern, type);
    else
        matchRows(pattern, type);
    m_lastFilter = filter;
    m_lastType = type;
    std::vector<SubsetFile> files;
    files.reserve(m_found.size());
    for (const int index : m_found)
        files.push_back({&m_rows[index].file, m_rows[index].assocs});
    const auto isBefore = [](const SubsetFile& a, const SubsetFile& b)
    { return std::less<>()(a.file->get(), b.file->get()); };
    if (!std::is_sorted(files.begin(), files.end(), isBefore))
        std::sort(files.begin(), files.end(), isBefore);
    return files;
}

void SubsetNames::matchRows(std::u16string_view pattern, CQoCollSubset::EFilterType type)
{
    const bool all = type == CQoCollSubset::filterAll;
    const auto found = [&](const Pool& pool, CQoCollSubset::EFilterType field)
    { return all || type == field ? pool.matchAll(pattern) : std::vector<char>(); };
    const auto genres = found(m_genres.names, CQoCollSubset::filterAll);
    const auto artists = found(m_artists.names, CQoCollSubset::filterArtist);
    const auto albums = found(m_albums.names, CQoCollSubset::filterAlbum);
    const auto titles = found(m_titles, CQoCollSubset::filterTrack);
    const auto fileTitles = found(m_fileTitles, CQoCollSubset::filterAll);
    const auto has = [](const std::vector<char>& names, int index)
    { return index != noName && !names.empty() && names[index]; };
    m_found.clear();
    for (int i = 0; i < static_cast<int>(m_rows.size()); ++i)
    {
        const Row& row = m_rows[i];
        if (row.file && (has(titles, i) || has(fileTitles, i) || has(artists, row.artist) ||
                         has(albums, row.album) || has(genres, row.genre)))
            m_found.push_back(i);
    }
}

/// The same for the rows of the last result only.
void SubsetNames::narrowRows(std::u16string_view pattern, CQoCollSubset::EFilterType type)
{
    const bool all = type == CQoCollSubset::filterAll;
    const auto has = [&](const Pool& pool, CQoCollSubset::EFilterType field, int index)
    { return index != noName && (all || type == field) && pool.matches(index, pattern); };
    std::erase_if(m_found,
                  [&](int i)
                  {
                      const Row& row = m_rows[i];
                      return !has(m_titles, CQoCollSubset::filterTrack, i) &&
                             !has(m_fileTitles, CQoCollSubset::filterAll, i) &&
                             !has(m_artists.names, CQoCollSubset::filterArtist, row.artist) &&
                             !has(m_albums.names, CQoCollSubset::filterAlbum, row.album) &&
                             !has(m_genres.names, CQoCollSubset::filterAll, row.genre);
                  });
}
} // namespace qo
