#pragma once

#include "platform/FileSystem.h"
#include "types/Export.h"

#include <vector>

namespace qo
{
/// Gives a walk the entries of one folder after another. Whoever wants a walk to pass over some
/// files, or to hear of folders that cannot be read, hands one of these to it.
class QO_API IFolderLister
{
public:
    virtual ~IFolderLister() = default;
    /// As IFileSystem::list(), on the thread that walks.
    virtual int list(const CString& folder, std::vector<DirEntry>& entries) = 0;
};
} // namespace qo
