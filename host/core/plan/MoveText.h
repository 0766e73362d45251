#pragma once

#include "core/base/Json.h"
#include "core/plan/ReorganizePlan.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// What plans and journals, both texts of JSON lines, write and read alike. Readers answer false
/// for what is missing or of another kind, and for paths that are not plain.
namespace qo::host::movetext
{
/// The object as one line with its end. Bytes that are no valid UTF-8 are replaced.
std::string line(const Json& object);
/// One line; no object: null.
Json parse(std::string_view line);

Json fromMark(const FileMark& mark);
bool readMark(const Json& object, const char* key, FileMark& mark);
Json fromPaths(const std::vector<std::string>& paths);
bool readPaths(const Json& object, const char* key, std::vector<std::string>& paths);
bool readPath(const Json& object, const char* key, std::string& path);
/// "" for an absent one.
std::string textOf(const Json& object, const char* key);

/// Whether a text can be the id of a run, which becomes part of file names.
bool isRunId(const std::string& text);

/// Calls back for each line of the content without its end; a last line that has none counts too.
/// Stops with false when the callback does.
template <class Callback>
bool forEachLine(std::string_view content, const Callback& callback)
{
    while (!content.empty())
    {
        const std::size_t end = std::min(content.find('\n'), content.size());
        if (!callback(content.substr(0, end)))
            return false;
        content.remove_prefix(std::min(end + 1, content.size()));
    }
    return true;
}
} // namespace qo::host::movetext
