#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/FolderOfFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/QoFileDbItem.h"
#include "common/Log.h"
#include "common/QoProgress.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace
{
using qo::log;
namespace level = qo::level;

/// The passes over all records that createColl announces to the progress.
constexpr int buildPasses = 2;
} // namespace

void CQoCollection::addRootDirs(const CStringArray& paths, const CQoPathsInfoMap& info)
{
    qo::CollPathArray parsed;
    qo::addPaths(parsed, paths);
    addRootDirs(parsed, info);
}

void CQoCollection::addRootDirs(const qo::CollPathArray& paths, const CQoPathsInfoMap& info)
{
    for (const CQoCollPath& path : paths)
    {
        findCreateDir(path, true);
        const CString key = path.toString();
        m_pathsInfoMap.SetAt(key, info.getType(key));
    }
}

void CQoCollection::addDirRec(boost::shared_ptr<CHDDirectory>& dir,
                              boost::shared_ptr<CHDDirectory>& parent)
{
    const CStringArray between = dir->getPath().relativeTo(parent->getPath());
    boost::shared_ptr<CHDDirectory> level = parent;
    for (int i = 0; i + 1 < between.GetSize(); ++i)
    {
        boost::shared_ptr<CHDDirectory> next = level->findSubDir(between[i]);
        if (!next)
            next = CHDDirectory::createDir(level->getPath().child(between[i]), level);
        level = next;
    }
    CHDDirectory::addSubDir(level, dir);
}

boost::shared_ptr<CHDDirectory> CQoCollection::findCreateDir(const CQoCollPath& path,
                                                             bool asRootDir)
{
    if (const auto known = getDir(path))
        return known;
    boost::shared_ptr<CHDDirectory> dir = CHDDirectory::createDir(path, CHDDirectory::NullDir);
    for (int i = 0; i < m_rootDirs.GetSize(); ++i)
    {
        boost::shared_ptr<CHDDirectory> root = m_rootDirs[i];
        if (root->getPath().isSubPathOf(path))
        {
            m_rootDirs.RemoveAt(i);
            m_rootDirs.add(dir);
            addDirRec(root, dir);
            return dir;
        }
        if (path.isSubPathOf(root->getPath()))
        {
            if (asRootDir)
                return CHDDirectory::NullDir;
            addDirRec(dir, root);
            return dir;
        }
    }
    if (asRootDir)
        m_rootDirs.add(dir);
    return dir;
}

void CQoCollection::createColl(QoFileDbItemArray& files, IQoProgress* progress)
{
    const std::uint32_t start = qo::systemClock().tickCount();
    log(level::flow, u"CQoCollection::createColl : start");
    progress->setStage(IQoProgress::stageBuild);
    progress->setRange(IQoProgress::rangeKnown, buildPasses * files.GetSize());
    cleanupColl(files, progress);
    createHDObjects(files, progress);
    progress->setRange(IQoProgress::rangeUnknown, 0);
    log(level::timing,
        u"CQoCollection::createColl : end (took %d millis)",
        qo::systemClock().tickCount() - start);
}

void CQoCollection::cleanupColl(QoFileDbItemArray& files, IQoProgress* progress)
{
    // A tree without files holds none of the records: nothing can be found in it.
    const bool treeHasFiles = getFileCount() > 0;
    for (const QoFileDbItemPtr& item : files)
    {
        if (progress->isCanceled())
            return;
        progress->step(1);
        if (treeHasFiles && item->dbState != qo::dbState::added)
            removeFileFromColl(item->path, false);
    }
}

void CQoCollection::createHDObjects(QoFileDbItemArray& files, IQoProgress* progress)
{
    qo::FolderOfFile folder;
    bool isInCollection = false;
    boost::shared_ptr<CHDDirectory> dir;
    for (QoFileDbItemPtr& item : files)
    {
        if (progress->isCanceled())
            return;
        progress->step(1);
        if (item->dbState == qo::dbState::deleted)
            continue;
        if (folder.moveTo(item->path))
        {
            isInCollection = isDirInCollection(folder.path());
            dir = isInCollection ? findCreateDir(folder.path(), false) : CHDDirectory::NullDir;
        }
        if (!isInCollection)
        {
            log(level::error, u"file not in root dirs, will be removed: %s", item->path);
            item->dbState = qo::dbState::deleted;
        }
        else if (dir->getFile(item->path))
        {
            log(level::error, u"found duplicated db file: %s", item->path);
            item->dbState = qo::dbState::deleted;
        }
        else if (item->dbState == qo::dbState::deleted)
            log(level::error, u"trying to create deleted file??? skyping: %s", item->path);
        else
            CHDDirectory::addFile(dir, CHDFile::createHDFile(item));
    }
}

bool CQoCollection::canDetectLogicalStuff() const
{
    if (this == &m_ownCollection)
        return true;
    if (m_rootDirs.GetSize() != 1)
        return false;
    const CQoCollPath::EDeviceType type = m_rootDirs[0]->getPath().getType();
    return type >= CQoCollPath::drive && type <= CQoCollPath::physicalPlugin;
}

void CQoCollection::removeFileFromColl(const CString& path, bool)
{
    const boost::shared_ptr<CHDFile> file = getFileByPath(path);
    if (!file)
        return;
    m_zombieFiles.add(file);
    boost::shared_ptr<CHDDirectory> dir = file->getParentDir();
    // The file keeps its parent, so that a zombie still tells where it was.
    dir->takeOutFile(file);
    while (dir->getItemCount() == 0 && !dir->isRootDir())
    {
        const boost::shared_ptr<CHDDirectory> parent = dir->getParentDir();
        parent->removeSubDir(dir);
        dir = parent;
    }
}
