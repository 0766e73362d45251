#include "platform/FolderNames.h"

#include "platform/DriveMap.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/TemporaryNames.h"
#include "platform/posix/OpenFolder.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace qo
{
/// Stops after enough names, so a folder with a hundred thousand entries costs one read.
int firstNames(const CString& folder, std::size_t most, std::vector<CString>& names)
{
    names.clear();
    const std::string real = toSystemPath(folder);
    if (real.empty())
        return ENOENT;
    const OpenFolder dir(::opendir(real.c_str()));
    if (!dir)
        return errno;
    while (names.size() < most)
    {
        errno = 0;
        const dirent* entry = ::readdir(dir.get());
        if (!entry)
            return errno;
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && !isTemporaryName(name))
            names.push_back(DriveMap::nameFromSystem(name));
    }
    return 0;
}

bool isTrashFolder(const CString& folder, const CString& name)
{
    // A trash at the top of a file system is ".Trash" with folders of users in it, or ".Trash-" and
    // the number of its user; the trash of the home folder is recognised by its content.
    constexpr std::u16string_view top = u".Trash";
    const std::u16string_view text = name.view();
    if (text.starts_with(top))
    {
        const std::u16string_view rest = text.substr(top.size());
        return rest.empty() ||
               (rest.size() > 1 && rest[0] == u'-' &&
                rest.find_first_not_of(u"0123456789", 1) == std::u16string_view::npos);
    }
    if (text != u"Trash")
        return false;
    const CString trash = (folder.view().ends_with(u'\\') ? folder : folder + u"\\") + name;
    return fileSystem().isDirectory(trash + u"\\info") &&
           fileSystem().isDirectory(trash + u"\\files");
}

bool isPassedOver(const std::vector<CString>& ownFolders,
                  const CString& folder,
                  const CString& name)
{
    const CString path = folder + name;
    return std::find(ownFolders.begin(), ownFolders.end(), path) != ownFolders.end() ||
           isTrashFolder(folder, name);
}
} // namespace qo
