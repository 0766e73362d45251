#include "core/stats/CollectionNumbers.h"

#include <algorithm>
#include <cstdio>

namespace qo::host
{
namespace
{
constexpr int rowHeight = 18;
constexpr int nameWidth = 180;
constexpr int barWidth = 420;

/// A text between tags. Control characters cannot stand in XML at all.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return result;
}

std::string textAt(int x, int y, const char* style, const std::string& text)
{
    return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" class=\"" +
           style + "\">" + escaped(text) + "</text>\n";
}
} // namespace

std::string svgOf(const CollectionNumbers& numbers, std::size_t mostRows)
{
    std::string body;
    int y = 0;
    for (const CollectionNumbers::Table& table : numbers.tables())
    {
        y += 2 * rowHeight;
        body += textAt(0, y, "heading", table.heading);
        std::int64_t most = 1;
        for (const CollectionNumbers::Row& row : table.rows)
            most = std::max(most, row.sum.files);
        const std::size_t count = std::min(table.rows.size(), mostRows);
        for (std::size_t i = 0; i < count; ++i)
        {
            const CollectionNumbers::Row& row = table.rows[i];
            y += rowHeight;
            const auto width = static_cast<int>(row.sum.files * barWidth / most);
            body += textAt(nameWidth - 8, y, "name", row.name.empty() ? "[unknown]" : row.name);
            body += "<rect x=\"" + std::to_string(nameWidth) + "\" y=\"" +
                    std::to_string(y - rowHeight + 5) + "\" width=\"" +
                    std::to_string(std::max(width, 1)) + "\" height=\"" +
                    std::to_string(rowHeight - 4) + "\"/>\n";
            body += textAt(nameWidth + width + 6, y, "count", std::to_string(row.sum.files));
        }
    }
    const std::string width = std::to_string(nameWidth + barWidth + 80);
    const std::string height = std::to_string(y + rowHeight);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
           "\" viewBox=\"0 0 " + width + " " + height +
           "\" font-family=\"sans-serif\" font-size=\"12\">\n"
           "<style>rect{fill:#4a7ab5}.heading{font-weight:bold}.name{text-anchor:end}"
           ".count{fill:#666}</style>\n"
           "<rect width=\"100%\" height=\"100%\" style=\"fill:white\"/>\n" +
           body + "</svg>\n";
}
} // namespace qo::host
