#include "core/plan/MoveText.h"

#include "core/base/SystemPath.h"

#include <QoKernel/Kernel.h>

#include <algorithm>

namespace qo::host
{
namespace
{
constexpr std::size_t longestRunId = 64;
} // namespace

// A name at a time, since a device may have a letter of its own and the text knows none.
std::string pathInText(const std::string& path)
{
    // Most paths stand for themselves.
    if (std::all_of(
            path.begin(), path.end(), [](char c) { return c >= ' ' && c <= '~' && c != '\\'; }))
        return path;
    std::string text;
    for (std::size_t at = 0; at < path.size();)
    {
        const std::size_t slash = std::min(path.find('/', at), path.size());
        text += toUtf8(DriveMap::nameFromSystem(std::string_view(path).substr(at, slash - at)));
        if (slash < path.size())
            text += '/';
        at = slash + 1;
    }
    return text;
}

std::string pathFromText(const std::string& text)
{
    if (text.empty() || text[0] != '/' || text.find('\\') != std::string::npos)
        return {};
    std::string collection = "C:" + text;
    std::replace(collection.begin(), collection.end(), '/', '\\');
    return toSystemPath(fromUtf8(collection));
}

namespace movetext
{
std::string line(const Json& object)
{
    return dump(object) + "\n";
}

Json parse(std::string_view line)
{
    Json object = Json::parse(line, nullptr, false);
    return object.is_object() ? object : Json();
}

Json fromMark(const FileMark& mark)
{
    return Json::array({mark.device, mark.inode, mark.size, mark.modified});
}

bool readMark(const Json& object, const char* key, FileMark& mark)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_array() || found->size() != 4)
        return false;
    const Json& list = *found;
    if (!list[0].is_number_unsigned() || !list[1].is_number_unsigned() ||
        !list[2].is_number_unsigned() || !list[3].is_number_integer())
        return false;
    mark = {list[0], list[1], list[2], list[3]};
    return mark.size >= 0;
}

Json fromPaths(const std::vector<std::string>& paths)
{
    Json list = Json::array();
    for (const std::string& path : paths)
        list.push_back(pathInText(path));
    return list;
}

bool readPaths(const Json& object, const char* key, std::vector<std::string>& paths)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_array())
        return false;
    for (const Json& item : *found)
    {
        paths.push_back(item.is_string() ? pathFromText(item.get<std::string>()) : "");
        if (!isPlainPath(paths.back()))
            return false;
    }
    return true;
}

bool readPath(const Json& object, const char* key, std::string& path)
{
    path = pathFromText(textOf(object, key));
    return isPlainPath(path);
}

std::string textOf(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

bool isRunId(const std::string& text)
{
    constexpr std::string_view allowed =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_";
    return !text.empty() && text.size() <= longestRunId &&
           text.find_first_not_of(allowed) == std::string::npos;
}
} // namespace movetext
} // namespace qo::host
