#pragma once

#include "common/CollPath.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace qo
{
/// The folders that the library never removes by itself, as they are when the object is made:
/// output folders, root folders of both collections, the home folder and the user's folders in it,
/// and the kernel's own. They are recognised by path and, where they exist, by device and inode, so
/// that another name for one of them (a link) does not help. Mount points, drives and shares are
/// protected without being listed.
class ProtectedFolders
{
public:
    ProtectedFolders();
    /// Whether the folder is protected; true also for paths that are ambiguous, such as one with
    /// "..".
    bool has(const CQoCollPath& folder) const;
    /// Whether a protected folder is below this one.
    bool hasBelow(const CQoCollPath& folder) const;

private:
    void add(const CString& folder);

    CollPathArray m_paths;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> m_identities; ///< device and inode
};
} // namespace qo
