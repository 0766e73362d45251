#include "Analyze/TextSet.h"

#include <algorithm>

namespace qo
{
void TextSet::finish()
{
    std::sort(m_entries.begin(),
              m_entries.end(),
              [](const Entry& a, const Entry& b) { return a.text < b.text; });
}

void TextSet::findIn(std::u16string_view text, std::vector<int>& ids) const
{
    if (m_entries.empty())
        return;
    for (std::size_t i = 0; i < text.size(); ++i)
        findAtStartOf(text.substr(i), ids);
}

void TextSet::findAtStartOf(std::u16string_view text, std::vector<int>& ids) const
{
    Cursor low = m_entries.begin();
    Cursor high = m_entries.end();
    for (std::size_t depth = 0; depth < text.size() && low != high; ++depth)
    {
        // Every text in the range begins with the units passed so far and is at least one unit
        // longer.
        const char16_t unit = text[depth];
        const auto isBelow = [&](const Entry& entry, char16_t c) { return entry.text[depth] < c; };
        const auto isAbove = [&](char16_t c, const Entry& entry) { return c < entry.text[depth]; };
        if (low->text[depth] != unit)
            low = std::lower_bound(low, high, unit, isBelow);
        if (low != high && (high - 1)->text[depth] != unit)
            high = std::upper_bound(low, high, unit, isAbove);
        for (; low != high && low->text.size() == depth + 1; ++low)
            ids.push_back(low->id);
    }
}
} // namespace qo
