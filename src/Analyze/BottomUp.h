#pragma once

#include "Physical/HDDirectory.h"
#include "common/QoProgress.h"

#include <vector>

namespace qo
{
inline bool isCanceled(IQoProgress* progress)
{
    return progress && progress->isCanceled();
}

/// Visits each directory behind its sub-directories, asking for a cancel ahead of each of these.
/// False once a cancel is seen or a visit returns false. Needs no stack per level.
template <class Visit>
bool walkBottomUp(const boost::shared_ptr<CHDDirectory>& top, IQoProgress* progress, Visit visit)
{
    struct Level
    {
        boost::shared_ptr<CHDDirectory> directory;
        int nextSubDir = 0;
    };
    std::vector<Level> levels{{top}};
    while (!levels.empty())
    {
        Level& level = levels.back();
        const CPtrListT<CHDDirectory>& subDirs = level.directory->getSubDirs();
        if (level.nextSubDir < subDirs.GetSize())
        {
            if (isCanceled(progress))
                return false;
            levels.push_back({subDirs[level.nextSubDir++]});
            continue;
        }
        if (!visit(level.directory))
            return false;
        levels.pop_back();
    }
    return true;
}
} // namespace qo
