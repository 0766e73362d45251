#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qo
{
/// A set of texts that finds all of its members which occur in another text, in one walk over that
/// text instead of one search for each member. The members are sorted; from each position of the
/// text the range of those that still match is narrowed unit by unit. Costs about the length of the
/// text times the length of the longest match times the logarithm of the count.
///
///   Example: {"ann", "anna", "night"} in "xanna": from its second unit "a", "an", "ann" keep two
///   members; "ann" ends there and is found, "anna" is found one unit later.
class TextSet
{
public:
    /// Must not be called after finish(). The text must not be empty. One text may have several
    /// ids.
    void add(std::u16string text, int id) { m_entries.push_back({std::move(text), id}); }
    /// Sorts the texts; findIn() needs it.
    void finish();
    /// Appends the id of each member for each of its occurrences in that text, unsorted.
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
