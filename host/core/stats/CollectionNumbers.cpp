#include "core/stats/CollectionNumbers.h"

#include "core/collection/FileFields.h"
#include "core/query/QueryRecord.h"

#include <algorithm>
#include <cstdio>

namespace qo::host
{
namespace
{
/// Local time, by which people count months.
std::string monthOf(const FILETIME& time)
{
    const std::time_t seconds = toUnixSeconds(time);
    std::tm parts{};
    char text[32];
    if (toTicks(time) == 0 || !::localtime_r(&seconds, &parts) ||
        std::strftime(text, sizeof(text), "%Y-%m", &parts) == 0)
        return {};
    return text;
}

std::string decadeOf(std::int64_t year)
{
    return year >= 1000 && year <= 9999 ? std::to_string(year / 10 * 10) + "s" : std::string();
}

/// "128-191": the steps in which encoders are set.
std::string bitrateOf(std::int64_t bitrate)
{
    constexpr std::int64_t bounds[] = {1, 64, 128, 192, 256, 320, 500, 1000};
    const auto* const above = std::ranges::upper_bound(bounds, bitrate);
    if (above == std::begin(bounds))
        return {};
    const std::string low = std::to_string(above[-1]);
    return above == std::end(bounds) ? low + " and more" : low + "-" + std::to_string(*above - 1);
}
} // namespace

void FileSum::add(const QoFileDbItem& item)
{
    ++files;
    duration += std::max(item.duration, 0);
    size += item.size;
}

class CollectionNumbers::Counter
{
public:
    void add(const std::string& name, const QoFileDbItem& item)
    {
        CString key = fromUtf8(name);
        key.MakeLower();
        Row& row = m_rows.try_emplace(key, Row{name, {}}).first->second;
        row.sum.add(item);
    }
    std::vector<Row> mostFirst() const
    {
        std::vector<Row> rows = byValue();
        std::ranges::stable_sort(
            rows, [](const Row& a, const Row& b) { return a.sum.files > b.sum.files; });
        return rows;
    }
    /// As numbers where names begin with them; files without a value come last.
    std::vector<Row> byValue() const
    {
        std::vector<Row> rows;
        for (const auto& [key, row] : m_rows)
            rows.push_back(row);
        std::ranges::stable_sort(rows,
                                 [](const Row& a, const Row& b)
                                 {
                                     if (a.name.empty() != b.name.empty())
                                         return b.name.empty();
                                     return std::atoi(a.name.c_str()) < std::atoi(b.name.c_str());
                                 });
        return rows;
    }

private:
    std::map<CString, Row> m_rows;
};

CollectionNumbers::CollectionNumbers(const QoFileDbItemArray& files)
{
    Counter kinds;
    Counter formats;
    Counter decades;
    Counter genres;
    Counter bitrates;
    Counter artists;
    Counter months;
    QueryFacts facts;
    QueryRecord record(facts);
    for (const QoFileDbItemPtr& item : files)
    {
        record.look(*item);
        m_all.add(*item);
        const std::string kind = toUtf8(record.text(QueryField::kind));
        kinds.add(kind, *item);
        formats.add(toUtf8(record.foldedText(QueryField::format)), *item);
        if (kind == "picture" || kind == "text")
        {
            ++m_companions;
            m_unplaced += record.is(QueryField::unplaced) ? 1 : 0;
        }
        if (!CQoUtils::isMusicFilePath(item->path))
            continue;
        ++m_music;
        m_untagged += isUntagged(*item) ? 1 : 0;
        decades.add(decadeOf(record.number(QueryField::year).value_or(0)), *item);
        genres.add(toUtf8(item->genre), *item);
        bitrates.add(bitrateOf(item->bitrate), *item);
        artists.add(toUtf8(item->artist), *item);
        months.add(monthOf(item->createTime), *item);
    }
    m_tables = {{"kinds", "kind", kinds.mostFirst()},
                {"formats", "format", formats.mostFirst()},
                {"decades", "decade", decades.byValue()},
                {"genres", "genre", genres.mostFirst()},
                {"bitrates", "kbit/s", bitrates.byValue()},
                {"artists", "artist", artists.mostFirst()},
                {"months", "month", months.byValue()}};
}
} // namespace qo::host
