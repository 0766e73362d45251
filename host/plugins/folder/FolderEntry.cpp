#include "plugins/folder/FolderEntry.h"

#include "plugins/base/PluginFailure.h"

#include <boost/make_shared.hpp>

#include <cerrno>

namespace qo::host
{
boost::shared_ptr<FolderEntry> ownEntry(const PluginResultPtr& result, const CString& root)
{
    const auto entry = boost::dynamic_pointer_cast<FolderEntry>(result);
    const bool isOwn = entry && (entry->GetPath() == root ||
                                 entry->GetPath().view().starts_with(addBackslash(root).view()));
    return isOwn ? entry : nullptr;
}

boost::shared_ptr<FolderEntry> entryAt(const CString& path, const CString& name, CString& cause)
{
    NameInfo info;
    int error = fileSystem().look(path, info);
    const bool isFolder = info.kind == NameInfo::Kind::directory;
    if (error == 0 && !isFolder && info.kind != NameInfo::Kind::regular)
        error = EINVAL;
    if (error == 0)
        return boost::make_shared<FolderEntry>(path, name, isFolder, info.size);
    cause = failureAt(path, error);
    return {};
}
} // namespace qo::host
