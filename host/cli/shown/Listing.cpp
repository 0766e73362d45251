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

constexpr std::size_t gapWidth = 2;
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

void Listing::writeAtOnce()
{
    constexpr std::size_t numberWidth = 7;
    constexpr std::size_t leastText = 16;
    constexpr std::size_t widestText = 40;
    if (m_line.out.columns() == 0)
        return;
    m_writesAtOnce = true;
    const auto countOf = [this](Column kind)
    { return static_cast<std::size_t>(std::count(m_columns.begin(), m_columns.end(), kind)); };
    const std::size_t taken =
        gapWidth * (m_columns.size() - 1) + numberWidth * countOf(Column::number);
    const std::size_t rest = m_line.out.columns() - std::min(m_line.out.columns(), taken);
    const std::size_t texts = countOf(Column::text);
    const std::size_t text = texts == 0 ? 0 : std::clamp(rest / 3 / texts, leastText, widestText);
    const std::size_t others = m_columns.size() - texts - countOf(Column::number);
    const std::size_t path =
        others == 0 ? 0 : std::max((rest - std::min(rest, text * texts)) / others, leastText);
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        m_widths[i] = m_columns[i] == Column::number ? numberWidth
                      : m_columns[i] == Column::text ? text
                                                     : path;
}

void Listing::addCells(std::vector<std::string> cells)
{
    for (std::string& cell : cells)
        cell = harmless(cell);
    if (m_writesAtOnce)
        return m_line.out.line(rowText(std::move(cells)));
    for (std::size_t i = 0; i < m_columns.size() && i < cells.size(); ++i)
        m_widths[i] = std::max(m_widths[i], textWidth(cells[i]));
    m_rows.push_back(std::move(cells));
}

void Listing::addRecord(const Json& record, const std::string& path)
{
    if (m_line.json)
        return m_line.out.line(host::dump(record));
    std::string row;
    for (const std::string& name : m_names)
    {
        row += &name == &m_names.front() ? "" : "\t";
        row += name == "path" ? harmless(path) : plainText(record.at(name));
    }
    m_line.out.line(row);
}

std::size_t Listing::rowWidth() const
{
    std::size_t sum = 0;
    for (const std::size_t width : m_widths)
        sum += width == 0 ? 0 : width + gapWidth;
    return sum == 0 ? 0 : sum - gapWidth;
}

/// Takes columns of this kind away, the widest one first, until the rows fit or all are at their
/// least.
void Listing::narrow(Column kind, std::size_t least)
{
    while (rowWidth() > m_line.out.columns())
    {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < m_columns.size(); ++i)
        {
            if (m_columns[i] == kind && (!widest || m_widths[i] > *widest))
                widest = &m_widths[i];
        }
        if (!widest || *widest <= least)
            return;
        --*widest;
    }
}

/// Example of 80 columns: a title of 30, an artist of 20 and a path of 50 become 14, 14 and 48: the
/// texts first lose what is above sixteen, then the path what is above 48, then the texts more.
void Listing::fit()
{
    const std::size_t columns = m_line.out.columns();
    if (columns == 0)
        return;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
    {
        if (m_columns[i] != Column::name)
            m_widths[i] = std::min(m_widths[i], columns);
    }
    narrow(Column::text, 16);
    narrow(Column::path, columns * 3 / 5);
    narrow(Column::text, 9);
    narrow(Column::number, 12);
    narrow(Column::path, 12);
}

std::string Listing::rowText(std::vector<std::string> cells) const
{
    std::string text;
    std::size_t gap = 0;
    for (std::size_t i = 0; i < cells.size() && i < m_columns.size(); ++i)
    {
        // A column that is empty in every row takes no room.
        if (m_widths[i] == 0)
            continue;
        if (m_columns[i] != Column::name)
            cells[i] = m_columns[i] == Column::path ? shortenedPath(cells[i], m_widths[i])
                                                    : shortened(cells[i], m_widths[i]);
        const std::size_t width = textWidth(cells[i]);
        const std::size_t missing = m_widths[i] - std::min(width, m_widths[i]);
        const bool toTheRight = m_columns[i] == Column::number;
        if (!cells[i].empty())
        {
            text.append(gap + (toTheRight ? missing : 0), ' ');
            text += cells[i];
            gap = toTheRight ? 0 : missing;
        }
        else
            gap += m_widths[i];
        gap += gapWidth;
    }
    return text;
}

void Listing::finish()
{
    fit();
    for (std::vector<std::string>& cells : m_rows)
    {
        if (m_line.out.isClosed())
            break;
        m_line.out.line(rowText(std::move(cells)));
    }
    m_rows.clear();
}
} // namespace qo::cli
