#include "platform/posix/FileAttributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

// Extended attributes hold access lists too, so copying all of them copies these.

namespace qo
{
namespace
{
/// The names of all extended attributes; none where the file system has no such attributes. False
/// on failure.
bool listXattrs(int descriptor, std::vector<std::string>& names)
{
    names.clear();
    const ssize_t listSize = ::flistxattr(descriptor, nullptr, 0);
    if (listSize <= 0)
        return listSize == 0 || errno == ENOTSUP;
    std::vector<char> list(static_cast<std::size_t>(listSize));
    const ssize_t got = ::flistxattr(descriptor, list.data(), list.size());
    if (got < 0)
        return false;
    for (const char* name = list.data(); name < list.data() + got; name += names.back().size() + 1)
        names.emplace_back(name);
    return true;
}

/// Copies the named attributes; the size is asked for first, since values may have any length.
bool copyXattrs(int from, const std::vector<std::string>& names, int to)
{
    std::vector<char> value;
    for (const std::string& name : names)
    {
        const ssize_t size = ::fgetxattr(from, name.c_str(), nullptr, 0);
        if (size < 0)
            return false;
        value.resize(static_cast<std::size_t>(size));
        const ssize_t length = ::fgetxattr(from, name.c_str(), value.data(), value.size());
        if (length < 0 ||
            ::fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(length), 0) != 0)
            return false;
    }
    return true;
}

/// Removes attributes that the other file does not have, such as an access list that a folder gives
/// to new files.
bool removeOtherXattrs(const std::vector<std::string>& wanted, int from)
{
    std::vector<std::string> names;
    if (!listXattrs(from, names))
        return false;
    for (const std::string& name : names)
    {
        if (std::find(wanted.begin(), wanted.end(), name) == wanted.end() &&
            ::fremovexattr(from, name.c_str()) != 0)
            return false;
    }
    return true;
}
} // namespace

bool copyAttributes(int from, const struct stat& st, int to)
{
    // The owner comes first, since changing it clears bits of the mode. Other access lists are
    // removed before the mode is set, which would be written into them.
    struct stat now;
    if (::fstat(to, &now) != 0)
        return false;
    const bool sameOwner = now.st_uid == st.st_uid && now.st_gid == st.st_gid;
    if (!sameOwner && ::fchown(to, st.st_uid, st.st_gid) != 0)
        return false;
    std::vector<std::string> names;
    return listXattrs(from, names) && removeOtherXattrs(names, to) &&
           ::fchmod(to, st.st_mode & 07777) == 0 && copyXattrs(from, names, to);
}
} // namespace qo
