#include "core/session/SettingText.h"

#include <algorithm>
#include <cstdio>

namespace qo::host
{
namespace
{
bool isSurrogate(char16_t c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

bool isPair(std::u16string_view text, std::size_t i)
{
    return i + 1 < text.size() && text[i] >= 0xD800 && text[i] <= 0xDBFF && text[i + 1] >= 0xDC00 &&
           text[i + 1] <= 0xDFFF;
}

void appendCode(std::string& out, char16_t c)
{
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04x", static_cast<unsigned>(c));
    out += code;
}

void appendEscaped(std::string& out, char16_t c, bool atEdge, bool atStart)
{
    switch (c)
    {
    case u'\n':
        out += "\\n";
        return;
    case u'\r':
        out += "\\r";
        return;
    case u'\t':
        out += "\\t";
        return;
    case u'\\':
        out += "\\\\";
        return;
    case u'=':
        out += "\\=";
        return;
    case u' ':
        out += atEdge ? "\\s" : " ";
        return;
    default:
        break;
    }
    // A line that starts with one of these would be taken for a section or a comment.
    const bool isSpecial = atStart && (c == u'[' || c == u'#' || c == 0xFEFF);
    if (c < 0x20 || c == 0x7F || isSurrogate(c) || isSpecial)
        appendCode(out, c);
    else
        out += static_cast<char>(c);
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// Reads the four digits after "\u"; false when there are fewer.
bool readCode(std::string_view line, std::size_t at, char16_t& c)
{
    unsigned value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
    {
        const int digit = i < line.size() ? hexDigit(line[i]) : -1;
        if (digit < 0)
            return false;
        value = value << 4 | static_cast<unsigned>(digit);
    }
    c = static_cast<char16_t>(value);
    return true;
}
} // namespace

std::string escapeSetting(const CString& text)
{
    const std::u16string_view units = text.view();
    std::string out;
    out.reserve(units.size() + 8);
    std::size_t i = 0;
    while (i < units.size())
    {
        std::size_t plain = i;
        while (plain < units.size() && units[plain] >= 0x80 &&
               (!isSurrogate(units[plain]) || isPair(units, plain)) && units[plain] != 0xFEFF)
            plain += isSurrogate(units[plain]) ? 2 : 1;
        if (plain > i)
            out += toUtf8(units.substr(i, plain - i));
        else
        {
            const bool isLast = i + 1 == units.size();
            if (units[i] == 0xFEFF && i > 0)
                out += toUtf8(units.substr(i, 1));
            else
                appendEscaped(out, units[i], i == 0 || isLast, i == 0);
            plain = i + 1;
        }
        i = plain;
    }
    return out;
}

bool unescapeSetting(std::string_view line, CString& text)
{
    text.Empty();
    std::size_t i = 0;
    while (i < line.size())
    {
        const std::size_t escape = std::min(line.find('\\', i), line.size());
        const std::string_view plain = line.substr(i, escape - i);
        const CString piece = fromUtf8(plain);
        if (toUtf8(piece) != plain)
            return false;
        text += piece;
        if (escape == line.size())
            return true;
        if (escape + 1 == line.size())
            return false;
        char16_t c = 0;
        i = escape + 2;
        switch (line[escape + 1])
        {
        case 'n':
            c = u'\n';
            break;
        case 'r':
            c = u'\r';
            break;
        case 't':
            c = u'\t';
            break;
        case 's':
            c = u' ';
            break;
        case '\\':
            c = u'\\';
            break;
        case '=':
            c = u'=';
            break;
        case 'u':
            if (!readCode(line, i, c))
                return false;
            i += 4;
            break;
        default:
            return false;
        }
        text += CString(c);
    }
    return true;
}
} // namespace qo::host
