#pragma once

#include "Physical/HDDirectory.h"
#include "common/QoProgress.h"

#include <vector>

namespace qo
{
/// Whether the user cancelled; a null progress never cancels.
inline bool isCanceled(IQoProgress* progress)
{
    return progress && progress->isCanceled();
}

/// Visits each directory after its sub-directories and asks for a cancel before each of these.
/// Returns false as soon as a cancel is seen or a visit returns false; nothing further is visited
/// then. The levels are kept in a vector instead of the call stack, so no depth of folders
/// overflows it.
///
/// Example: Music/{A/{1,2},B} is visited as 1, 2, A, B, Music.
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
