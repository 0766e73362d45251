#include "core/playlist/SongPlace.h"

#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Kernel.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace qo::host
{
namespace
{
constexpr std::string_view plainInPath = "/-._~!$&'()*+,;=@";
constexpr std::string_view plainInAddress = "/-._~!$&'()*+,;=@:?#[]%";

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isFileAddress(const std::string& place)
{
    constexpr std::string_view scheme = "file:/";
    return place.size() >= scheme.size() &&
           std::equal(scheme.begin(),
                      scheme.end(),
                      place.begin(),
                      [](char a, char b) { return a == std::tolower(b); });
}

bool isDrivePath(const std::string& place)
{
    return place.size() > 2 && isLetter(place[0]) && place[1] == ':' &&
           (place[2] == '\\' || place[2] == '/');
}

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

/// "file:///a%20b", "file:/a%20b" and "file://localhost/a%20b" are "/a b"; "file://nas/a" is
/// "//nas/a".
std::string pathOfAddress(const std::string& place)
{
    std::string rest = place.substr(std::string_view("file:").size());
    constexpr std::string_view local = "//localhost/";
    if (rest.starts_with(local))
        rest.erase(0, local.size() - 1);
    else if (rest.starts_with("///"))
        rest.erase(0, 2);
    return percentDecoded(rest);
}

/// How a plain path is reached from a plain folder, which is "" for "/".
///
///   /m/a.mp3 from /m/lists is ../a.mp3
std::string relativeTo(const std::string& folder, const std::string& path)
{
    const auto [inFolder, inPath] =
        std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    auto shared = static_cast<std::size_t>(inPath - path.begin());
    const bool isWholeName = inFolder == folder.end() && inPath != path.end() && *inPath == '/';
    if (!isWholeName)
        shared = path.rfind('/', shared == 0 ? 0 : shared - 1);
    std::string place;
    for (std::size_t at = shared; at < folder.size(); ++at)
        place += folder[at] == '/' ? "../" : "";
    return place + path.substr(shared + 1);
}

/// A path seen from the folder, and what else its bytes may mean.
void addPaths(SongPlace& meaning, const std::string& path, const std::string& folder)
{
    const auto add = [&](const std::string& bytes)
    {
        if (bytes.find('\0') == std::string::npos)
            meaning.paths.push_back(
                absolutePath(bytes.starts_with('/') ? bytes : inFolder(folder, bytes)));
    };
    add(path);
    if (!isUtf8(path))
        add(toUtf8(fromCharset(path, "windows-1252")));
}
} // namespace

bool isAddress(const std::string& place)
{
    const std::size_t colon = place.find(':');
    return isFileAddress(place) ||
           (colon != std::string::npos && colon > 1 && place.compare(colon, 3, "://") == 0 &&
            std::all_of(place.begin(),
                        place.begin() + static_cast<std::ptrdiff_t>(colon),
                        [](char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-'; }));
}

SongPlace meaningOf(const std::string& place, const std::string& folder)
{
    SongPlace meaning;
    const bool isFile = isFileAddress(place);
    if (place.empty() || (isAddress(place) && !isFile))
        return meaning;
    const std::string path = isFile ? pathOfAddress(place) : place;
    if (isFile && isDrivePath(path.substr(1)))
        meaning.foreign = withSlashes(path.substr(1));
    else if (isDrivePath(path) || path.starts_with('\\') || (isFile && path.starts_with("//")))
        meaning.foreign = withSlashes(path);
    if (!meaning.foreign.empty())
        return meaning;
    addPaths(meaning, path, folder);
    if (!isFile && path.find('\\') != std::string::npos)
        addPaths(meaning, withSlashes(path), folder);
    if (!isFile && path.find('%') != std::string::npos)
        addPaths(meaning, percentDecoded(path), folder);
    return meaning;
}

std::string placeFor(const std::string& path, PlaceStyle style, const std::string& folder)
{
    if (style == PlaceStyle::address || path.find_first_of("\r\n") != std::string::npos)
        return addressOf(path);
    if (style == PlaceStyle::absolute)
        return path;
    const std::string place = relativeTo(folder == "/" ? "" : folder, path);
    // Seen alone, the name must not be taken for a path of another system or an address.
    const bool isClear = !isAddress(place) && !isDrivePath(place) && !place.starts_with('\\');
    return isClear ? place : "./" + place;
}

std::string addressOf(const std::string& place)
{
    if (isAddress(place))
        return percentEncoded(place, plainInAddress);
    if (isDrivePath(place))
        return "file:///" + place.substr(0, 2) +
               percentEncoded(withSlashes(place.substr(2)), plainInPath);
    if (place.starts_with("\\\\"))
        return "file:" + percentEncoded(withSlashes(place), plainInPath);
    return (place.starts_with('/') ? "file://" : "") + percentEncoded(place, plainInPath);
}
} // namespace qo::host
