#include "common/FileUtils.h"

#include "common/CollPath.h"
#include "common/LogLevel.h"
#include "common/Settings.h"
#include "common/TraceLog.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "platform/TreeRemoval.h"

#include <cerrno>

namespace
{
using qo::TraceLog;
namespace level = qo::level;

/// The longest path that hosts have room for.
constexpr int systemTempBuffer = 0x104;
constexpr int rootLength = 3; // "C:\"

const char16_t* tempFolderName(int id)
{
    switch (id)
    {
    case CFileUtils::tempQorganizer:
        return u"Qorganizer";
    case CFileUtils::tempLivePlay:
        return u"LivePlay";
    default:
        return nullptr;
    }
}

bool isSame(const qo::FileInfo& a, const qo::FileInfo& b)
{
    return a.device == b.device && a.inode == b.inode;
}

/// The root of the system and the home folder.
std::vector<qo::FileInfo> protectedFolders()
{
    std::vector<qo::FileInfo> folders;
    for (const CString& path : {CString(u"C:\\"), qo::specialFolders().home()})
    {
        qo::FileInfo info;
        if (qo::fileSystem().info(path, qo::Spelling::exact, info) == 0)
            folders.push_back(info);
    }
    return folders;
}

/// Whether a folder must not be removed. Folders are compared by device and inode, so that the home
/// folder is recognised by any name.
bool isProtected(const CString& path, const qo::FileInfo& info)
{
    const CQoCollPath parsed(path);
    if (parsed.isEmpty())
        return true;
    for (const CString& name : parsed.getComponents())
    {
        if (name.IsEmpty() || name.Find(u'\\') >= 0 || name == u"." || name == u"..")
            return true;
    }
    for (const qo::FileInfo& kept : protectedFolders())
    {
        if (isSame(info, kept))
            return true;
    }
    qo::FileInfo other;
    const CString parent = parsed.getParent().toString();
    return qo::fileSystem().info(parent, qo::Spelling::exact, other) != 0 ||
           other.device != info.device;
}

/// "Temp" is what hosts expect when the system has no such folder.
CString findSystemTempDir()
{
    const CString folder = qo::specialFolders().systemTemp();
    qo::FileInfo info;
    int error = qo::fileSystem().info(folder, qo::Spelling::anyCase, info);
    if (error == 0 && info.kind != qo::FileKind::directory)
        error = ENOTDIR;
    if (folder.GetLength() >= systemTempBuffer)
        error = ENAMETOOLONG;
    if (error == 0)
        return folder;
    TraceLog::trace(level::error,
                    u"GetWindowsTempDir : GetTempPath failed. Error %s",
                    CFileUtils::GetLastErrorText(error));
    return u"Temp";
}
} // namespace

bool CFileUtils::AssureDirExists(const CString& path)
{
    qo::FileInfo info;
    if (qo::fileSystem().info(path, qo::Spelling::exact, info) != 0)
    {
        if (qo::fileSystem().makeDirectory(path) != 0)
        {
            logFolderNotMade(path);
            return false;
        }
        return true;
    }
    if (info.kind != qo::FileKind::directory)
    {
        TraceLog::trace(level::error, u"AssureDirExists: '%s' exists but is not a folder", path);
        return false;
    }
    return true;
}

void CFileUtils::logFolderNotMade(const CString& path)
{
    TraceLog::trace(level::error, u"AssureDirExists: Error creating dir '%s'", path);
}

bool CFileUtils::RemoveDirectoryRec(const CString& path)
{
    // A closing backslash would lead through a link.
    CString folder = path;
    while (folder.GetLength() > rootLength && folder[folder.GetLength() - 1] == u'\\')
        folder = qo::removeBackslash(folder);
    qo::IFileSystem& files = qo::fileSystem();
    qo::FileInfo info;
    // The path itself must be a folder and not a link to one.
    const bool isFolder = files.info(folder, qo::Spelling::exact, info) == 0 &&
                          info.kind == qo::FileKind::directory && !files.isLink(folder);
    if (isFolder && isProtected(folder, info))
    {
        TraceLog::trace(level::error, u"RemoveDirectoryRec : %s must not be removed", path);
        return false;
    }
    std::vector<qo::TreeRemovalFailure> failures;
    const int error = isFolder ? qo::removeTree(folder, protectedFolders(), failures) : ENOTDIR;
    if (error != 0 && failures.empty())
    {
        TraceLog::trace(level::error,
                        u"RemoveDirectoryRec : %s is not a directory (maybe was deleted shortly)",
                        path);
        return true;
    }
    for (const qo::TreeRemovalFailure& failure : failures)
        TraceLog::trace(level::error,
                        failure.isFolder ? u"RemoveDirectoryRec failed to remove dir %s : %s"
                                         : u"RemoveDirectoryRec failed to remove file %s : %s",
                        failure.path,
                        GetLastErrorText(failure.error));
    return error == 0;
}

bool CFileUtils::IsDirEmpty(const CString& path, bool recursive)
{
    std::vector<qo::DirEntry> entries;
    // A folder that cannot be listed has no entries; one that is listed in part may have some.
    (void)qo::fileSystem().list(path, entries);
    for (const qo::DirEntry& entry : entries)
    {
        const bool isFolder = entry.info.kind == qo::FileKind::directory && !entry.info.isLink;
        if (!isFolder || !recursive || !IsDirEmpty(qo::combinePath(path, entry.name), true))
        {
            TraceLog::trace(level::step,
                            u"CFileUtils::IsDirEmpty : dir %s not empty : found %s",
                            path,
                            entry.name);
            return false;
        }
    }
    return true;
}

CString CFileUtils::GetWindowsTempDir()
{
    static const CString folder = findSystemTempDir();
    return folder;
}

CString CFileUtils::GetTempDir(int id)
{
    CString base = CQoSettings::get(CQoSettings::TempFolder);
    if (base.IsEmpty())
        base = GetWindowsTempDir();
    const char16_t* const name = tempFolderName(id);
    if (!name)
        return base;
    const CString folder = qo::combinePath(base, name);
    if (qo::fileSystem().makeDirectories(folder) == 0)
        return folder;
    TraceLog::trace(level::error,
                    u"Cannot create temp subfolder '%s', use base folder '%s' instead.",
                    folder,
                    base);
    return base;
}

CString CFileUtils::GetLastErrorText(int error)
{
    return qo::errorText(error);
}

namespace qo
{
CString addBackslash(const CString& path)
{
    return path.IsEmpty() || path[path.GetLength() - 1] == u'\\' ? path : path + u'\\';
}

CString removeBackslash(const CString& path)
{
    const int last = path.GetLength() - 1;
    return last >= 0 && path[last] == u'\\' ? path.Left(last) : path;
}

CString combinePath(const CString& folder, const CString& name, const char16_t* extension)
{
    CString path = addBackslash(folder) + name;
    if (extension && *extension)
    {
        path += u'.';
        path += extension;
    }
    return path;
}

void sanitizeName(CString& name)
{
    for (const char16_t c : std::u16string_view(u"*?\\~/<>|\":"))
        name.Replace(c, u'_');
    name.Replace(u"&", u"and");
}

CString uniqueTempPath(int folderId, const CString& foreignName)
{
    // Made safe with the id before it, so that the whole keeps to the limit of a name.
    const CString id = guidToText(systemClock().newGuid());
    return combinePath(CFileUtils::GetTempDir(folderId), safeLocalName(id + u" " + foreignName));
}
} // namespace qo
