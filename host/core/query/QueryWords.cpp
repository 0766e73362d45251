#include "core/query/QueryWords.h"

#include "core/base/ClosestName.h"
#include "core/base/HostError.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace qo::host
{
namespace
{
/// Reads the words of one argument.
class WordReader
{
public:
    explicit WordReader(const std::string& argument) : m_text(argument) {}

    /// False at the end. A comma comes as a word of its own.
    bool next(QueryWord& word)
    {
        while (m_at < m_text.size() && m_text[m_at] == ' ')
            ++m_at;
        if (m_at == m_text.size())
            return false;
        const std::size_t start = m_at;
        word = {};
        if (m_text[m_at] == ',')
            ++m_at;
        else
            read(word);
        word.typed = m_text.substr(start, m_at - start);
        return true;
    }

private:
    void read(QueryWord& word)
    {
        if (m_text[m_at] == '^')
        {
            word.isNot = true;
            ++m_at;
        }
        const std::size_t colon = endOfField();
        if (colon != std::string::npos)
        {
            const std::string name = m_text.substr(m_at, colon - m_at);
            const QueryFieldInfo* const info = findQueryField(name);
            if (!info && !name.empty())
                refuseField(name);
            if (info)
                word.field = info->field;
            word.isRegex = m_text.compare(colon, 2, "::") == 0;
            m_at = colon + (word.isRegex ? 2 : 1);
        }
        word.isQuoted = m_at < m_text.size() && m_text[m_at] == '"';
        readValue(word);
    }

    [[noreturn]] void refuseField(const std::string& name) const
    {
        const std::string word =
            m_text.substr(m_at, std::min(m_text.find(' ', m_at), m_text.size()) - m_at);
        const std::string suggestion = suggestionOrList(name, queryFieldNames());
        throw HostError(ExitCode::usage,
                        "\"" + name + "\" is no field of a query" + suggestion +
                            (suggestion.ends_with('?') ? " A" : "; a") +
                            " text with a colon goes in quotes: '\"" + word + "\"'");
    }

    /// Where the colon after a field's name stands. ":x" is a value without a field.
    std::size_t endOfField() const
    {
        std::size_t at = m_at;
        while (at < m_text.size() && std::isalpha(static_cast<unsigned char>(m_text[at])) != 0)
            ++at;
        const bool isColon = at < m_text.size() && m_text[at] == ':';
        return isColon && (at > m_at || m_text.compare(at, 2, "::") == 0) ? at : std::string::npos;
    }

    void readValue(QueryWord& word)
    {
        bool isOpen = false;
        std::size_t quote = 0;
        for (; m_at < m_text.size(); ++m_at)
        {
            const char c = m_text[m_at];
            if (c == '\\' && m_text.compare(m_at, 2, "\\\"") == 0)
                word.value += m_text[++m_at];
            else if (c == '"')
            {
                isOpen = !isOpen;
                quote = m_at;
            }
            else if (!isOpen && (c == ' ' || endsHere()))
                break;
            else
                word.value += c;
        }
        if (isOpen)
            throw HostError(ExitCode::usage,
                            "the quote before \"" + m_text.substr(quote + 1) +
                                "\" is not closed in the query");
    }

    /// A comma at the end of a word.
    bool endsHere() const
    {
        return m_text[m_at] == ',' && (m_at + 1 == m_text.size() || m_text[m_at + 1] == ' ');
    }

    const std::string& m_text;
    std::size_t m_at = 0;
};
} // namespace

void QueryParser::addArgument(const std::string& argument)
{
    // "qo rm $FILE" must not mean everything when the variable is empty.
    if (argument.find_first_not_of(' ') == std::string::npos)
        throw HostError(ExitCode::usage, "an empty text names nothing");
    WordReader reader(argument);
    QueryWord word;
    while (reader.next(word))
    {
        if (word.typed == ",")
            addComma();
        else
            addWord(word);
    }
}

void QueryParser::addWord(QueryWord word)
{
    m_alternatives.back().push_back(std::move(word));
}

void QueryParser::addComma()
{
    if (m_alternatives.back().empty())
        throw HostError(ExitCode::usage, "there is nothing before a comma of the query");
    m_alternatives.emplace_back();
}

std::vector<QueryAlternative> QueryParser::finish()
{
    if (m_alternatives.size() > 1 && m_alternatives.back().empty())
        throw HostError(ExitCode::usage, "there is nothing after the last comma of the query");
    if (m_alternatives.back().empty())
        m_alternatives.clear();
    return std::move(m_alternatives);
}
} // namespace qo::host
