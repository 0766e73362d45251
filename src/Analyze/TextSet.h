#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qo
{
/// Texts of which many may occur in one other text. Which of them do is found in one walk over
/// that text, narrowing the sorted texts unit by unit, instead of one search for each.
class TextSet
{
public:
    /// Not after finish(). The same text may come with several ids.
    void add(std::u16string text, int id) { m_entries.push_back({std::move(text), id}); }
    void finish();
    /// Appends the ids of all texts that occur in that one; an id for each occurrence, unsorted.
    void findIn(std::u16string_view text, std::vector<int>& ids) const;

private:
    struct Entry
    {
        std::u16string text;
        int id;
    };
    using Cursor = std::vector<Entry>::const_iterator;

    void findAtStartOf(std::u16string_view text, std::vector<int>& ids) const;

    std::vector<Entry> m_entries;
};
} // namespace qo
