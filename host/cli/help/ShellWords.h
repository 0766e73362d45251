#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qo::cli
{
/// A command line of bash as far as the cursor, taken apart by the rules of that shell. Nothing is
/// expanded but a "~/" at the start of a word, so that no typed text is ever run.
struct ShellLine
{
    enum class Quote
    {
        none,
        singly,
        doubly,
        ansi ///< $'...'
    };
    std::vector<std::string> words; ///< those before the cursor's word, without the quotes
    std::string current;            ///< the word at the cursor, which may be empty
    bool isRedirection = false;     ///< the word names the file of ">" or "<"
    bool isKnown = true;            ///< false: it depends on an expansion such as "$x"
    Quote quote = Quote::none;      ///< the quotes that are open at the cursor
    /// Where in the current word the part begins that bash replaces. It begins after the opening
    /// quote, or else after the last break character. Example: of artist=AB bash replaces AB.
    std::size_t replaced = 0;
};

ShellLine parseShellLine(std::string_view line, std::string_view wordBreaks);

/// The rest of a word as it has to stand in a line of bash where those quotes are open. Readline
/// then closes them. No control character and nothing that bash would expand stands in it bare.
std::string quotedForShell(std::string_view text, ShellLine::Quote quote);
} // namespace qo::cli
