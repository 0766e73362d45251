#include "cli/help/ShellWords.h"

#include <cstdio>
#include <cstdlib>

namespace qo::cli
{
namespace
{
using Quote = ShellLine::Quote;

bool isControl(char c)
{
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 || code == 0x7F;
}

class ShellParser
{
public:
    ShellParser(std::string_view line, std::string_view breaks) : m_rest(line), m_breaks(breaks) {}

    ShellLine run()
    {
        while (!m_rest.empty())
        {
            const char c = take();
            if (m_line.quote == Quote::none)
                readBare(c);
            else
                readQuoted(c);
        }
        if (m_line.quote == Quote::none)
            m_line.replaced = m_bareStart;
        return std::move(m_line);
    }

private:
    char take()
    {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }
    void put(char c)
    {
        m_line.current += c;
        m_isStarted = true;
    }
    void endWord()
    {
        if (m_isStarted && !m_line.isRedirection)
            m_line.words.push_back(m_line.current);
        if (m_isStarted)
            m_line.isRedirection = false;
        m_line.current.clear();
        m_isStarted = false;
        m_bareStart = 0;
    }
    void open(Quote quote)
    {
        m_line.quote = quote;
        m_line.replaced = m_line.current.size();
        m_isStarted = true;
    }
    void readBare(char c)
    {
        if (c == ' ' || c == '\t' || c == '\n')
            return endWord();
        if (c == '>' || c == '<')
        {
            endWord();
            m_line.isRedirection = true;
            return;
        }
        if (c == '\'' || c == '"')
            return open(c == '"' ? Quote::doubly : Quote::singly);
        if (c == '$' && m_rest.starts_with('\''))
        {
            take();
            return open(Quote::ansi);
        }
        if (c == '~' && !m_isStarted && m_rest.starts_with('/'))
            return putHome();
        if (c == '$' || c == '`')
            m_line.isKnown = false;
        if (c == '\\')
            return m_rest.empty() ? void() : put(take());
        put(c);
        if (m_breaks.find(c) != std::string_view::npos)
            m_bareStart = m_line.current.size();
    }
    void readQuoted(char c)
    {
        const char closing = m_line.quote == Quote::doubly ? '"' : '\'';
        if (c == closing)
        {
            m_line.quote = Quote::none;
            return;
        }
        if (m_line.quote == Quote::doubly && (c == '$' || c == '`'))
            m_line.isKnown = false;
        if (c != '\\' || m_line.quote == Quote::singly || m_rest.empty())
            return put(c);
        const char next = take();
        if (m_line.quote == Quote::ansi)
            return putEscaped(next);
        if (std::string_view("$`\"\\").find(next) == std::string_view::npos)
            put('\\');
        put(next);
    }
    /// What quotedForShell() writes in $'...': "\xHH" or a character itself.
    void putEscaped(char c)
    {
        if (c != 'x' || m_rest.size() < 2)
            return put(c);
        const std::string digits{take(), take()};
        put(static_cast<char>(std::strtol(digits.c_str(), nullptr, 16)));
    }
    void putHome()
    {
        const char* const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
        for (const char* c = home ? home : "~"; *c; ++c)
            put(*c);
    }

    std::string_view m_rest;
    std::string_view m_breaks;
    ShellLine m_line;
    bool m_isStarted = false;
    std::size_t m_bareStart = 0;
};

std::string ansiText(std::string_view text)
{
    std::string escaped;
    for (const char c : text)
    {
        char code[8] = {c, '\0'};
        if (isControl(c))
            std::snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(c));
        else if (c == '\'' || c == '\\')
            escaped += '\\';
        escaped += code;
    }
    return escaped;
}

std::string bareText(std::string_view text)
{
    constexpr std::string_view special = " \"'`$\\!~#&;|<>()[]{}*?^";
    std::string escaped;
    for (const char c : text)
    {
        if (isControl(c))
            return "$'" + ansiText(text) + "'";
        if (special.find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}
/// What has to end a whole word in quotes. Readline closes them, unless the last character is such
/// a quote already. Example: "a \" would stay open.
std::string closingText(std::string_view text, Quote quote)
{
    const char last = text.empty() ? '\0' : text.back();
    if (quote == Quote::doubly && last == '"')
        return "\"";
    const bool isBare = quote == Quote::doubly && (isControl(last) || last == '!');
    return isBare && !text.empty() ? "\"\"" : "";
}
} // namespace

ShellLine parseShellLine(std::string_view line, std::string_view wordBreaks)
{
    return ShellParser(line, wordBreaks).run();
}

std::string quotedForShell(std::string_view text, Quote quote)
{
    if (quote == Quote::none)
        return bareText(text);
    if (quote == Quote::ansi)
        return ansiText(text);
    const char mark = quote == Quote::doubly ? '"' : '\'';
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        const bool isLast = i + 1 == text.size();
        // In double quotes a "!" would be looked up in the history. It stands between the end of
        // the quotes and their new beginning, as a control character does.
        if (isControl(c) || c == (quote == Quote::doubly ? '!' : '\''))
        {
            escaped += mark + bareText(std::string(1, c));
            escaped += isLast ? "" : std::string(1, mark);
        }
        else if (quote == Quote::doubly &&
                 std::string_view("$`\"\\").find(c) != std::string_view::npos)
            escaped += {'\\', c};
        else
            escaped += c;
    }
    return escaped + closingText(text, quote);
}
} // namespace qo::cli
