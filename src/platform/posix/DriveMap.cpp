#include "platform/DriveMap.h"

#include "platform/FileSystem.h"
#include "types/CharClass.h"

#include <algorithm>
#include <mutex>
#include <string>

// Names are converted character by character: decode() reads one from UTF-8, encodeName() writes
// the collection form of a name, decodeComponents() is the reverse for a whole path. DriveMap
// itself only finds the prefix (drive or server) that belongs to a mount point.
//
//   bytes 61 FF 62 (no valid UTF-8)  ->  "a" U+F0FF "b"  ->  the same bytes

namespace qo
{
namespace
{
constexpr char16_t byteBlock = 0xF000;
constexpr char16_t byteBlockEnd = 0xF0FF;
constexpr char32_t noCharacter = 0xFFFFFFFF;

/// Bytes that are never written as themselves in a collection path.
bool isMappedByte(unsigned char byte)
{
    return byte < 0x20 || byte == 0x7F || byte == '\\' || byte >= 0x80;
}

/// The first character of the bytes and its length; noCharacter if they are not valid UTF-8.
char32_t decode(std::string_view bytes, std::size_t& length)
{
    const auto lead = static_cast<unsigned char>(bytes[0]);
    length = lead < 0x80   ? 1
             : lead < 0xC2 ? 0
             : lead < 0xE0 ? 2
             : lead < 0xF0 ? 3
             : lead < 0xF5 ? 4
                           : 0;
    if (length == 0 || length > bytes.size())
        return noCharacter;
    char32_t c = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0) != 0x80)
            return noCharacter;
        c = c << 6 | (next & 0x3FU);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isValid = c >= least[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    return isValid ? c : noCharacter;
}

/// As UTF-16.
void appendUnits(char16_t*& out, char32_t c)
{
    if (c < 0x10000)
        *out++ = static_cast<char16_t>(c);
    else
    {
        *out++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        *out++ = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

/// Writes the collection form of one name; never more units than the name has bytes.
void encodeName(std::string_view name, char16_t*& out)
{
    while (!name.empty())
    {
        std::size_t length = 0;
        const char32_t c = decode(name, length);
        const bool isPlain = c != noCharacter &&
                             !(c < 0x80 && isMappedByte(static_cast<unsigned char>(c))) &&
                             !(c >= byteBlock && c <= byteBlockEnd);
        if (isPlain)
            appendUnits(out, c);
        else
        {
            length = c == noCharacter ? 1 : length;
            for (std::size_t i = 0; i < length; ++i)
                *out++ = static_cast<char16_t>(byteBlock + static_cast<unsigned char>(name[i]));
        }
        name.remove_prefix(length);
    }
}

/// The reverse of decode().
void appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80)
        out += static_cast<char>(c);
    else if (c < 0x800)
    {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

/// Whether the components are exactly what encodeName() makes of their system form.
bool isOneForm(std::u16string_view components, std::string_view system)
{
    std::u16string again(system.size(), u'\0');
    char16_t* out = again.data();
    while (!system.empty())
    {
        const std::size_t end = std::min(system.find('/'), system.size());
        encodeName(system.substr(0, end), out);
        if (end < system.size())
            *out++ = u'\\';
        system.remove_prefix(std::min(end + 1, system.size()));
    }
    return components ==
           std::u16string_view(again.data(), static_cast<std::size_t>(out - again.data()));
}

/// Appends the system form of the components; false if there is none.
bool decodeComponents(std::u16string_view text, std::string& out)
{
    const std::size_t start = out.size();
    bool hasBytes = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char16_t c = text[i];
        if (c == u'\\')
            out += '/';
        else if (c < 0x20 || c == 0x7F || c == u'/')
            return false;
        else if (c < 0x80)
            out += static_cast<char>(c);
        else if (c >= byteBlock && c <= byteBlockEnd)
        {
            // Only what encodeName() produces: anything else would be a second form of a name, or a
            // way to hide dots from a check.
            const auto byte = static_cast<unsigned char>(c - byteBlock);
            if (byte == 0 || !isMappedByte(byte))
                return false;
            out += static_cast<char>(byte);
            hasBytes = true;
        }
        else if (c >= 0xD800 && c <= 0xDFFF)
        {
            if (c > 0xDBFF || i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF)
                return false;
            appendUtf8(out, 0x10000 + ((c - 0xD800U) << 10) + (text[i + 1] - 0xDC00U));
            ++i;
        }
        else
            appendUtf8(out, c);
    }
    // If mapped bytes together form a character, then that character is the only form.
    return !hasBytes || isOneForm(text, std::string_view(out).substr(start));
}

/// Whether the path begins with that drive.
bool isDrive(std::u16string_view path, char16_t letter)
{
    return path.size() >= 2 && path[1] == u':' && toLower(path[0]) == toLower(letter) &&
           (path.size() == 2 || path[2] == u'\\');
}

/// Whether the path is the prefix or lies below it, without regard to case.
bool hasPrefix(std::u16string_view path, std::u16string_view prefix)
{
    return startsNoCase(path, prefix) &&
           (path.size() == prefix.size() || path[prefix.size()] == u'\\');
}

/// "/media/stick/" and "/media/stick" are one mount point; "/" becomes "".
std::string withoutClosingSlash(std::string path)
{
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}
} // namespace

DriveMap& DriveMap::instance()
{
    // Never destroyed: paths are converted until the last line of the log is written.
    static auto* map = new DriveMap();
    return *map;
}

/// Changes the mount point of a prefix, or adds one. An entry is never removed, so letters stay
/// reserved.
void DriveMap::setPoint(const CString& prefix, const CString& deviceId, const std::string& point)
{
    for (Mount& mount : m_mounts)
    {
        if (mount.prefix.CompareNoCase(prefix) == 0)
        {
            mount.point = withoutClosingSlash(point);
            return;
        }
    }
    m_mounts.push_back({prefix, deviceId, withoutClosingSlash(point)});
    m_hasMounts = true;
}

char16_t DriveMap::addDevice(const CString& deviceId, const std::string& mountPoint)
{
    const std::unique_lock lock(m_mutex);
    char16_t letter = u'D';
    for (const Mount& mount : m_mounts)
    {
        if (mount.deviceId.IsEmpty())
            continue;
        if (mount.deviceId == deviceId)
        {
            letter = mount.prefix[0];
            break;
        }
        letter = std::max(letter, static_cast<char16_t>(mount.prefix[0] + 1));
    }
    if (letter > u'Z')
        return 0;
    setPoint(CString(letter) + u":", deviceId, mountPoint);
    return letter;
}

void DriveMap::removeDevice(const CString& deviceId)
{
    const std::unique_lock lock(m_mutex);
    for (Mount& mount : m_mounts)
    {
        if (!deviceId.IsEmpty() && mount.deviceId == deviceId)
            mount.point.clear();
    }
}

void DriveMap::mapServer(const CString& serverAndShare, const std::string& mountPoint)
{
    const std::unique_lock lock(m_mutex);
    const int last = serverAndShare.GetLength() - 1;
    const bool closed = last >= 0 && serverAndShare[last] == u'\\';
    setPoint(closed ? serverAndShare.Left(last) : serverAndShare, CString(), mountPoint);
}

std::string DriveMap::toSystem(const CString& path) const
{
    const std::u16string_view text = path.view();
    std::string out;
    out.reserve(text.size() + 16);
    std::size_t prefixLength = 2;
    if (!isDrive(text, u'C'))
    {
        const std::shared_lock lock(m_mutex);
        // The longest prefix wins: \\server\share before \\server.
        const Mount* best = nullptr;
        for (const Mount& mount : m_mounts)
        {
            const bool holds = !mount.point.empty() && hasPrefix(text, mount.prefix.view());
            if (holds && (!best || mount.prefix.GetLength() > best->prefix.GetLength()))
                best = &mount;
        }
        if (!best)
            return {};
        out = best->point;
        prefixLength = static_cast<std::size_t>(best->prefix.GetLength());
    }
    if (!decodeComponents(text.substr(prefixLength), out))
        return {};
    return out.empty() ? "/" : out;
}

CString DriveMap::fromSystem(const std::string& path) const
{
    std::string_view rest = path;
    CString prefix(u"C:");
    if (m_hasMounts)
    {
        const std::shared_lock lock(m_mutex);
        // The longest mount point wins: /media/stick/inner before /media/stick.
        std::size_t best = 0;
        for (const Mount& mount : m_mounts)
        {
            const std::string& point = mount.point;
            const bool holds = !point.empty() && path.compare(0, point.size(), point) == 0 &&
                               (path.size() == point.size() || path[point.size()] == '/');
            if (holds && point.size() > best)
            {
                best = point.size();
                prefix = mount.prefix;
            }
        }
        rest.remove_prefix(best);
    }
    const int prefixLength = prefix.GetLength();
    CString result = prefix;
    char16_t* const start = result.GetBuffer(prefixLength + static_cast<int>(rest.size()) + 2);
    char16_t* out = start + prefixLength;
    while (!rest.empty())
    {
        const std::size_t slash = std::min(rest.find('/'), rest.size());
        if (slash > 0)
        {
            *out++ = u'\\';
            encodeName(rest.substr(0, slash), out);
        }
        rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
    // The root of a drive is "C:\", not "C:".
    if (out == start + prefixLength)
        *out++ = u'\\';
    result.ReleaseBuffer(static_cast<int>(out - start));
    return result;
}

CString DriveMap::nameFromSystem(std::string_view name)
{
    CString result;
    char16_t* const start = result.GetBuffer(static_cast<int>(name.size()));
    char16_t* out = start;
    encodeName(name, out);
    result.ReleaseBuffer(static_cast<int>(out - start));
    return result;
}

std::string toSystemPath(const CString& path)
{
    return DriveMap::instance().toSystem(path);
}

CString fromSystemPath(const std::string& path)
{
    return DriveMap::instance().fromSystem(path);
}
} // namespace qo
