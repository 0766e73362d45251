#include "types/Format.h"

#include "types/CharClass.h"
#include "types/FilePath.h"
#include "types/String.h"
#include "types/Utf.h"

#include <charconv>
#include <cmath>
#include <string>

// parse() reads one directive, print...() write one argument of a kind by it, and formatTo() walks
// the format. Nothing here uses the C library's formatting: it depends on the locale and takes "%s"
// for bytes.

namespace qo
{
namespace
{
// Formats are fixed texts, but a wrong width or precision must not fill the memory.
constexpr int maxWidth = 4096;
constexpr int defaultPrecision = 6;

/// One directive of a format, such as "%-08.3d".
struct Directive
{
    bool leftAlign = false;
    bool zeroPad = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    int width = 0;
    int precision = -1;
    char16_t type = 0;
    const char16_t* end = nullptr; ///< after the type, or where the format ended
};

int parseNumber(const char16_t*& p)
{
    int value = 0;
    for (; isDigit(*p); ++p)
        value = value < maxWidth ? value * 10 + (*p - u'0') : value;
    return value < maxWidth ? value : maxWidth;
}

bool startsWith(const char16_t* p, std::u16string_view word)
{
    for (const char16_t c : word)
    {
        if (*p++ != c)
            return false;
    }
    return true;
}

void skipSize(const char16_t*& p)
{
    for (const std::u16string_view word : {u"I64", u"I32", u"ll", u"hh", u"l", u"h", u"z"})
    {
        if (startsWith(p, word))
        {
            p += word.size();
            return;
        }
    }
}

Directive parse(const char16_t* p)
{
    Directive d;
    for (bool flag = true; flag;)
    {
        switch (*p)
        {
        case u'-':
            d.leftAlign = true;
            break;
        case u'0':
            d.zeroPad = true;
            break;
        case u'+':
            d.plus = true;
            break;
        case u' ':
            d.blank = true;
            break;
        case u'#':
            d.alternate = true;
            break;
        default:
            flag = false;
            break;
        }
        p += flag ? 1 : 0;
    }
    d.width = parseNumber(p);
    if (*p == u'.')
    {
        ++p;
        d.precision = parseNumber(p);
    }
    skipSize(p);
    d.type = *p;
    d.end = *p ? p + 1 : p;
    return d;
}

/// Writes a sign or prefix and the body into a field of the directive's width.
void pad(CString& out,
         const Directive& d,
         std::u16string_view front,
         std::u16string_view body,
         bool zeros)
{
    const int length = static_cast<int>(front.size() + body.size());
    const int fill = d.width > length ? d.width - length : 0;
    if (fill > 0 && !d.leftAlign && !zeros)
        out += CString(u' ', fill);
    out.append(front);
    if (fill > 0 && !d.leftAlign && zeros)
        out += CString(u'0', fill);
    out.append(body);
    if (fill > 0 && d.leftAlign)
        out += CString(u' ', fill);
}

CString widen(std::string_view ascii)
{
    CString text;
    char16_t* units = text.GetBuffer(static_cast<int>(ascii.size()));
    for (const char c : ascii)
        *units++ = static_cast<char16_t>(static_cast<unsigned char>(c));
    text.ReleaseBuffer(static_cast<int>(ascii.size()));
    return text;
}

const char16_t* signOf(const Directive& d, bool negative)
{
    return negative ? u"-" : (d.plus ? u"+" : (d.blank ? u" " : u""));
}

void printInteger(
    CString& out, const Directive& d, std::uint64_t magnitude, const char16_t* front, int base)
{
    char digits[72];
    const auto end = std::to_chars(digits, digits + sizeof(digits), magnitude, base).ptr;
    for (char* c = digits; d.type == u'X' && c < end; ++c)
        *c = *c >= 'a' ? static_cast<char>(*c - 'a' + 'A') : *c;
    CString body = widen({digits, static_cast<std::size_t>(end - digits)});
    if (d.precision > body.GetLength())
        body = CString(u'0', d.precision - body.GetLength()) + body;
    pad(out, d, front, body.view(), d.zeroPad && d.precision < 0);
}

bool printNumber(CString& out, const Directive& d, const FormatArg& arg)
{
    if (!arg.isInteger())
        return false;
    if (d.type == u'd' || d.type == u'i')
    {
        const bool negative = arg.isNegative();
        const std::uint64_t magnitude =
            negative ? 0 - static_cast<std::uint64_t>(arg.signedValue()) : arg.unsignedValue();
        printInteger(out, d, magnitude, signOf(d, negative), 10);
    }
    else
    {
        const bool hex = d.type != u'u';
        const bool marked = hex && d.alternate && arg.unsignedValue() != 0;
        const char16_t* front = marked ? (d.type == u'X' ? u"0X" : u"0x") : u"";
        printInteger(out, d, arg.unsignedValue(), front, hex ? 16 : 10);
    }
    return true;
}

bool printReal(CString& out, const Directive& d, const FormatArg& arg)
{
    if (arg.kind() != FormatArg::Kind::real)
        return false;
    char digits[512 + 64];
    const int precision =
        d.precision < 0 ? defaultPrecision : (d.precision > 200 ? 200 : d.precision);
    const double magnitude = std::fabs(arg.real());
    const auto done = std::to_chars(
        digits, digits + sizeof(digits), magnitude, std::chars_format::fixed, precision);
    const CString body = widen({digits, static_cast<std::size_t>(done.ptr - digits)});
    pad(out, d, signOf(d, std::signbit(arg.real())), body.view(), d.zeroPad);
    return true;
}

bool printText(CString& out, const Directive& d, const FormatArg& arg)
{
    CString converted;
    std::u16string_view text;
    if (arg.kind() == FormatArg::Kind::narrowText && arg.pointer())
    {
        converted = fromUtf8(static_cast<const char*>(arg.pointer()));
        text = converted.view();
    }
    else if (arg.kind() == FormatArg::Kind::path)
    {
        converted = static_cast<const FilePath*>(arg.pointer())->text();
        text = converted.view();
    }
    else if (arg.kind() == FormatArg::Kind::text || arg.kind() == FormatArg::Kind::narrowText)
        text = arg.pointer() ? std::u16string_view(static_cast<const char16_t*>(arg.pointer()))
                             : u"(null)";
    else
        return false;
    if (d.precision >= 0)
        text = text.substr(0, static_cast<std::size_t>(d.precision));
    pad(out, d, {}, text, false);
    return true;
}

/// As upper-case hexadecimal digits with leading zeros.
bool printPointer(CString& out, const Directive& d, const FormatArg& arg)
{
    if (arg.kind() != FormatArg::Kind::pointer && arg.kind() != FormatArg::Kind::text &&
        arg.kind() != FormatArg::Kind::narrowText)
        return false;
    Directive fixed = d;
    fixed.type = u'X';
    fixed.precision = 2 * static_cast<int>(sizeof(void*));
    printInteger(out, fixed, reinterpret_cast<std::uintptr_t>(arg.pointer()), u"", 16);
    return true;
}

bool print(CString& out, const Directive& d, const FormatArg& arg)
{
    switch (d.type)
    {
    case u's':
        return printText(out, d, arg);
    case u'p':
        return printPointer(out, d, arg);
    case u'f':
        return printReal(out, d, arg);
    case u'c':
        if (arg.kind() != FormatArg::Kind::character && !arg.isInteger())
            return false;
        {
            const auto c = static_cast<char16_t>(arg.unsignedValue());
            pad(out, d, {}, {&c, 1}, false);
        }
        return true;
    default:
        return printNumber(out, d, arg);
    }
}

bool isKnown(char16_t type)
{
    return type && std::u16string_view(u"sdiuxXcpf").find(type) != std::u16string_view::npos;
}
} // namespace

FormatArg::FormatArg(const CString& text) noexcept : m_kind(Kind::text)
{
    m_value.pointer = text.GetString();
}

bool FormatArg::isInteger() const noexcept
{
    return m_kind == Kind::signedInt || m_kind == Kind::unsignedInt || m_kind == Kind::character;
}

bool FormatArg::isNegative() const noexcept
{
    return m_kind == Kind::signedInt && signedValue() < 0;
}

std::uint64_t FormatArg::unsignedValue() const noexcept
{
    return m_size >= 8 ? m_value.integer
                       : m_value.integer & ((std::uint64_t(1) << (m_size * 8)) - 1);
}

void formatTo(CString& out, const char16_t* format, const FormatArg* args, std::size_t count)
{
    std::size_t next = 0;
    const char16_t* p = format;
    while (*p)
    {
        const char16_t* percent = p;
        while (*percent && *percent != u'%')
            ++percent;
        out.append({p, static_cast<std::size_t>(percent - p)});
        if (!*percent)
            return;
        if (percent[1] == u'%')
        {
            out += u'%';
            p = percent + 2;
            continue;
        }
        const Directive d = parse(percent + 1);
        // A known directive takes its argument even if that is of the wrong kind.
        const bool taken = isKnown(d.type) && next < count;
        const bool done = taken && print(out, d, args[next]);
        next += taken ? 1 : 0;
        if (!done)
            out.append({percent, static_cast<std::size_t>(d.end - percent)});
        p = d.end;
    }
}
} // namespace qo
