#include "cli/help/Document.h"

#include "cli/shown/Text.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
using enum Block::Kind;

constexpr std::size_t widestTerm = 24;
constexpr std::string_view codeIndent = "    ";

/// The text up to the mark; both go from its front.
std::string_view takeUpTo(std::string_view& text, std::string_view mark)
{
    const std::size_t end = std::min(text.find(mark), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + mark.size(), text.size()));
    return part;
}

std::string unbroken(std::string_view text)
{
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

Block parseBlock(std::string_view text)
{
    if (text.starts_with(codeIndent))
    {
        std::string lines;
        while (!text.empty())
        {
            const std::string_view line = takeUpTo(text, "\n");
            lines += (lines.empty() ? "" : "\n");
            lines += line.substr(std::min(codeIndent.size(), line.size()));
        }
        return {verbatim, lines};
    }
    if (text.starts_with("# "))
        return {heading, unbroken(text.substr(2))};
    if (text.starts_with("- "))
        return {bullet, unbroken(text.substr(2))};
    const std::size_t middle = text.find(" :: ");
    if (middle != std::string_view::npos)
        return {item, unbroken(text.substr(middle + 4)), std::string(text.substr(0, middle))};
    return {paragraph, unbroken(text)};
}

/// How wide the column is that the terms of the items from here on have.
std::size_t termWidth(const Document& document, std::size_t index)
{
    std::size_t width = 0;
    for (; index < document.size() && document[index].kind == item; ++index)
    {
        const std::size_t own = textWidth(document[index].term);
        width = own > widestTerm ? width : std::max(width, own);
    }
    return std::min(width == 0 ? widestTerm : width, widestTerm);
}

std::string itemText(const Block& block, std::size_t width, std::size_t columns)
{
    const std::string start = "  " + padded(block.term, std::max(width, textWidth(block.term)));
    const std::size_t indent = width + 4;
    if (textWidth(start) + 2 <= indent)
        return wrapped(start + "  ", block.text, indent, columns);
    return start + "\n" + wrapped(std::string(indent, ' '), block.text, indent, columns);
}

std::string verbatimText(std::string_view text)
{
    std::string lines;
    while (!text.empty())
        lines += "  " + std::string(takeUpTo(text, "\n")) + "\n";
    return lines;
}

std::string roffVerbatim(std::string_view text)
{
    std::string lines = ".PP\n.RS 4\n.nf\n";
    while (!text.empty())
        lines += roffText(takeUpTo(text, "\n")) + "\n";
    return lines + ".fi\n.RE\n";
}

/// As the argument of a request such as .SH.
std::string roffArgument(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : roffText(text))
        quoted += c == '"' ? std::string("\\(dq") : std::string(1, c);
    return quoted + "\"";
}
} // namespace

Document parseDocument(std::string_view text)
{
    Document document;
    while (!text.empty())
    {
        text.remove_prefix(std::min(text.find_first_not_of('\n'), text.size()));
        std::string_view block = takeUpTo(text, "\n\n");
        while (block.ends_with('\n'))
            block.remove_suffix(1);
        if (!block.empty())
            document.push_back(parseBlock(block));
    }
    return document;
}

void append(Document& document, Document more)
{
    document.insert(
        document.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::string toText(const Document& document, std::size_t columns)
{
    std::string text;
    std::size_t width = 0;
    for (std::size_t i = 0; i < document.size(); ++i)
    {
        const Block& block = document[i];
        const Block* const before = i > 0 ? &document[i - 1] : nullptr;
        const bool isNext = before && before->kind == block.kind && block.kind != paragraph;
        if (block.kind == item && !isNext)
            width = termWidth(document, i);
        if (before && before->kind != heading && !isNext)
            text += "\n";
        if (block.kind == heading)
            text += block.text + ":\n";
        else if (block.kind == paragraph)
            text += wrapped("", block.text, 0, columns);
        else if (block.kind == bullet)
            text += wrapped("- ", block.text, 2, columns);
        else if (block.kind == item)
            text += itemText(block, width, columns);
        else
            text += verbatimText(block.text);
    }
    return text;
}

std::string roffText(std::string_view text)
{
    std::string safe;
    for (const char c : text)
    {
        if (c == '\\')
            safe += "\\e";
        else if (c == '-')
            safe += "\\-";
        else if (c == '\'')
            safe += "\\(aq";
        else if (c == '`')
            safe += "\\(ga";
        else if (c == '^')
            safe += "\\(ha";
        else if (c == '~')
            safe += "\\(ti";
        else if (c == ';')
            safe += ";\\:"; // a list without blanks may be broken here
        else
            safe += c;
    }
    // A point at the start of a line would be a request.
    return (safe.starts_with('.') ? "\\&" : "") + safe;
}

std::string roffSection(const std::string& title)
{
    std::string capital = title;
    for (char& c : capital)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return ".SH " + roffArgument(title.starts_with("qo ") ? title : capital) + "\n";
}

std::string toRoff(const Document& document, RoffHeadings headings)
{
    std::string roff;
    for (const Block& block : document)
    {
        if (block.kind == heading)
            roff += headings == RoffHeadings::sections ? roffSection(block.text)
                                                       : ".SS " + roffArgument(block.text) + "\n";
        else if (block.kind == paragraph)
            roff += ".PP\n" + roffText(block.text) + "\n";
        else if (block.kind == bullet)
            roff += ".IP \\(bu 2\n" + roffText(block.text) + "\n";
        else if (block.kind == item)
            roff += ".TP\n\\fB" + roffText(block.term) + "\\fR\n" + roffText(block.text) + "\n";
        else
            roff += roffVerbatim(block.text);
    }
    return roff;
}
} // namespace qo::cli
