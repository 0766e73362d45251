#pragma once

#include "Logical/LTObjectType.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Collection/subsets/SubsetKeys.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qo
{
/// The names of all files of the full subset, folded to lower case once, so that a text filter is a
/// walk through a few long texts. Names that files share (artists, albums, genres) are kept and
/// compared once each. Built for the first text filter.
///
///   A word of a name begins with the filter where the name has a blank followed by the filter, as
///   each name is stored with a blank before it: in " the beatles abbey road" " bea" is found and
///   " eat" is not. A filter holds no blank, so a match never reaches into the next name.
class SubsetNames
{
public:
    bool isBuilt() const noexcept { return m_isBuilt; }
    void clear() { *this = SubsetNames(); }
    void build(const CPtrListT<CHDFile>& files, const CArray<FileAssocs>& assocs);
    void add(const boost::shared_ptr<CHDFile>& file, const FileAssocs& assocs);
    void remove(const CHDFile* file);

    /// The files that match, in ascending order of their addresses; valid until the next change. A
    /// filter that continues the last one is sought among the last result only.
    std::vector<SubsetFile> match(const CString& filter, CQoCollSubset::EFilterType type);

private:
    /// Names one after the other in one text.
    class Pool
    {
    public:
        void add(std::u16string_view name);
        int count() const noexcept { return static_cast<int>(m_ends.size()); }
        bool matches(int index, std::u16string_view pattern) const;
        /// For each name whether it matches.
        std::vector<char> matchAll(std::u16string_view pattern) const;

    private:
        std::size_t startOf(int index) const { return index == 0 ? 0 : m_ends[index - 1]; }

        std::u16string m_text;
        std::vector<std::size_t> m_ends;
    };
    /// The names of artists, albums or genres.
    struct Shared
    {
        Pool names;
        std::unordered_map<const CLTObject*, int> indexes;
        std::vector<boost::shared_ptr<CLTObject>>
            objects; ///< keep the addresses from being used again
        const CLTObject* last = nullptr;
        int lastIndex = noName;

        int indexOf(const CLTObject* object, const CHDFile& file, CLTObjectType::EType type);
    };
    struct Row
    {
        boost::shared_ptr<CHDFile> file; ///< null once it was removed
        const CHDFile* key;              ///< its address, also afterwards
        FileAssocs assocs;
        int genre;
        int artist;
        int album;
    };
    static constexpr int noName = -1;

    void append(const boost::shared_ptr<CHDFile>& file, const FileAssocs& assocs);
    void matchRows(std::u16string_view pattern, CQoCollSubset::EFilterType type);
    void narrowRows(std::u16string_view pattern, CQoCollSubset::EFilterType type);

    bool m_isBuilt = false;
    std::vector<Row> m_rows; ///< those of build() sorted by address, then those of add()
    int m_builtRows = 0;
    Shared m_genres;
    Shared m_artists;
    Shared m_albums;
    Pool m_titles;     ///< of tracks, one for each row
    Pool m_fileTitles; ///< one for each row

    std::vector<int> m_found; ///< the rows of the last result
    CString m_lastFilter;
    CQoCollSubset::EFilterType m_lastType{}; ///< 0 without a last result
};
} // namespace qo
