#pragma once

#include "core/query/QueryField.h"

#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// One word of a query, taken apart.
struct QueryWord
{
    std::string typed; ///< the whole word, for messages
    bool isNot = false;
    bool isQuoted = false; ///< begins with a quote: never a path
    bool isRegex = false;
    bool isWhole = false;            ///< an argument that was not taken apart
    std::optional<QueryField> field; ///< none for a bare word
    std::string value;               ///< without quotes
};

/// Words that must all match. A query has several, of which one must.
using QueryAlternative = std::vector<QueryWord>;

/// Takes the arguments of a query apart:
///
///   argument     word, or several with blanks between them, or "," before another alternative
///   word         [^] [field] [: or ::] value
///   value        characters, with blanks, commas and colons in double quotes; \" is a quote
///
/// A comma at the end of a word is one of its own. `whole` tells of an argument without "^"
/// whether it is one word whatever it holds, as the path of a file does. Throws HostError, with the
/// word, for a field that there is not, an open quote, an empty argument and an alternative without
/// words.
class QueryParser
{
public:
    template <class IsWhole>
    static std::vector<QueryAlternative> parse(const std::vector<std::string>& arguments,
                                               IsWhole isWhole)
    {
        QueryParser parser;
        for (const std::string& argument : arguments)
        {
            const bool isNot = argument.starts_with('^');
            const std::string bare = isNot ? argument.substr(1) : argument;
            if (isWhole(bare))
                parser.addWord({argument, isNot, false, false, true, {}, bare});
            else
                parser.addArgument(argument);
        }
        return parser.finish();
    }

private:
    void addArgument(const std::string& argument);
    void addWord(QueryWord word);
    void addComma();
    std::vector<QueryAlternative> finish();

    std::vector<QueryAlternative> m_alternatives{1};
};
} // namespace qo::host
