#include "core/load/UnreadFiles.h"

#include "core/base/HostFiles.h"

#include <algorithm>
#include <cerrno>

namespace qo::host
{
namespace
{
/// 0 also for what is there but no longer a file.
int lookUp(const CString& path, bool& isFile)
{
    FileInfo info;
    const int error = fileSystem().info(CQoUtils::getRealPath(path), Spelling::exact, info);
    isFile = error == 0 && info.kind == FileKind::regular;
    return error;
}

bool tellsAbsence(int error, bool isFile)
{
    return error == ENOENT || error == ENOTDIR || (error == 0 && !isFile);
}
} // namespace

bool isKnownToBeGone(const CString& path)
{
    bool isFile = false;
    const int error = lookUp(path, isFile);
    return tellsAbsence(error, isFile);
}

UnreadFiles::UnreadFiles(const CQoCollection& collection,
                         RootLister& lister,
                         const std::vector<RootProblem>& givenUp)
    : m_collection(collection), m_lister(lister)
{
    // A walk passes over the program's own folders.
    for (const CString& own : specialFolders().ownFolders())
        m_passedOver.Add(addBackslash(own));
    for (const RootProblem& problem : givenUp)
        m_passedOver.Add(addBackslash(problem.folder));
}

bool UnreadFiles::isGone(const CString& path)
{
    const CQoCollPath place(path);
    const auto isAbove = [&path](const CString& folder)
    { return path.view().starts_with(folder.view()); };
    if (!place.isLocalDisk() || !m_collection.isFilePathInCollection(place) ||
        std::any_of(m_passedOver.begin(), m_passedOver.end(), isAbove))
        return true;
    bool isFile = false;
    const int error = lookUp(path, isFile);
    if (tellsAbsence(error, isFile))
        return true;
    if (error == 0 && m_lister.isPassedOver(path))
    {
        m_leftOut.Add(path);
        return true;
    }
    count(path, error);
    return false;
}

int UnreadFiles::listError(const CString& folder)
{
    const auto [known, isNew] = m_listErrors.try_emplace(folder, 0);
    if (isNew)
    {
        std::vector<DirEntry> entries;
        known->second = fileSystem().list(CQoUtils::getRealPath(folder), entries);
    }
    return known->second;
}

/// Counts for the highest folder that cannot be listed, since that one keeps all below from sight.
void UnreadFiles::count(const CString& path, int error)
{
    CQoCollPath above = CQoCollPath(path).getParent();
    CString culprit = above.toString();
    for (; m_collection.isDirInCollection(above); above = above.getParent())
    {
        if (const int cause = listError(above.toString()))
        {
            culprit = above.toString();
            error = cause;
        }
    }
    Folder& folder = m_folders[culprit];
    folder.error = error;
    ++folder.files;
}

/// A folder that has just gone is no trouble.
bool UnreadFiles::isOfNoKnownFile(const CString& folder, int error) const
{
    return !tellsAbsence(error, true) && m_folders.find(folder) == m_folders.end();
}

std::vector<std::string> UnreadFiles::folderRemarks() const
{
    std::map<int, CStringArray> folders;
    for (const auto& [path, error] : m_lister.errors())
    {
        if (isOfNoKnownFile(path, error))
            folders[error].Add(path);
    }
    std::vector<std::string> all;
    for (const auto& [error, paths] : folders)
    {
        const std::string cause = " could not be read (" + errorWords(error) +
                                  "), and what is there is not in the collection";
        all.push_back(fileRemark(paths, "a folder" + cause, "folders" + cause));
    }
    return all;
}

std::vector<std::string> UnreadFiles::sentences() const
{
    std::vector<std::string> all;
    for (const auto& [path, folder] : m_folders)
        all.push_back("the folder " + shownPath(path) + " could not be read" +
                      (folder.error == 0 ? "" : ": " + errorWords(folder.error)) + "; " +
                      (folder.files == 1 ? "a file" : std::to_string(folder.files) + " files") +
                      " in it that the collection knows " + (folder.files == 1 ? "stays" : "stay"));
    for (const auto& [path, error] : m_lister.ruleErrors())
        all.push_back("the file " + shownPath(path) + " could not be read: " + errorWords(error) +
                      "; its patterns were not followed");
    const std::string leftOut =
        fileRemark(m_leftOut,
                   "a file leaves the collection though it is there, as \"IgnoredNames\", a "
                   ".qoignore or a link leaves it out now",
                   "files leave the collection though they are there, as \"IgnoredNames\", a "
                   ".qoignore or a link leaves them out now");
    if (!leftOut.empty())
        all.push_back(leftOut);
    return all;
}
} // namespace qo::host
