#include "core/runs/FolderGuard.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <algorithm>
#include <cerrno>

namespace qo::host
{
FolderGuard::FolderGuard(std::vector<std::string> bases) : m_bases(std::move(bases)) {}

bool FolderGuard::isBase(const std::string& folder) const
{
    return std::find(m_bases.begin(), m_bases.end(), folder) != m_bases.end();
}

bool FolderGuard::isBelowBase(const std::string& folder) const
{
    return std::any_of(m_bases.begin(),
                       m_bases.end(),
                       [&](const std::string& base) { return isBelow(folder, base); });
}

int FolderGuard::check(const std::string& folder)
{
    if (m_bases.empty() || m_checked.contains(folder))
        return 0;
    const bool isFree = isBase(folder);
    NameInfo info;
    if (const int error = isFree ? disk::lookAtFolder(folder, info) : disk::look(folder, info))
        return error;
    if (info.kind != NameInfo::Kind::directory)
        return info.kind == NameInfo::Kind::link ? ELOOP : ENOTDIR;
    if (!isFree)
    {
        if (const int error = isBelowBase(folder) ? check(parentOf(folder)) : EPERM)
            return error;
    }
    m_checked.insert(folder);
    return 0;
}

std::string FolderGuard::reason(const std::string& folder, int error) const
{
    if (error == ELOOP)
        return "a link leads out of the folder " + folder;
    if (error != ENOENT)
        return "the folder " + folder + " cannot be used: " + errorWords(error);
    // The uppermost tells most: it may be a disk that is away.
    std::string missing = folder;
    while (missing != "/" && disk::isNothingAt(parentOf(missing)))
        missing = parentOf(missing);
    return "the folder " + missing + " is not there";
}
} // namespace qo::host
