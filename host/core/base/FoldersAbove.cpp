#include "core/base/FoldersAbove.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace qo::host
{
FoldersAbove::FoldersAbove(const std::string& path)
{
    for (std::size_t slash = path.rfind('/'); slash != 0 && slash != std::string::npos;
         slash = path.rfind('/', slash - 1))
    {
        const std::string folder = path.substr(0, slash);
        struct stat st;
        if (::stat(folder.c_str(), &st) == 0)
            m_folders.emplace_back(folder, st.st_mode & 07777);
    }
    std::reverse(m_folders.begin(), m_folders.end());
}

int FoldersAbove::makeAgain() const
{
    for (const auto& [folder, mode] : m_folders)
    {
        if (::mkdir(folder.c_str(), mode) == 0)
            ::chmod(folder.c_str(), mode);
        else if (errno != EEXIST)
            return errno;
    }
    return 0;
}
} // namespace qo::host
