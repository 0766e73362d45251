#include "common/CollPath.h"

#include "types/CharClass.h"

#include <algorithm>
#include <vector>

// Parsing goes in two steps: parseDevice() recognises the form and takes the device,
// parseComponents() splits the rest. toString() is the reverse. Lists of paths follow at the end.

namespace
{
using Type = CQoCollPath::EDeviceType;

/// The forms that begin with two backslashes, a word and ':'.
struct Prefix
{
    const char16_t* text;
    Type type;
};
constexpr Prefix prefixes[] = {{u"pplugin", CQoCollPath::physicalPlugin},
                               {u"lplugin", CQoCollPath::logicalPlugin},
                               {u"usb", CQoCollPath::usb},
                               {u"wpd", CQoCollPath::wpd},
                               {u"sresult", CQoCollPath::searchResult},
                               {u"share", CQoCollPath::share}};

Type typeOfPrefix(std::u16string_view text)
{
    for (const Prefix& prefix : prefixes)
    {
        if (qo::compareNoCase(text, prefix.text) == 0)
            return prefix.type;
    }
    return CQoCollPath::invalid;
}

const char16_t* prefixOfType(Type type)
{
    for (const Prefix& prefix : prefixes)
    {
        if (prefix.type == type)
            return prefix.text;
    }
    return u"";
}

/// "AC\DC 100%" becomes "AC%1DC 100%%".
CString escape(const CString& text)
{
    if (text.FindOneOf(u"%\\") < 0)
        return text;
    CString result = text;
    result.Replace(u"%", u"%%");
    result.Replace(u"\\", u"%1");
    return result;
}

/// The reverse of escape(); an unknown escape gives its second character.
CString unescape(const CString& text)
{
    if (text.Find(u'%') < 0)
        return text;
    CString result;
    for (int i = 0; i < text.GetLength(); ++i)
    {
        if (text[i] != u'%')
            result += text[i];
        else if (++i < text.GetLength())
            result += text[i] == u'1' ? u'\\' : text[i];
    }
    return result;
}

/// The end of the device in a text that begins with two backslashes.
int endOfDevice(const CString& text)
{
    const int end = text.Find(u'\\', 2);
    return end < 0 ? text.GetLength() : end;
}

/// An empty component would vanish between two backslashes.
CString blankIfEmpty(const CString& text)
{
    return text.IsEmpty() ? CString(u" ") : text;
}
} // namespace

CQoCollPath::CQoCollPath(const CString& path, bool isRelative)
{
    int start = 0;
    if (isRelative || parseDevice(path, start))
        parseComponents(path, start);
}

CQoCollPath::CQoCollPath(EDeviceType type, const CString& device, const CStringArray& components)
    : m_type(type), m_device(device), m_components(components)
{
}

CQoCollPath CQoCollPath::fromDriveLetter(char16_t letter, const CStringArray& components)
{
    return {drive, CString(letter) + u':', components};
}

CQoCollPath CQoCollPath::makeShare(const CString& id, const CQoCollPath& path)
{
    CStringArray components;
    components.Add(path.m_device);
    components.Append(path.m_components);
    return {share, id, components};
}

CQoCollPath CQoCollPath::makeTrack(const CQoCollPath& base,
                                   const CString& artist,
                                   const CString& album,
                                   const CString& title,
                                   const CString& ext)
{
    CStringArray components;
    components.Add(blankIfEmpty(artist));
    components.Add(blankIfEmpty(album));
    components.Add(ext.IsEmpty() ? blankIfEmpty(title) : blankIfEmpty(title) + u"." + ext);
    return {base.m_type, base.m_device, components};
}

CQoCollPath::EDeviceType CQoCollPath::typeOfText(std::u16string_view path) noexcept
{
    constexpr std::size_t slashes = 2;
    if (path.size() < slashes)
        return invalid;
    if (path[0] != u'\\' || path[1] != u'\\')
        return path[1] == u':' ? drive : invalid;
    const std::u16string_view device = path.substr(slashes, path.find(u'\\', slashes) - slashes);
    if (device.empty())
        return invalid;
    const std::size_t colon = device.find(u':');
    return colon == std::u16string_view::npos ? network : typeOfPrefix(device.substr(0, colon));
}

bool CQoCollPath::parseDevice(const CString& text, int& start)
{
    m_type = typeOf(text);
    if (m_type == invalid)
        return false;
    start = m_type == drive ? 2 : endOfDevice(text);
    if (needsEscape())
    {
        const int idStart = text.Find(u':', 2) + 1;
        m_device = unescape(text.Mid(idStart, start - idStart));
    }
    else
        m_device = text.Left(start);
    return true;
}

void CQoCollPath::parseComponents(const CString& text, int start)
{
    const int length = text.GetLength();
    if (start < length && text[start] == u'\\')
        ++start;
    int begin = start;
    for (int i = start; i <= length && begin < length; ++i)
    {
        if (i < length && text[i] != u'\\')
            continue;
        // A doubled backslash is a part of the component.
        if (i + 1 < length && text[i + 1] == u'\\')
        {
            ++i;
            continue;
        }
        const CString component = text.Mid(begin, i - begin);
        m_components.Add(needsEscape() ? unescape(component) : component);
        begin = i + 1;
    }
}

