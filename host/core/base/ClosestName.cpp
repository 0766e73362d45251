#include "core/base/ClosestName.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace qo::host
{
namespace
{
CString lowered(CString text)
{
    text.MakeLower();
    return text;
}

/// How many letters have to be put in, taken out, replaced or changed for their neighbour; limit
/// when it is that or more.
std::size_t distance(std::u16string_view a, std::u16string_view b, std::size_t limit)
{
    const std::size_t difference = std::max(a.size(), b.size()) - std::min(a.size(), b.size());
    if (difference >= limit)
        return limit;
    // Row i has the distances of the first i letters of a from the beginnings of b.
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i)
    {
        std::vector<std::size_t> row(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j)
        {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        if (*std::min_element(row.begin(), row.end()) >= limit)
            return limit;
        beforeLast = std::exchange(last, std::move(row));
    }
    return std::min(last[b.size()], limit);
}
} // namespace

ClosestName::ClosestName(const CString& typed)
    : m_typed(lowered(typed))
    // Half of the letters may differ, or the name is another one.
    , m_bestCost(static_cast<std::size_t>(typed.GetLength()) / 2 + 1)
{
}

void ClosestName::look(const CString& name)
{
    if (name.IsEmpty() || m_typed.IsEmpty() || m_bestCost == 0)
        return;
    const CString lower = lowered(name);
    const bool holdsTyped = lower.view().find(m_typed.view()) != std::u16string_view::npos;
    const std::size_t cost = holdsTyped ? 0 : distance(m_typed.view(), lower.view(), m_bestCost);
    if (cost >= m_bestCost)
        return;
    m_bestCost = cost;
    m_best = name;
}

std::string listOf(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::string firstOf(const std::vector<std::string>& names, std::size_t total)
{
    const std::size_t others = total - names.size();
    return listOf(names) + (others > 0 ? " and " + std::to_string(others) + " more" : "");
}

std::string suggestionFor(const std::string& typed, const std::vector<std::string>& names)
{
    ClosestName closest(fromUtf8(typed));
    for (const std::string& name : names)
        closest.look(fromUtf8(name));
    return closest.best().IsEmpty() ? std::string()
                                    : "; did you mean \"" + toUtf8(closest.best()) + "\"?";
}

std::string suggestionOrList(const std::string& typed, const std::vector<std::string>& names)
{
    const std::string suggestion = suggestionFor(typed, names);
    return suggestion.empty() ? "; there are " + listOf(names) : suggestion;
}
} // namespace qo::host
