#include "platform/posix/PosixSpecialFolders.h"

#include "platform/FileSystem.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string_view>
#include <vector>

// Folders come from the XDG variables, from the file user-dirs.dirs, or from the usual names below
// the home folder, in this order.

namespace qo
{
namespace
{
constexpr const char* appName = "Velmora";

/// The value of a variable; "" for a relative one, which the conventions ask to ignore.
std::string absoluteVariable(const char* name)
{
    // The process sets its environment before it starts threads.
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value && value[0] == '/' ? value : std::string();
}

/// HOME, else the home folder of the user's account, else "/".
std::string homeFolder()
{
    const std::string home = absoluteVariable("HOME");
    if (!home.empty())
        return home;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16384);
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir && found->pw_dir[0] == '/' ? found->pw_dir : "/";
}

std::string join(const std::string& folder, const std::string& name)
{
    return folder.back() == '/' ? folder + name : folder + "/" + name;
}

/// The file in which the desktop keeps the names of the user's folders in his language.
std::ifstream openUserDirs()
{
    const std::string config = absoluteVariable("XDG_CONFIG_HOME");
    return std::ifstream(
        join(config.empty() ? join(homeFolder(), ".config") : config, "user-dirs.dirs"));
}

/// The folder in a line NAME="$HOME/Music" or NAME="/srv/music"; "" for a line with another name or
/// form.
std::string userDirsValue(const std::string& line, const std::string& name)
{
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line.compare(start, name.size() + 2, name + "=\"") != 0)
        return {};
    const std::size_t begin = start + name.size() + 2;
    const std::size_t end = line.find('"', begin);
    std::string value = end == std::string::npos ? std::string() : line.substr(begin, end - begin);
    if (value.compare(0, 5, "$HOME") == 0)
        value = homeFolder() + value.substr(5);
    return !value.empty() && value[0] == '/' ? value : std::string();
}

std::string userDirsEntry(const std::string& name)
{
    std::ifstream file = openUserDirs();
    for (std::string line; std::getline(file, line);)
    {
        std::string value = userDirsValue(line, name);
        if (!value.empty())
            return value;
    }
    return {};
}

/// All folders in user-dirs.dirs.
std::vector<std::string> userDirsEntries()
{
    constexpr std::string_view suffix = "_DIR";
    std::vector<std::string> values;
    std::ifstream file = openUserDirs();
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t start = line.find("XDG_");
        const std::size_t end = line.find(suffix, start == std::string::npos ? line.size() : start);
        if (end == std::string::npos)
            continue;
        std::string value = userDirsValue(line, line.substr(start, end + suffix.size() - start));
        if (!value.empty())
            values.push_back(std::move(value));
    }
    return values;
}
} // namespace

/// The folder of the application: below the base if one is set, else below the folder of the
/// variable or its default.
CString PosixSpecialFolders::appFolder(const char* variable,
                                       const char* fallback,
                                       const char16_t* belowBase) const
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_base.IsEmpty())
            return *belowBase ? m_base + u"\\" + belowBase : m_base;
    }
    std::string base = absoluteVariable(variable);
    if (base.empty())
        base = join(homeFolder(), fallback);
    return fromSystemPath(join(base, appName));
}

/// A folder of the user, by the same order, with user-dirs.dirs after the variable.
CString PosixSpecialFolders::userFolder(const std::string& name, const char* fallback) const
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_base.IsEmpty())
            return fromSystemPath(join(toSystemPath(m_base), fallback));
    }
    std::string folder = absoluteVariable(name.c_str());
    if (folder.empty())
        folder = userDirsEntry(name);
    return fromSystemPath(folder.empty() ? join(homeFolder(), fallback) : folder);
}

CString PosixSpecialFolders::data() const
{
    return appFolder("XDG_DATA_HOME", ".local/share", u"");
}

CString PosixSpecialFolders::state() const
{
    return appFolder("XDG_STATE_HOME", ".local/state", u"state");
}

CString PosixSpecialFolders::cache() const
{
    return appFolder("XDG_CACHE_HOME", ".cache", u"cache");
}

CString PosixSpecialFolders::music() const
{
    return userFolder("XDG_MUSIC_DIR", "Music");
}

CString PosixSpecialFolders::videos() const
{
    return userFolder("XDG_VIDEOS_DIR", "Videos");
}

CString PosixSpecialFolders::home() const
{
    return fromSystemPath(homeFolder());
}

std::vector<CString> PosixSpecialFolders::userFolders() const
{
    std::vector<CString> folders{music(), videos()};
    for (const std::string& folder : userDirsEntries())
        folders.push_back(fromSystemPath(folder));
    for (const char* name : {"Desktop",
                             "Documents",
                             "Downloads",
                             "Music",
                             "Pictures",
                             "Public",
                             "Templates",
                             "Videos"})
        folders.push_back(fromSystemPath(join(homeFolder(), name)));
    return folders;
}

CString PosixSpecialFolders::systemTemp() const
{
    const std::string folder = absoluteVariable("TMPDIR");
    return fromSystemPath(folder.empty() ? "/tmp" : folder);
}

CString PosixSpecialFolders::program() const
{
    // The link to the running program; "/" if the system does not tell.
    std::string path(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t slash = path.rfind('/');
    return fromSystemPath(slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash));
}

void PosixSpecialFolders::setBase(const CString& folder)
{
    const std::lock_guard lock(m_mutex);
    m_base = folder;
    if (m_base.GetLength() > 3 && m_base[m_base.GetLength() - 1] == u'\\')
        m_base = m_base.Left(m_base.GetLength() - 1);
}
} // namespace qo
