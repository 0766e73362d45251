#pragma once

#include "UserView/UVViewItem.h"
#include "support/Print.h"

#include <algorithm>
#include <string>
#include <vector>

/// "Pop 2+1 x { ... }": name, own and foreign files, the mark (x checked, - mixed) and what is
/// below.
inline std::string textOf(const CUVViewItem& item, bool sorted = false);

/// sorted: in the order of the texts, for lists whose order depends on how they came about.
inline std::string textOf(const CUVViewItemList& items, bool sorted = false)
{
    std::vector<std::string> lines;
    for (const CUVViewItem* item : items)
        lines.push_back(textOf(*item, sorted));
    if (sorted)
        std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines)
        text += (text.empty() ? "" : ", ") + line;
    return text;
}

inline std::string textOf(const CUVViewItem& item, bool sorted)
{
    const char* const marks[] = {"?", "", " x", " -"};
    std::string text = qo::toUtf8(item.getName()) + " " + std::to_string(item.getOwnFileCount()) +
                       "+" + std::to_string(item.getForeignFileCount()) +
                       marks[item.getCheckState()];
    if (!item.getSubItems().IsEmpty())
        text += " { " + textOf(item.getSubItems(), sorted) + " }";
    return text;
}
