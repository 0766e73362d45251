#include "core/query/QueryRange.h"

#include "core/base/HostError.h"

#include <QoKernel/Kernel.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <optional>
#include <string_view>

namespace qo::host
{
namespace
{
using Numbers = std::optional<QueryRange>;

/// The whole text as a number without a sign.
std::optional<std::int64_t> wholeNumber(std::string_view text)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || text[0] == '-' || error != std::errc() || end != text.data() + text.size())
        return {};
    return number;
}

Numbers plainNumber(std::string_view text)
{
    const auto number = wholeNumber(text);
    return number ? Numbers({*number, *number}) : Numbers();
}

/// "231", "3:51" or "1:02:03"; the whole second.
Numbers lengthOf(std::string_view text)
{
    constexpr std::int64_t most = 1'000'000'000;
    std::int64_t seconds = 0;
    for (int part = 0; part < 3; ++part)
    {
        const std::size_t colon = text.find(':');
        const auto number = wholeNumber(text.substr(0, colon));
        if (!number || *number > most || (part > 0 && *number > 59))
            return {};
        seconds = seconds * 60 + *number;
        if (colon == std::string_view::npos)
            return QueryRange{seconds * 1000, seconds * 1000 + 999};
        text.remove_prefix(colon + 1);
    }
    return {};
}

/// "500", "10M", "1.5G", with "B" or "iB" after the unit if one likes. What rounds down to the same
/// number of units is the same size.
Numbers sizeOf(std::string_view text)
{
    for (const std::string_view end : {"iB", "B", "b"})
    {
        if (text.ends_with(end))
        {
            text.remove_suffix(end.size());
            break;
        }
    }
    std::int64_t unit = 1;
    constexpr std::string_view units = "KMGT";
    if (!text.empty())
    {
        const std::size_t index = units.find(text.back() & ~0x20);
        if (index != std::string_view::npos)
        {
            unit = std::int64_t(1) << (10 * (index + 1));
            text.remove_suffix(1);
        }
    }
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        !(number >= 0 && number * static_cast<double>(unit) <= 9e18)) // nor "nan"
        return {};
    const auto bytes = static_cast<std::int64_t>(number * static_cast<double>(unit));
    return QueryRange{bytes, bytes + unit - 1};
}

/// "4" or "3.5" stars, as half stars.
Numbers starsOf(std::string_view text)
{
    const bool hasHalf = text.ends_with(".5");
    if (hasHalf)
        text.remove_suffix(2);
    const auto number = wholeNumber(text);
    if (!number || *number > 5)
        return {};
    const std::int64_t halfStars = *number * 2 + (hasHalf ? 1 : 0);
    return QueryRange{halfStars, halfStars};
}

std::int64_t ticksOf(std::tm time)
{
    time.tm_isdst = -1;
    constexpr std::time_t start = -11'644'473'600; // 1601, with which ticks begin
    const std::time_t seconds = std::max(std::mktime(&time), start);
    return toTicks(fromUnixTime(seconds, 0));
}

/// The part of a date or time after its sign, as "05" of "-05".
std::optional<int>
partOf(std::string_view& text, char sign, std::size_t digits, int least, int most)
{
    if (sign != 0)
    {
        if (text.empty() || text[0] != sign)
            return {};
        text.remove_prefix(1);
    }
    const auto number = wholeNumber(text.substr(0, digits));
    if (text.size() < digits || !number || *number < least || *number > most)
        return {};
    text.remove_prefix(digits);
    return static_cast<int>(*number);
}

/// "2024", "2024-05", "2024-05-31", "2024-05-31T18:30" or with seconds: from its first to its last
/// moment.
Numbers dateOf(std::string_view text)
{
    std::tm start{};
    start.tm_mday = 1;
    struct Part
    {
        int std::tm::*member;
        char sign;
        std::size_t digits;
        int least;
        int most;
        int base;
    };
    static constexpr std::array<Part, 6> parts = {{{&std::tm::tm_year, 0, 4, 1601, 9999, -1900},
                                                   {&std::tm::tm_mon, '-', 2, 1, 12, -1},
                                                   {&std::tm::tm_mday, '-', 2, 1, 31, 0},
                                                   {&std::tm::tm_hour, 'T', 2, 0, 23, 0},
                                                   {&std::tm::tm_min, ':', 2, 0, 59, 0},
                                                   {&std::tm::tm_sec, ':', 2, 0, 59, 0}}};
    std::size_t known = 0;
    for (; known < parts.size() && !text.empty(); ++known)
    {
        const Part& part = parts[known];
        const auto number = partOf(text, part.sign, part.digits, part.least, part.most);
        if (!number)
            return {};
        start.*part.member = *number + part.base;
    }
    if (known == 0)
        return {};
    std::tm checked = start;
    checked.tm_isdst = -1;
    std::mktime(&checked);
    if (checked.tm_mday != start.tm_mday)
        return {}; // the month has no such day
    std::tm end = start;
    ++(end.*parts[known - 1].member);
    return QueryRange{ticksOf(start), ticksOf(end) - 1};
}

