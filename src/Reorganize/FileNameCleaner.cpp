#include "Reorganize/FileNameCleaner.h"

#include <algorithm>
#include <string_view>

namespace qo
{
namespace
{
/// What file systems of Windows do not allow in names: disks and players of other systems read the
/// files too.
bool isForbidden(char16_t c)
{
    return c < 0x20 || std::u16string_view(u"\\/:*?\"<>|").find(c) != std::u16string_view::npos;
}

bool isForbiddenAtStart(char16_t c)
{
    return c == u' ';
}

bool isForbiddenAtEnd(char16_t c)
{
    return c == u' ' || c == u'.';
}

/// The index from which on characters count as the end of the name.
std::size_t startOfEnd(std::u16string_view name, CleanMode mode)
{
    std::size_t start = name.size();
    while (start > 0 && (isForbidden(name[start - 1]) || isForbiddenAtEnd(name[start - 1])))
    {
        --start;
        if (mode == CleanMode::replace)
            break;
    }
    return start;
}

/// Most names need no change and are returned as they are.
bool isClean(std::u16string_view name)
{
    return name.empty() || (!isForbiddenAtStart(name.front()) && !isForbiddenAtEnd(name.back()) &&
                            std::none_of(name.begin(), name.end(), isForbidden));
}

CString cleanName(const CString& text, CleanMode mode)
{
    const std::u16string_view name = text.view();
    if (isClean(name))
        return text;
    const std::size_t end = startOfEnd(name, mode);
    CString clean;
    for (std::size_t i = 0; i < name.size(); ++i)
    {
        const char16_t c = name[i];
        const bool isBad = isForbidden(c) || (isForbiddenAtStart(c) && clean.IsEmpty()) ||
                           (isForbiddenAtEnd(c) && i >= end);
        if (!isBad)
            clean += c;
        else if (mode == CleanMode::replace)
            clean += u'_';
    }
    return clean;
}
} // namespace

CString cleanFileName(const CString& text, CleanMode mode)
{
    return cleanName(text, mode);
}

CString cleanFilePath(const CString& text, CleanMode mode)
{
    CString path = text;
    // A doubled backslash would be an empty component.
    path.Replace(u"\\\\", u"\\");
    CString clean;
    for (int start = 0;;)
    {
        const int backslash = path.Find(u'\\', start);
        const int end = backslash == -1 ? path.GetLength() : backslash;
        clean += cleanName(path.Mid(start, end - start), mode);
        if (backslash == -1)
            return clean;
        clean += u'\\';
        start = backslash + 1;
    }
}
} // namespace qo
