#include "core/plan/TargetName.h"

#include <algorithm>
#include <iterator>

namespace qo::host
{
namespace
{
/// A unit of this block stands for one byte of a name.
constexpr char16_t byteBlock = 0xF000;
constexpr char16_t byteBlockEnd = 0xF0FF;
constexpr char16_t deleteControl = 0x7F;

bool isByte(char16_t c)
{
    return c >= byteBlock && c <= byteBlockEnd;
}

bool isLead(char16_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isTrail(char16_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

/// What the unit adds to the length of a name; of a pair each half counts half.
int lengthOf(char16_t c, VolumeRules::Length countedIn)
{
    if (countedIn == VolumeRules::Length::utf16Units || c < 0x80 || isByte(c))
        return 1;
    return c < 0x800 || isLead(c) || isTrail(c) ? 2 : 3;
}

int lengthOf(const CString& text, VolumeRules::Length countedIn)
{
    int length = 0;
    for (const char16_t c : text.view())
        length += lengthOf(c, countedIn);
    return length;
}

CString cut(const CString& text, int limit, VolumeRules::Length countedIn)
{
    int units = 0;
    int length = 0;
    while (units < text.GetLength())
    {
        length += lengthOf(text[units], countedIn);
        if (length > limit)
            break;
        ++units;
    }
    if (units == text.GetLength())
        return text;
    units = wholeCharacters(text, units);
    const int cutAt = units;
    while (units > 0 && (text[units - 1] == u' ' || text[units - 1] == u'.'))
        --units;
    return text.Left(units > 0 ? units : cutAt);
}

bool isForbiddenOnWindows(char16_t c)
{
    constexpr std::u16string_view forbidden = u"\\/:*?\"<>|";
    return c < 0x20 || isByte(c) || forbidden.find(c) != std::u16string_view::npos;
}

/// Whether the name, up to its first point, is that of a device.
bool isDeviceName(const CString& name)
{
    static constexpr const char16_t* plain[] = {u"CON", u"PRN", u"AUX", u"NUL"};
    static constexpr const char16_t* numbered[] = {u"COM", u"LPT"};
    const auto is = [&name](const char16_t* device) { return name.CompareNoCase(device) == 0; };
    if (std::any_of(std::begin(plain), std::end(plain), is))
        return true;
    const CString stem = name.Left(3);
    return name.GetLength() == 4 && name[3] >= u'1' && name[3] <= u'9' &&
           std::any_of(std::begin(numbered),
                       std::end(numbered),
                       [&stem](const char16_t* device) { return stem.CompareNoCase(device) == 0; });
}

CString validOnWindows(const CString& name)
{
    CString valid = name;
    for (int i = 0; i < valid.GetLength(); ++i)
    {
        const bool isLast = i + 1 == valid.GetLength();
        if (isForbiddenOnWindows(valid[i]) || (isLast && (valid[i] == u' ' || valid[i] == u'.')))
            valid.SetAt(i, u'_');
    }
    const int point = valid.Find(u'.');
    CString device = valid.Left(point < 0 ? valid.GetLength() : point);
    device.TrimRight();
    if (isDeviceName(device))
        valid.Insert(device.GetLength(), u"_");
    return valid;
}
} // namespace

CString sameNameKey(const CString& name)
{
    // Each may undo the other: a composed capital has a small letter of its own, and a small letter
    // may compose where the capital did not.
    CString key = toNfc(name);
    key.MakeLower();
    return toNfc(key);
}

std::string sameNameKey(const std::string& systemPath)
{
    // Most paths need no tables.
    if (std::all_of(systemPath.begin(),
                    systemPath.end(),
                    [](char c) { return c >= ' ' && c <= '~' && c != '\\'; }))
    {
        std::string key = systemPath;
        for (char& c : key)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return key;
    }
    std::string key;
    for (std::size_t at = 0; at < systemPath.size();)
    {
        const std::size_t slash = std::min(systemPath.find('/', at), systemPath.size());
        const std::string_view name = std::string_view(systemPath).substr(at, slash - at);
        key += toUtf8(sameNameKey(DriveMap::nameFromSystem(name)));
        if (slash < systemPath.size())
            key += '/';
        at = slash + 1;
    }
    return key;
}

CString plainText(const CString& text)
{
    CString plain = toNfc(text);
    for (int i = 0; i < plain.GetLength(); ++i)
    {
        const char16_t c = plain[i];
        const bool isPair = isLead(c) && i + 1 < plain.GetLength() && isTrail(plain[i + 1]);
        if (isPair)
            ++i;
        else if (c < 0x20 || c == deleteControl || isByte(c) || isLead(c) || isTrail(c))
            plain.SetAt(i, u'_');
    }
    return plain;
}

CString plainValue(CString text)
{
    CString plain = plainText(text.Trim());
    plain.Replace(u'\\', u'_');
    plain.Replace(u'/', u'_');
    return plain;
}

CString fittingFolderName(const CString& name, const VolumeRules& rules)
{
    return cut(
        rules.hasWindowsNames ? validOnWindows(name) : name, rules.longestName, rules.countedIn);
}

CString fittingFileName(const CString& name, const VolumeRules& rules)
{
    const CString valid = rules.hasWindowsNames ? validOnWindows(name) : name;
    const int point = valid.ReverseFind(u'.');
    if (point <= 0)
        return cut(valid, rules.longestName, rules.countedIn);
    const CString end = valid.Mid(point);
    const int room = rules.longestName - lengthOf(end, rules.countedIn);
    const CString stem = cut(valid.Left(point), room, rules.countedIn);
    return isNoName(stem) && point > stem.GetLength() ? CString() : stem + end;
}

bool isNoName(const CString& name)
{
    const std::u16string_view text = name.view();
    return std::all_of(text.begin(), text.end(), [](char16_t c) { return c == u'.'; });
}
} // namespace qo::host
