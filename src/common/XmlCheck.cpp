#include "common/XmlCheck.h"

#include "types/Utf.h"

#include <string>

namespace qo
{
namespace
{
constexpr std::string_view quotes = "\"'";
constexpr std::string_view spaces = " \t\r\n";
constexpr std::string_view digits = "0123456789";
constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
constexpr std::string_view asciiLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

/// Every byte of a character beyond ASCII may be part of a name, as for the parser.
bool startsName(char c)
{
    return static_cast<unsigned char>(c) >= 0x80 || c == '_' || isOneOf(c, asciiLetters);
}

bool continuesName(char c)
{
    return startsName(c) || isOneOf(c, digits) || isOneOf(c, "-.:");
}

/// Control characters except white space.
bool hasControls(std::string_view bytes)
{
    for (const char c : bytes)
    {
        if (static_cast<unsigned char>(c) < 0x20 && !isOneOf(c, spaces))
            return true;
    }
    return false;
}

/// Walks over the markup once, in step with the parser: it rejects everything that the parser would
/// split into other pieces.
class Scan
{
public:
    Scan(std::string_view bytes, const XmlLimits& limits) : m_text(bytes), m_limits(limits) {}

    bool run()
    {
        while (passText('<'))
        {
            if (!passMarkup())
                return false;
        }
        return m_at == m_text.size() && m_depth == 0;
    }

private:
    bool isAtEnd() const { return m_at >= m_text.size(); }
    char next() const { return isAtEnd() ? '\0' : m_text[m_at]; }
    // Passes the expected text, if it comes next.
    bool pass(std::string_view expected)
    {
        if (m_text.substr(m_at, expected.size()) != expected)
            return false;
        m_at += expected.size();
        return true;
    }
    /// Advances to the position after the next occurrence.
    bool passTo(std::string_view end)
    {
        const std::size_t found = m_text.find(end, m_at);
        if (found == std::string_view::npos)
            return false;
        m_at = found + end.size();
        return true;
    }
    // Passes characters that fulfil the test; returns their number.
    template <class TEST>
    std::size_t passWhile(TEST test)
    {
        const std::size_t start = m_at;
        while (!isAtEnd() && test(next()))
            ++m_at;
        return m_at - start;
    }
    bool passSpaces()
    {
        return passWhile([](char c) { return isOneOf(c, spaces); }) > 0;
    }
    bool passName() { return startsName(next()) && passWhile(continuesName) > 0; }

    /// Advances to that character, without passing it. False if there is none, or at a damaged
    /// reference, whose end the parser would search anywhere.
    bool passText(char end)
    {
        while (!isAtEnd() && next() != end)
        {
            if (!pass("&#"))
                ++m_at;
            else if (!passReference())
                return false;
        }
        return !isAtEnd();
    }
    // "&#65;" or "&#x41;": the parser does not check the digits.
    bool passReference()
    {
        const std::string_view allowed = pass("x") ? hexDigits : digits;
        constexpr std::size_t mostDigits = 8;
        const std::size_t count = passWhile([&](char c) { return isOneOf(c, allowed); });
        return count > 0 && count <= mostDigits && pass(";");
    }

    bool passMarkup()
    {
        if (pass("<!--"))
            return passTo("-->");
        if (pass("<![CDATA["))
            return passTo("]]>");
        if (pass("<!"))
            return passTo(">");
        if (pass("<?"))
            return passInstruction();
        if (pass("</"))
            return passEndTag();
        return pass("<") && passStartTag();
    }

    bool passInstruction()
    {
        const bool isDeclaration = toLowerAscii(m_text.substr(m_at, 3)) == "xml";
        if (!isDeclaration)
            return passTo(">") && m_text[m_at - 2] == '?';
        // The parser is careless with declarations, so only what it cannot misread is accepted.
        const auto isPlain = [](char c) { return continuesName(c) || c == '/'; };
        passName();
        while (passSpaces() && passName())
        {
            const char quote = pass("=") ? next() : '\0';
            if (!isOneOf(quote, quotes) || !pass({&quote, 1}))
                return false;
            passWhile(isPlain);
            if (!pass({&quote, 1}))
                return false;
        }
        return pass("?>");
    }

    // Counts elements, attributes and the nesting on the way.
    bool passStartTag()
    {
        if (!passName() || ++m_elements > m_limits.elements)
            return false;
        int attributes = 0;
        while (passSpaces() && startsName(next()))
        {
            if (++attributes > m_limits.attributes || !passAttribute())
                return false;
        }
        if (pass("/>"))
            return m_depth < m_limits.depth;
        return pass(">") && ++m_depth <= m_limits.depth;
    }

    bool passAttribute()
    {
        passName();
        passSpaces();
        if (!pass("="))
            return false;
        passSpaces();
        const char quote = next();
        return isOneOf(quote, quotes) && pass({&quote, 1}) && passText(quote) && pass({&quote, 1});
    }

    bool passEndTag()
    {
        if (!passName())
            return false;
        passSpaces();
        return pass(">") && --m_depth >= 0;
    }

    static std::string toLowerAscii(std::string_view text)
    {
        std::string lower;
        for (const char c : text)
            lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return lower;
    }

    std::string_view m_text;
    const XmlLimits& m_limits;
    std::size_t m_at = 0;
    int m_depth = 0;
    int m_elements = 0;
};
} // namespace

bool isReadableXml(std::string_view bytes, const XmlLimits& limits)
{
    return bytes.size() <= limits.bytes && !hasControls(bytes) && isUtf8(bytes) &&
           Scan(bytes, limits).run();
}
} // namespace qo
