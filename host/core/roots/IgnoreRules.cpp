#include "core/roots/IgnoreRules.h"

#include <fnmatch.h>

#include <algorithm>
#include <span>

namespace qo::host
{
namespace
{
constexpr std::u16string_view specialCharacters = u"*?[\\";

bool isPlain(std::u16string_view text)
{
    return text.find_first_of(specialCharacters) == text.npos;
}

/// "**" stands for any number of names, none included, but at the end for at least one: "a/**" is
/// all in the folder, and not the folder. Only the last "**" that was met can stand for more, so
/// the time does not grow with their number.
bool fitParts(std::span<const std::string> patterns, std::span<const std::string> names)
{
    constexpr std::size_t none = -1;
    std::size_t anyNames = none; // the pattern after the last "**"
    std::size_t resume = 0;      // the name at which that one was tried last
    std::size_t pattern = 0;
    for (std::size_t name = 0; name < names.size();)
    {
        if (pattern < patterns.size() && patterns[pattern] == "**")
        {
            anyNames = ++pattern;
            resume = name;
            if (pattern == patterns.size())
                return true;
        }
        else if (pattern < patterns.size() &&
                 ::fnmatch(patterns[pattern].c_str(), names[name].c_str(), 0) == 0)
        {
            ++pattern;
            ++name;
        }
        else if (anyNames != none)
        {
            pattern = anyNames;
            name = ++resume;
        }
        else
            return false;
    }
    return pattern == patterns.size();
}

std::vector<std::string> splitAt(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    while (true)
    {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == text.npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

/// Blanks at the end do not count, unless a backslash stands before them.
void trimEnd(std::string& line)
{
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t') &&
           !line.ends_with("\\ "))
        line.pop_back();
}
} // namespace

IgnoreRules::IgnoreRules(const CString& names)
{
    for (const std::string& name : splitAt(toUtf8(names), ';'))
    {
        Pattern pattern;
        if (!name.empty() && parseName(fromUtf8(name), pattern))
            m_everywhere.push_back(std::move(pattern));
    }
}

/// The forms that nearly all names have are compared without fnmatch(), which a walk would call for
/// every file.
bool IgnoreRules::parseName(const CString& name, Pattern& pattern)
{
    const std::u16string_view text = name.view();
    if (isPlain(text))
    {
        pattern.form = Pattern::Form::exact;
        pattern.text = name;
    }
    else if (text.ends_with(u'*') && isPlain(text.substr(0, text.size() - 1)))
    {
        pattern.form = Pattern::Form::startsWith;
        pattern.text = name.Left(name.GetLength() - 1);
    }
    else if (text.starts_with(u'*') && isPlain(text.substr(1)))
    {
        pattern.form = Pattern::Form::endsWith;
        pattern.text = name.Mid(1);
    }
    else
        pattern.parts = {"**", toUtf8(name)};
    return true;
}

bool IgnoreRules::parse(std::string line, Pattern& pattern)
{
    trimEnd(line);
    if (line.empty() || line.front() == '#')
        return false;
    if (line.front() == '!')
    {
        pattern.isNegated = true;
        line.erase(0, 1);
    }
    if (line.ends_with('/'))
    {
        pattern.isForFolders = true;
        line.pop_back();
    }
    if (line.empty())
        return false;
    // A separator at the start or in the middle ties the pattern to the folder of its file.
    if (line.find('/') == line.npos)
        return parseName(fromUtf8(line), pattern);
    if (line.front() == '/')
        line.erase(0, 1);
    pattern.parts = splitAt(line, '/');
    return true;
}

void IgnoreRules::setFile(const CString& folder, std::string_view content)
{
    Folder rules{addBackslash(folder), {}};
    for (const std::string& line : splitAt(content, '\n'))
    {
        Pattern pattern;
        if (parse(line, pattern))
            rules.patterns.push_back(std::move(pattern));
    }
    std::erase_if(m_folders, [&](const Folder& known) { return known.path == rules.path; });
    if (rules.patterns.empty())
        return;
    const auto place = std::find_if(m_folders.begin(),
                                    m_folders.end(),
                                    [&](const Folder& known)
                                    { return known.path.GetLength() > rules.path.GetLength(); });
    m_folders.insert(place, std::move(rules));
}

bool IgnoreRules::fitsName(const Pattern& pattern, const CString& name)
{
    switch (pattern.form)
    {
    case Pattern::Form::exact:
        return name == pattern.text;
    case Pattern::Form::startsWith:
        return name.view().starts_with(pattern.text.view());
    case Pattern::Form::endsWith:
        return name.view().ends_with(pattern.text.view());
    case Pattern::Form::general:
        break;
    }
    return fitParts(pattern.parts, std::vector<std::string>{toUtf8(name)});
}

bool IgnoreRules::fitsPath(const Pattern& pattern,
                           const CString& base,
                           const CString& folder,
                           const CString& name)
{
    if (pattern.form != Pattern::Form::general)
        return fitsName(pattern, name);
    std::vector<std::string> names;
    if (folder.GetLength() > base.GetLength())
        names = splitAt(toUtf8(folder.Mid(base.GetLength())), '\\');
    // addBackslash() closed the folder, which leaves an empty name at the end.
    while (!names.empty() && names.back().empty())
        names.pop_back();
    names.push_back(toUtf8(name));
    return fitParts(pattern.parts, names);
}

bool IgnoreRules::isLeftOut(const CString& folder, const CString& name, bool isFolder) const
{
    const auto meansKind = [isFolder](const Pattern& pattern)
    { return isFolder || !pattern.isForFolders; };
    bool isOut = std::any_of(m_everywhere.begin(),
                             m_everywhere.end(),
                             [&](const Pattern& pattern) { return fitsName(pattern, name); });
    if (m_folders.empty())
        return isOut;
    const CString place = addBackslash(folder);
    for (const Folder& rules : m_folders)
    {
        if (!place.view().starts_with(rules.path.view()))
            continue;
        for (const Pattern& pattern : rules.patterns)
        {
            if (meansKind(pattern) && fitsPath(pattern, rules.path, place, name))
                isOut = !pattern.isNegated;
        }
    }
    return isOut;
}
} // namespace qo::host
