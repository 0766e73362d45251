#pragma once

#include "common/CollPath.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace qo
{
/// The folders that the system never removes by itself, as they stand when it is made: output
/// folders, root folders of both collections, the home folder and those of the user in it, and the
/// kernel's own. Known by their paths and, where they exist, by what they are, so that another name
/// for one of them does not help. Mount points, drives and shares count without being listed.
class ProtectedFolders
{
public:
    ProtectedFolders();
    /// True as well for paths that leave a doubt, as with "..".
    bool has(const CQoCollPath& folder) const;
    /// Whether one of them lies below the folder.
    bool hasBelow(const CQoCollPath& folder) const;

private:
    void add(const CString& folder);

    CollPathArray m_paths;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> m_identities; ///< device and inode
};
} // namespace qo