CString CQoCollPath::toString(bool) const
{
    CString text;
    if (needsEscape())
    {
        text = u"\\\\";
        text += prefixOfType(m_type);
        text += u':';
        text += escape(m_device);
    }
    else
        text = m_device;
    if (m_type != invalid)
        text += u'\\';
    bool first = true;
    for (const CString& component : m_components)
    {
        if (!first)
            text += u'\\';
        first = false;
        text += needsEscape() ? escape(component) : component;
    }
    return text;
}

CString CQoCollPath::getLast() const
{
    return isEmpty() ? CString() : m_components[getCount() - 1];
}

CString CQoCollPath::getFileTitle() const
{
    const CString name = getLast();
    const int dot = name.ReverseFind(u'.');
    return dot < 0 ? name : name.Left(dot);
}

CString CQoCollPath::getFileExt() const
{
    const CString name = getLast();
    const int dot = name.ReverseFind(u'.');
    return dot < 0 ? CString() : name.Mid(dot + 1);
}

CQoCollPath CQoCollPath::getParent() const
{
    CQoCollPath parent = *this;
    if (!isEmpty())
        parent.m_components.RemoveAt(getCount() - 1);
    return parent;
}

CString CQoCollPath::getComponent(int index) const
{
    if (index < 0 || index >= getCount() || m_components[index] == u" ")
        return {};
    return m_components[index];
}

bool CQoCollPath::isSameDevice(const CQoCollPath& other) const
{
    return m_type == other.m_type && m_device.CompareNoCase(other.m_device) == 0;
}

/// Compares the first count components of both.
int CQoCollPath::compareComponents(const CQoCollPath& other, int count) const
{
    for (int i = 0; i < count; ++i)
    {
        if (const int order = m_components[i].CompareNoCase(other.m_components[i]))
            return order;
    }
    return 0;
}

bool CQoCollPath::isSubPathOf(const CQoCollPath& other) const
{
    return isSameDevice(other) && other.getCount() < getCount() &&
           compareComponents(other, other.getCount()) == 0;
}

bool CQoCollPath::isSubPathOrSame(const CQoCollPath& other) const
{
    return isSubPathOf(other) || *this == other;
}

bool CQoCollPath::isParentOrChildOf(const CQoCollPath& other) const
{
    return isSubPathOf(other) || other.isSubPathOf(*this);
}

CStringArray CQoCollPath::relativeTo(const CQoCollPath& other) const
{
    CStringArray rest;
    if (isSubPathOf(other))
    {
        for (int i = other.getCount(); i < getCount(); ++i)
            rest.Add(m_components[i]);
    }
    return rest;
}

void CQoCollPath::split(CQoCollPath& first, CQoCollPath& rest) const
{
    const CQoCollPath whole = *this;
    first = rest = CQoCollPath(m_type, m_device);
    for (int i = 0; i < whole.getCount(); ++i)
        (i == 0 ? first : rest).m_components.Add(whole.m_components[i]);
}

CQoCollPath CQoCollPath::child(const CString& component) const
{
    CQoCollPath path = *this;
    path.m_components.Add(component);
    return path;
}

int CQoCollPath::compare(const CQoCollPath& other) const
{
    if (m_type != other.m_type)
        return m_type < other.m_type ? -1 : 1;
    if (const int order = m_device.CompareNoCase(other.m_device))
        return order;
    if (getCount() != other.getCount())
        return getCount() < other.getCount() ? -1 : 1;
    return compareComponents(other, getCount());
}

namespace qo
{
int findPath(const CollPathArray& paths, const CQoCollPath& path)
{
    for (int i = 0; i < paths.GetSize(); ++i)
    {
        if (paths[i] == path)
            return i;
    }
    return -1;
}

namespace
{
std::vector<CQoCollPath> sortedByText(const CollPathArray& paths)
{
    std::vector<CQoCollPath> sorted(paths.begin(), paths.end());
    std::stable_sort(sorted.begin(),
                     sorted.end(),
                     [](const CQoCollPath& a, const CQoCollPath& b)
                     { return a.toString().CompareNoCase(b.toString()) < 0; });
    return sorted;
}
} // namespace

void addUniquePath(CollPathArray& paths, const CQoCollPath& path)
{
    if (findPath(paths, path) < 0)
        paths.Add(path);
}

void addPaths(CollPathArray& paths, const CStringArray& texts)
{
    for (const CString& text : texts)
        paths.Add(CQoCollPath(text));
}

CString joinPaths(const CollPathArray& paths)
{
    CStringArray texts;
    for (const CQoCollPath& path : paths)
        texts.Add(path.toString());
    return texts.join(u",");
}

void diffPathArrays(const CollPathArray& newPaths,
                    const CollPathArray& oldPaths,
                    CollPathArray& added,
                    CollPathArray& removed)
{
    for (const CQoCollPath& path : sortedByText(newPaths))
    {
        if (findPath(oldPaths, path) < 0)
            added.Add(path);
    }
    for (const CQoCollPath& path : sortedByText(oldPaths))
    {
        if (findPath(newPaths, path) < 0)
            removed.Add(path);
    }
}
} // namespace qo
