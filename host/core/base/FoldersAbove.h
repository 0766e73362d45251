#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// Remembers the folders above a path with their permissions, so that a folder that is removed
/// together with its last file can be made again.
class FoldersAbove
{
public:
    /// An absolute system path.
    explicit FoldersAbove(const std::string& path);

    /// Makes those that are gone, with the permissions they had. The error number, 0 for success.
    int makeAgain() const;

private:
    std::vector<std::pair<std::string, mode_t>> m_folders; ///< the nearest last
};
} // namespace qo::host
