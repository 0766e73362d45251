#include "core/base/UserName.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
namespace
{
CString nameOfUser(uid_t user)
{
    constexpr std::size_t mostBytes = 1 << 20;
    passwd entry = {};
    passwd* found = nullptr;
    std::vector<char> texts(1024);
    while (::getpwuid_r(user, &entry, texts.data(), texts.size(), &found) == ERANGE &&
           texts.size() < mostBytes)
        texts.resize(texts.size() * 2);
    return fromUtf8(found ? std::string(found->pw_name) : std::to_string(user));
}

std::optional<uid_t> numberOfOwner(const CString& path)
{
    struct stat info = {};
    if (::stat(toSystemPath(path).c_str(), &info) != 0)
        return {};
    return info.st_uid;
}
} // namespace

CString ownerOf(const CString& path)
{
    const std::optional<uid_t> owner = numberOfOwner(path);
    return owner ? nameOfUser(*owner) : CString();
}

CString userBeside(const CString& path)
{
    const uid_t user = ::geteuid();
    return numberOfOwner(path) == user ? CString() : nameOfUser(user);
}
} // namespace qo::host
