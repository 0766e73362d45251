#include "devices/base/Holders.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

// /proc/1234/fd/5 is a link to what the process has open; "cwd" and "exe" are links likewise.

namespace fs = std::filesystem;

namespace qo::host
{
namespace
{
bool leadsTo(const fs::path& link, const std::function<bool(const std::string&)>& isMeant)
{
    std::error_code error;
    const fs::path target = fs::read_symlink(link, error);
    return !error && isMeant(target.string());
}

bool holds(const fs::path& process, const std::function<bool(const std::string&)>& isMeant)
{
    if (leadsTo(process / "cwd", isMeant) || leadsTo(process / "exe", isMeant))
        return true;
    std::error_code error;
    const fs::directory_iterator files(process / "fd", error);
    return !error && std::any_of(begin(files),
                                 end(files),
                                 [&](const fs::directory_entry& file)
                                 { return leadsTo(file.path(), isMeant); });
}
} // namespace

std::vector<std::string> holdersOf(const std::function<bool(const std::string& path)>& isMeant)
{
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator at("/proc", error), last; !error && at != last; at.increment(error))
    {
        const std::string id = at->path().filename().string();
        const bool isProcess = id.find_first_not_of("0123456789") == std::string::npos;
        if (!isProcess || id == std::to_string(::getpid()) || !holds(at->path(), isMeant))
            continue;
        std::string name;
        std::ifstream comm(at->path() / "comm");
        std::getline(comm, name);
        found.push_back(name.append(" (").append(id).append(")"));
    }
    std::ranges::sort(found);
    return found;
}

std::string holderWords(const std::vector<std::string>& holders)
{
    if (holders.empty())
        return "another program uses it, and the system does not say which";
    std::string names;
    for (std::size_t i = 0; i < holders.size(); ++i)
    {
        names += i == 0 ? "" : i + 1 == holders.size() ? " and " : ", ";
        names += holders[i];
    }
    return names + (holders.size() == 1 ? " uses it" : " use it");
}
} // namespace qo::host
