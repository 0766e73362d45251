#include "cli/shown/Text.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace qo::cli
{
namespace
{
/// The character at the front of the text and its length in bytes; bytes that are no UTF-8 count
/// one by one.
char32_t firstCharacter(std::string_view text, std::size_t& length)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (lead >= 0x80 && (lead < 0xC2 || lead > 0xF4 || length > text.size()))
        length = 1;
    if (length == 1)
        return lead;
    char32_t c = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
        c = c << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    return c;
}

std::size_t columns(char32_t c)
{
    const bool isCombining = c >= 0x300 && c < 0x370;
    const bool isWide = (c >= 0x1100 && c < 0x1160) || (c >= 0x2E80 && c < 0xA4D0) ||
                        (c >= 0xAC00 && c < 0xD7A4) || (c >= 0xF900 && c < 0xFB00) ||
                        (c >= 0xFE30 && c < 0xFE70) || (c >= 0xFF00 && c < 0xFF61) ||
                        (c >= 0x1F300 && c < 0x1FB00) || (c >= 0x20000 && c < 0x40000);
    return isCombining ? 0 : isWide ? 2 : 1;
}

/// The longest end of a text that takes no more than that many columns.
std::string_view endOfWidth(std::string_view text, std::size_t width)
{
    std::size_t left = textWidth(text);
    while (left > width)
    {
        std::size_t length = 0;
        left -= columns(firstCharacter(text, length));
        text.remove_prefix(length);
    }
    return text;
}
} // namespace

std::string durationText(std::int64_t milliseconds)
{
    const std::int64_t seconds = milliseconds / 1000;
    char text[48];
    if (seconds >= 3600)
        std::snprintf(text,
                      sizeof(text),
                      "%lld:%02lld:%02lld",
                      static_cast<long long>(seconds / 3600),
                      static_cast<long long>(seconds / 60 % 60),
                      static_cast<long long>(seconds % 60));
    else
        std::snprintf(text,
                      sizeof(text),
                      "%lld:%02lld",
                      static_cast<long long>(seconds / 60),
                      static_cast<long long>(seconds % 60));
    return text;
}

std::string secondsText(double seconds)
{
    char text[48];
    std::snprintf(text, sizeof(text), "%.3f", seconds);
    return text;
}

std::string sizeText(std::int64_t bytes)
{
    constexpr const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    double value = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < std::size(units))
    {
        value /= 1024;
        ++unit;
    }
    char text[48];
    std::snprintf(text, sizeof(text), unit == 0 ? "%.0f %s" : "%.1f %s", value, units[unit]);
    return text;
}

std::string isoTime(const FILETIME& time)
{
    if (toTicks(time) == 0)
        return {};
    const CalendarTime utc = utcTime(time);
    const std::int64_t seconds = toUnixSeconds(time);
    const std::int64_t ticks = toTicks(time) - unixEpochTicks - seconds * ticksPerSecond;
    // Long lists have two of these in each row.
    std::string text = "0000-00-00T00:00:00.0000000Z";
    const auto put = [&text](std::size_t end, std::int64_t number)
    {
        for (; number > 0; number /= 10)
            text[--end] = static_cast<char>('0' + number % 10);
    };
    put(4, utc.year);
    put(7, utc.month);
    put(10, utc.day);
    put(13, utc.hour);
    put(16, utc.minute);
    put(19, utc.second);
    put(27, ticks);
    return text;
}

std::string localTimeText(const FILETIME& time)
{
    const std::time_t seconds = toUnixSeconds(time);
    std::tm local{};
    char text[64];
    if (toTicks(time) == 0 || !::localtime_r(&seconds, &local) ||
        std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local) == 0)
        return "-";
    return text;
}

std::string countText(std::int64_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::size_t textWidth(std::string_view text)
{
    std::size_t width = 0;
    while (!text.empty())
    {
        std::size_t length = 0;
        width += columns(firstCharacter(text, length));
        text.remove_prefix(length);
    }
    return width;
}

std::string cutToWidth(std::string_view text, std::size_t width)
{
    std::size_t used = 0;
    std::size_t at = 0;
    while (at < text.size())
    {
        std::size_t length = 0;
        used += columns(firstCharacter(text.substr(at), length));
        if (used > width)
            break;
        at += length;
    }
    return std::string(text.substr(0, at));
}

std::string shortened(std::string_view text, std::size_t width)
{
    if (textWidth(text) <= width)
        return std::string(text);
    return width == 0 ? std::string() : cutToWidth(text, width - 1) + "…";
}

std::string shortenedPath(std::string_view path, std::size_t width)
{
    if (textWidth(path) <= width)
        return std::string(path);
    if (width < 3)
        return shortened(path, width);
    const std::size_t room = width - 1;
    const std::string_view name = path.substr(path.rfind('/') + 1);
    if (textWidth(name) > room)
    {
        const std::string start = cutToWidth(name, room / 2);
        return start + "…" + std::string(endOfWidth(name, room - textWidth(start)));
    }
    const std::string_view end = endOfWidth(path, room);
    const std::string_view whole = end.substr(std::min(end.find('/'), end.size()));
    // Where whole folders would leave a third of the room empty, a part of one is shown.
    const bool isWhole = textWidth(whole) * 3 >= room * 2;
    return "…" + std::string(isWhole ? whole : end);
}

std::string padded(std::string_view text, std::size_t width)
{
    std::string result = cutToWidth(text, width);
    result.append(width - textWidth(result), ' ');
    return result;
}

std::string
wrapped(const std::string& start, std::string_view words, std::size_t indent, std::size_t columns)
{
    std::string text = start;
    std::size_t used = textWidth(start);
    bool isFirst = true;
    while (!words.empty())
    {
        const std::size_t end = std::min(words.find(' '), words.size());
        const std::string_view word = words.substr(0, end);
        words.remove_prefix(std::min(end + 1, words.size()));
        const std::size_t width = textWidth(word);
        if (!isFirst && used + 1 + width > columns)
        {
            text += "\n" + std::string(indent, ' ');
            used = indent;
            isFirst = true;
        }
        text += (isFirst ? "" : " ") + std::string(word);
        used += width + (isFirst ? 0 : 1);
        isFirst = false;
    }
    return text + "\n";
}

std::string oneLine(const CString& text)
{
    CString line;
    for (const char16_t unit : text.view())
    {
        const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
        line += isControl ? u' ' : unit;
    }
    return toUtf8(line);
}

std::string fileUri(const std::string& path)
{
    return "file://" + percentEncoded(path, "/-._~");
}
} // namespace qo::cli
