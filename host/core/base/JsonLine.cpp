#include "core/base/JsonLine.h"

#include <algorithm>
#include <charconv>
#include <type_traits>

namespace qo::host
{
void JsonLine::clear()
{
    m_line = "{";
}

void JsonLine::begin(std::string_view name)
{
    if (m_line.size() > 1)
        m_line += ',';
    m_line += '"';
    m_line += name;
    m_line += "\":";
}

template <class Char>
void JsonLine::quote(std::basic_string_view<Char> value)
{
    // Most texts hold nothing that must be written otherwise.
    const auto isPlain = [](Char c) { return c >= 0x20 && c < 0x80 && c != '"' && c != '\\'; };
    m_line += '"';
    for (std::size_t i = 0; i < value.size();)
    {
        std::size_t end = i;
        while (end < value.size() && isPlain(value[end]))
            ++end;
        const std::size_t length = m_line.size();
        m_line.resize(length + end - i);
        std::transform(value.begin() + static_cast<std::ptrdiff_t>(i),
                       value.begin() + static_cast<std::ptrdiff_t>(end),
                       m_line.begin() + static_cast<std::ptrdiff_t>(length),
                       [](Char c) { return static_cast<char>(c); });
        i = end;
        while (end < value.size() && static_cast<std::make_unsigned_t<Char>>(value[end]) >= 0x80)
            ++end;
        if constexpr (sizeof(Char) == 1)
            m_line.append(value.substr(i, end - i));
        else if (end > i)
            m_line += toUtf8(value.substr(i, end - i));
        if (end == i && i < value.size())
            escape(static_cast<char>(value[end++]));
        i = end;
    }
    m_line += '"';
}

void JsonLine::escape(char c)
{
    constexpr std::string_view plain = "\"\\\b\f\n\r\t";
    constexpr std::string_view escaped = "\"\\bfnrt";
    constexpr std::string_view digits = "0123456789abcdef";
    if (const std::size_t place = plain.find(c); place != plain.npos)
        (m_line += '\\') += escaped[place];
    else
        ((m_line += "\\u00") += digits[static_cast<std::size_t>(c) >> 4]) += digits[c & 15];
}

void JsonLine::text(std::string_view name, std::u16string_view value)
{
    begin(name);
    quote(value);
}

void JsonLine::text(std::string_view name, std::string_view value)
{
    if (!isUtf8(value))
        return text(name, fromUtf8(value).view());
    begin(name);
    quote(value);
}

void JsonLine::number(std::string_view name, std::int64_t value)
{
    begin(name);
    char digits[24];
    m_line.append(digits, std::to_chars(digits, std::end(digits), value).ptr);
}

void JsonLine::raw(std::string_view name, std::string_view value)
{
    begin(name);
    m_line += value;
}

std::string_view JsonLine::end()
{
    m_line += '}';
    return m_line;
}
} // namespace qo::host
