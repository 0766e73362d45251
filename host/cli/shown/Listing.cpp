#include "cli/shown/Listing.h"

#include "cli/shown/Text.h"

#include <algorithm>
#include <utility>

namespace qo::cli
{
namespace
{
/// A value of a record as it stands between tabs.
std::string plainText(const Json& value)
{
    if (value.is_null())
        return {};
    if (value.is_string())
        return oneLine(fromUtf8(value.get<std::string>()));
    if (!value.is_array())
        return value.dump();
    std::string text;
    for (const Json& each : value)
        text += (text.empty() ? "" : ",") + plainText(each);
    return text;
}

std::string shortened(const std::string& text, std::size_t widest)
{
    return widest == 0 || textWidth(text) <= widest ? text : cutToWidth(text, widest - 1) + "…";
}
} // namespace

Listing::Listing(CommandLine& line,
                 bool isLong,
                 std::vector<std::string> names,
                 std::vector<Column> columns)
    : m_line(line)
    , m_isLong(isLong)
    , m_names(std::move(names))
    , m_columns(std::move(columns))
    , m_widths(m_columns.size(), 0)
{
    if (!m_isLong || m_line.json)
        return;
    std::string header;
    for (const std::string& name : m_names)
        header += (header.empty() ? "" : "\t") + name;
    m_line.out.line(header);
}

void Listing::addCells(std::vector<std::string> cells)
{
    for (std::size_t i = 0; i < m_columns.size() && i < cells.size(); ++i)
    {
        cells[i] = shortened(cells[i], m_columns[i].widest);
        m_widths[i] = std::max(m_widths[i], textWidth(cells[i]));
    }
    m_rows.push_back(std::move(cells));
}

void Listing::addRecord(const Json& record, const std::string& path)
{
    if (m_line.json)
        return m_line.out.line(dump(record));
    std::string row;
    for (const std::string& name : m_names)
    {
        row += &name == &m_names.front() ? "" : "\t";
        row += name == "path" ? m_line.out.foreign(path) : plainText(record.at(name));
    }
    m_line.out.line(row);
}

std::string Listing::rowText(const std::vector<std::string>& cells) const
{
    std::string text;
    std::size_t gap = 0;
    for (std::size_t i = 0; i < cells.size() && i < m_columns.size(); ++i)
    {
        // A column that is empty in every row takes no room.
        if (m_widths[i] == 0)
            continue;
        const std::size_t missing = m_widths[i] - textWidth(cells[i]);
        const bool toTheRight = m_columns[i].toTheRight;
        if (!cells[i].empty())
        {
            text.append(gap + (toTheRight ? missing : 0), ' ');
            text += cells[i];
            gap = toTheRight ? 0 : missing;
        }
        else
            gap += m_widths[i];
        gap += 2;
    }
    return text;
}

void Listing::finish()
{
    for (const std::vector<std::string>& cells : m_rows)
    {
        if (m_line.out.isClosed())
            break;
        m_line.out.line(rowText(cells));
    }
    m_rows.clear();
}
} // namespace qo::cli
