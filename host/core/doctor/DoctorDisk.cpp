#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/doctor/Doctor.h"
#include "core/load/DiskChanges.h"
#include "core/load/RootWalk.h"
#include "core/load/UnreadFiles.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootGuard.h"
#include "core/roots/RootLister.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <QoKernel/Inside.h>

#include <algorithm>
#include <fstream>
#include <set>

namespace qo::host
{
namespace
{
/// The folders in which the files lie, each once, in the order of the files.
std::vector<CString> foldersOf(const std::vector<FoundFile>& files)
{
    std::vector<CString> folders;
    for (const FoundFile& file : files)
    {
        const int end = file.path.ReverseFind(u'\\');
        const std::u16string_view folder = file.path.view().substr(0, std::max(end, 0));
        if (folders.empty() || folders.back().view() != folder)
            folders.emplace_back(folder);
    }
    std::ranges::sort(folders, {}, [](const CString& folder) { return folder.view(); });
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    return folders;
}

/// Files whose names differ from that of the file before them in case alone.
std::vector<std::string> caseTwins(const std::vector<FoundFile>& files)
{
    std::vector<std::string> twins;
    for (std::size_t i = 1; i < files.size(); ++i)
    {
        if (compareNoCase(files[i - 1].path.view(), files[i].path.view()) == 0)
            twins.push_back(shownPath(files[i].path));
    }
    return twins;
}
} // namespace

void Doctor::lookAtRoots()
{
    const RootFolders roots;
    std::vector<std::string> away;
    std::set<CString> missing;
    for (const RootProblem& problem : checkRoots(roots.folders(), Session::databasePath()))
    {
        away.push_back(shownPath(problem.folder) + " (" + problem.cause + ")");
        missing.insert(problem.folder);
    }
    for (const CString& folder : roots.folders())
    {
        if (missing.contains(folder))
            continue;
        m_walked.Add(folder);
        lookAtRoom(folder, 0);
    }
    add("roots",
        away,
        "a root folder is away",
        "root folders are away",
        "plug the disk in, or take the folder out with \"qo roots rm\"");
}

void Doctor::compareWithDisk(ProgressReporter& progress)
{
    QoFileDbItemArray records;
    CQoCollection::m_ownCollection.copyFiles(records);
    RootLister lister(RootFolders().folders(), m_session.ignoredNames());
    UnreadFiles unread(CQoCollection::m_ownCollection, lister, {});
    const std::vector<FoundFile> found = RootWalk(m_walked, lister).files(progress);
    const auto isWalked = [this](const CString& path) { return isBelowAny(path, m_walked); };
    const auto changes =
        DiskChanges(m_session.scanHost(), unread).between(records, found, isWalked);
    if (progress.isCanceled())
        throw HostError(ExitCode::interrupted, "interrupted; nothing was changed");
    std::vector<std::string> gone;
    std::vector<std::string> fresh;
    std::vector<std::string> changed;
    std::vector<std::string> edited;
    for (const DiskChange& change : changes)
    {
        std::vector<std::string>& list = change.action == CQoFileChangeInfo::remove ? gone
                                         : change.isNew                             ? fresh
                                                                                    : changed;
        list.push_back(shownPath(change.path));
        if (&list == &changed && m_edited.contains(change.path))
            edited.push_back(shownPath(change.path));
    }
    add("gone",
        gone,
        "a record whose file is gone",
        "records whose files are gone",
        "\"qo scan --find-moved\" finds files that were moved, and takes the others out");
    add("new",
        fresh,
        "a file without a record",
        "files without a record",
        "\"qo scan\" reads them");
    add("changed",
        changed,
        "a file that has changed since it was read",
        "files that have changed since they were read",
        "\"qo scan\" reads them again");
    add("changed-edits",
        edited,
        "a file that has changed has edits that wait",
        "files that have changed have edits that wait",
        "\"qo tag show FILE\" shows both, \"qo tag write\" or \"qo tag revert\" settles it");
    add("case",
        caseTwins(found),
        "a file whose name differs from another one's in case alone, so it is left out",
        "files whose names differ from others' in case alone, so they are left out",
        "rename one of each two");
    const std::vector<CString> folders = foldersOf(found);
    lookAtTemporaries(folders);
    lookAtCovers(records);
    lookAtWatches(folders.size());
}

void Doctor::lookAtTemporaries(const std::vector<CString>& folders)
{
    std::vector<std::string> left;
    for (const CString& folder : folders)
    {
        const int count = m_mends ? clearTemporaries(folder) : countTemporaries(folder);
        left.insert(left.end(), static_cast<std::size_t>(count), shownPath(folder));
    }
    add("temporary",
        left,
        "a temporary file that a killed process left behind",
        "temporary files that killed processes left behind",
        "\"qo doctor --fix\" removes them",
        m_mends);
}

/// Pictures from tags lie in a cache; records name them.
void Doctor::lookAtCovers(const QoFileDbItemArray& records)
{
    std::set<CString> pictures;
    for (const QoFileDbItemPtr& item : records)
    {
        if (!item->picturePath.IsEmpty())
            pictures.insert(item->picturePath);
    }
    std::vector<std::string> missing;
    for (const CString& picture : pictures)
    {
        if (!fileSystem().exists(picture))
            missing.push_back(shownPath(picture));
    }
    add("covers",
        missing,
        "a cover that is missing from the cache",
        "covers that are missing from the cache",
        "\"qo scan --deep\" reads them from the tags again");
}

void Doctor::lookAtWatches(std::size_t folders)
{
    std::ifstream file("/proc/sys/fs/inotify/max_user_watches");
    std::size_t limit = 0;
    if (file >> limit && limit < folders)
        add("watches",
            {std::to_string(folders) + " folders"},
            "the system lets this user watch " + std::to_string(limit) +
                " folders, and the collection has more",
            "",
            "for \"qo watch\", as root: sysctl fs.inotify.max_user_watches=" +
                std::to_string(folders * 2));
}
} // namespace qo::host
