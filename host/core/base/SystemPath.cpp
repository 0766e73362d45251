#include "core/base/SystemPath.h"

#include <algorithm>
#include <string_view>

namespace qo::host
{
bool isPlainPath(const std::string& path)
{
    if (path == "/")
        return true;
    if (path.empty() || path[0] != '/' || path.find('\0') != std::string::npos)
        return false;
    for (std::size_t at = 1; at <= path.size();)
    {
        const std::size_t slash = std::min(path.find('/', at), path.size());
        const std::string_view part = std::string_view(path).substr(at, slash - at);
        if (part.empty() || part == "." || part == "..")
            return false;
        at = slash + 1;
    }
    return true;
}

bool isBelow(const std::string& path, const std::string& folder)
{
    if (folder == "/")
        return path.size() > 1;
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string parentOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string inFolder(const std::string& folder, const std::string& name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}
} // namespace qo::host