/// "-7d": that long before now.
std::optional<std::int64_t> timeAgo(std::string_view text, std::int64_t now)
{
    if (text.size() < 3 || text[0] != '-')
        return {};
    const auto number = wholeNumber(text.substr(1, text.size() - 2));
    if (!number || *number > 100'000)
        return {};
    const int count = static_cast<int>(*number);
    const std::time_t seconds = toUnixSeconds(fromTicks(now));
    std::tm time{};
    ::localtime_r(&seconds, &time);
    switch (text.back())
    {
    case 'h':
        return now - count * 3600 * ticksPerSecond;
    case 'd':
        time.tm_mday -= count;
        break;
    case 'w':
        time.tm_mday -= 7 * count;
        break;
    case 'm':
        time.tm_mon -= count;
        break;
    case 'y':
        time.tm_year -= count;
        break;
    default:
        return {};
    }
    return ticksOf(time);
}

Numbers timeOf(std::string_view text, std::int64_t now)
{
    if (const auto ago = timeAgo(text, now))
        return QueryRange{*ago, *ago};
    return dateOf(text);
}

Numbers valueOf(QueryKind kind, std::string_view text, std::int64_t now)
{
    switch (kind)
    {
    case QueryKind::length:
        return lengthOf(text);
    case QueryKind::size:
        return sizeOf(text);
    case QueryKind::time:
        return timeOf(text, now);
    case QueryKind::stars:
        return starsOf(text);
    default:
        return plainNumber(text);
    }
}

const char* waysToWrite(QueryKind kind)
{
    switch (kind)
    {
    case QueryKind::length:
        return "3:51, 3:00.., ..1:00:00 or 3:00..4:30";
    case QueryKind::size:
        return "10M.., ..500K or 1M..2M";
    case QueryKind::stars:
        return "4, 3.5.., ..2 or 3..4.5";
    case QueryKind::time:
        return "2024, 2024-05, 2024-05-31, 2023..2024 or -7d.. (h, d, w, m, y)";
    default:
        return "1969, 1960..1969, 1960.. or ..1969";
    }
}

[[noreturn]] void refuse(QueryKind kind, const std::string& part, const std::string& typed)
{
    throw HostError(ExitCode::usage,
                    "in \"" + typed + "\", \"" + part + "\" cannot be read; write " +
                        waysToWrite(kind));
}
} // namespace

QueryRange
parseRange(QueryKind kind, const std::string& value, const std::string& typed, std::int64_t now)
{
    const std::size_t dots = value.find("..");
    if (dots == std::string::npos)
    {
        const Numbers single = valueOf(kind, value, now);
        if (!single)
            refuse(kind, value, typed);
        const bool isAgo = kind == QueryKind::time && value.starts_with('-');
        return isAgo ? QueryRange{single->first, now} : *single;
    }
    QueryRange range;
    const std::string first = value.substr(0, dots);
    const std::string last = value.substr(dots + 2);
    if (first.empty() && last.empty())
        refuse(kind, value, typed);
    if (!first.empty())
    {
        const Numbers numbers = valueOf(kind, first, now);
        if (!numbers)
            refuse(kind, first, typed);
        range.first = numbers->first;
    }
    if (!last.empty())
    {
        const Numbers numbers = valueOf(kind, last, now);
        if (!numbers)
            refuse(kind, last, typed);
        // "..10M" ends at exactly that size, "..3:00" with that second.
        range.last = kind == QueryKind::size ? numbers->first : numbers->last;
    }
    if (range.first > range.last)
        throw HostError(ExitCode::usage, "in \"" + typed + "\", the range ends before it begins");
    return range;
}
} // namespace qo::host
