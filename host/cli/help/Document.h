#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qo::cli
{
/// A piece of a page of help, which terminals and man pages show in their own ways.
struct Block
{
    enum class Kind
    {
        heading,
        paragraph,
        item,    ///< a term and what it means; items in a row share a column
        bullet,  ///< a point of a list
        verbatim ///< lines that keep their breaks, as a command and what it prints
    };
    Kind kind;
    std::string text;
    std::string term = {}; ///< of an item
};

using Document = std::vector<Block>;

/// Reads plain text: an empty line ends a block, "# " begins a heading, "- " a point of a list,
/// "term :: meaning" is an item, and lines with four blanks ahead keep their breaks.
Document parseDocument(std::string_view text);
void append(Document& document, Document more);

/// For a terminal of that many columns. Nothing of it is wider, apart from verbatim lines.
std::string toText(const Document& document, std::size_t columns);
/// A part of a man page. Headings are sections, or ones within a section.
enum class RoffHeadings
{
    sections,
    subsections
};
std::string toRoff(const Document& document, RoffHeadings headings);
/// A heading of a section, which by the custom of man pages has capital letters, unless it is a
/// command.
std::string roffSection(const std::string& title);
/// A text as roff takes it within a line: backslashes, dashes and control lines are plain text.
std::string roffText(std::string_view text);
} // namespace qo::cli
