#include "QoColl/Collection/QoCollection.h"

#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/RecordAhead.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Log.h"
#include "common/Profiler.h"

// Look-ups in a collection, and its end. Files are found through their folder: the path is taken
// apart, the tree is followed name by name, and the folder searches its sorted list. Loading is in
// QoCollectionLoad.cpp, the walk of the disk in ...Scan.cpp, building trees in ...Build.cpp,
// changes of the host in ...Changes.cpp, saving in ...Save.cpp.

CQoCollection CQoCollection::m_ownCollection;
CQoCollection CQoCollection::m_foreignCollection;
const char16_t* const CQoCollection::m_localDiskCollID = u"?localpath?";
const char16_t* const CQoCollection::m_searchResultCollID = u"?searchresult?";

namespace
{
/// A collection that no host wants anything of.
IQoScanHost& noHost()
{
    static IQoScanHost host;
    return host;
}
} // namespace

CQoCollection::CQoCollection() : m_scanHost(&noHost()) {}

void CQoCollection::setScanHost(IQoScanHost* host)
{
    m_scanHost = host ? host : &noHost();
}

CQoCollection::~CQoCollection()
{
    // Parents and children hold each other, so the tree must be released explicitly. Nothing is
    // logged here, since the host's logger may be gone.
    releaseZombies();
    CQoUtils::releaseHDDirs(m_rootDirs);
}

void CQoCollection::initGlobal()
{
    CLTManager::init();
}

void CQoCollection::cleanUpGlobal()
{
    using qo::log;
    log(qo::level::flow, u"CQoCollection::cleanUpGlobal start");
    log(qo::level::flow, u"CQoCollection::cleanUpGlobal clear own collection");
    m_ownCollection.clear(false);
    log(qo::level::flow, u"CQoCollection::cleanUpGlobal clear foreign collection");
    m_foreignCollection.clear(false);
    log(qo::level::flow, u"clearSubsets");
    CQoCollSubset::clearSubsets();
    log(qo::level::flow, u"CLTManager::cleanUp");
    CLTManager::cleanUp(true);
    log(qo::level::flow, u"CQoCollection::cleanUpGlobal end");
}

bool CQoCollection::existForeignCollection()
{
    return !m_foreignCollection.isEmpty();
}

void CQoCollection::resetCollectionsCheckState()
{
    m_ownCollection.resetCheckState();
    m_foreignCollection.resetCheckState();
}

void CQoCollection::ActivateProfilingFor(unsigned long mask)
{
    qo::Profiler::activate(u"QoKernel", mask);
}

void CQoCollection::DumpHpcs()
{
    qo::Profiler::dump();
}

void CQoCollection::ResetHpcs()
{
    qo::Profiler::reset();
}

int CQoCollection::getFileCount() const
{
    int count = 0;
    for (const auto& root : m_rootDirs)
        count += root->getRecFileCount();
    return count;
}

bool CQoCollection::hasMusicFiles() const
{
    for (const auto& root : m_rootDirs)
    {
        if (root->hasMusicFilesRec())
            return true;
    }
    return false;
}

void CQoCollection::copyFiles(QoFileDbItemArray& files) const
{
    files.Copy(m_fileDbItems);
}

boost::shared_ptr<CHDFile> CQoCollection::getFileByID(int id) const
{
    const qo::FilePath* const path = m_fileIdMap.find(id);
    return path ? getFileByPath(*path) : boost::shared_ptr<CHDFile>();
}

boost::shared_ptr<CHDFile> CQoCollection::getFileByVelmoraID(const CString& velmoraId) const
{
    const qo::LastingId wanted(velmoraId);
    for (const QoFileDbItemPtr& item : m_fileDbItems)
    {
        if (item->velmoraId == wanted)
            return getFileByPath(item->path);
    }
    return {};
}

boost::shared_ptr<CHDFile> CQoCollection::getFileByPath(const CQoCollPath& path) const
{
    const auto dir = getDir(path.getParent());
    return dir ? dir->getFile(path.toString()) : boost::shared_ptr<CHDFile>();
}

boost::shared_ptr<CHDFile> CQoCollection::getFileByPath(const CString& path) const
{
    return getFileByPath(CQoCollPath(path));
}

/// Zombies are few, so they are searched one by one.
boost::shared_ptr<CHDFile> CQoCollection::getZombieFile(const CQoCollPath& path) const
{
    for (const auto& file : m_zombieFiles)
    {
        if (path == file->getPath())
            return file;
    }
    return {};
}

boost::shared_ptr<CHDDirectory> CQoCollection::getDir(const CQoCollPath& path) const
{
    const auto root = path.isValid() ? getRootDir(path) : CHDDirectory::NullDir;
    if (!root)
        return CHDDirectory::NullDir;
    boost::shared_ptr<CHDDirectory> dir = root;
    for (const CString& name : path.relativeTo(root->getPath()))
    {
        dir = dir->findSubDir(name);
        if (!dir)
            break;
    }
    return dir;
}

boost::shared_ptr<CHDDirectory> CQoCollection::getDir(const CString& path) const
{
    return getDir(CQoCollPath(path));
}

boost::shared_ptr<CHDDirectory> CQoCollection::getDir(const char16_t* path) const
{
    return getDir(CQoCollPath(CString(path)));
}

boost::shared_ptr<CHDDirectory> CQoCollection::getRootDir(const CQoCollPath& path) const
{
    for (const auto& root : m_rootDirs)
    {
        if (path.isSubPathOrSame(root->getPath()))
            return root;
    }
    return CHDDirectory::NullDir;
}

/// Goes up from folder to folder until the tree has one.
boost::shared_ptr<CHDDirectory> CQoCollection::getParentDir(const CQoCollPath& path) const
{
    CQoCollPath above = path;
    while (!above.isEmpty())
    {
        above = above.getParent();
        if (const auto dir = getDir(above))
            return dir;
    }
    return CHDDirectory::NullDir;
}

void CQoCollection::getRootDirs(qo::CollPathArray& dirs) const
{
    dirs.RemoveAll();
    for (const auto& root : m_rootDirs)
        dirs.Add(root->getPath());
}

bool CQoCollection::isDirInCollection(const CQoCollPath& path) const
{
    return getRootDir(path) != nullptr;
}

bool CQoCollection::isRootDirInCollection(const CQoCollPath& path) const
{
    for (const auto& root : m_rootDirs)
    {
        if (root->hasSamePath(path))
            return true;
    }
    return false;
}

bool CQoCollection::isFilePathInCollection(const CQoCollPath& path) const
{
    return isDirInCollection(path.getParent());
}

/// Physical objects first: their release leaves logical objects unused, which cleanUp() then
/// removes.
void CQoCollection::clear(bool cleanLogical)
{
    qo::log(qo::level::flow, u"CQoCollection::clear start");
    m_marks.clear();
    releaseZombies();
    CQoUtils::releaseHDDirs(m_rootDirs);
    m_rootDirs.clear();
    m_pathsInfoMap.RemoveAll();
    m_fileDbItems.RemoveAll();
    clearFileDbItemsMaps();
    if (cleanLogical)
    {
        CLTManager::cleanUp(false);
        CQoCollSubset::refreshSubsets();
    }
    qo::log(qo::level::flow, u"CQoCollection::clear end");
}

void CQoCollection::clearCollection(IQoProgress*)
{
    clear(true);
}

/// What a zombie was linked to changes with its release, and with that what the pictures and texts
/// there belong to.
void CQoCollection::releaseZombieObjects()
{
    if (!CQoCollSubset::isFollowing())
        return releaseZombies();
    CPtrListT<CHDFile> files = m_zombieFiles;
    for (const auto& dir : m_zombieDirs)
        dir->getAllFiles(files);
    const CQoCollSubset::LTOwners owners = CQoCollSubset::ownersOf(files);
    releaseZombies();
    CQoCollSubset::recountAfterRelease(owners);
}

void CQoCollection::releaseZombies()
{
    for (const auto& dir : m_zombieDirs)
        CQoUtils::releaseHDDir(dir);
    m_zombieDirs.clear();
    for (const auto& file : m_zombieFiles)
        CQoUtils::releaseHDFile(file);
    m_zombieFiles.clear();
}

void CQoCollection::resetCheckState()
{
    for (const auto& root : m_rootDirs)
        root->resetCheckStateRec();
}

bool CQoCollection::checkDBLoaded() const
{
    return !m_dbPath.IsEmpty();
}

void CQoCollection::buildFileDbItemsMaps()
{
    clearFileDbItemsMaps();
    const qo::RecordAhead ahead(m_fileDbItems);
    int index = 0;
    for (const QoFileDbItemPtr& item : m_fileDbItems)
    {
        ahead.announce(index++);
        addToFileDbItemsMaps(item);
    }
}

void CQoCollection::addToFileDbItemsMaps(const QoFileDbItemPtr& item)
{
    m_fileIdMap.set(item->id, item->path);
}

void CQoCollection::removeFromFileDbItemsMaps(const QoFileDbItemPtr& item)
{
    m_fileIdMap.remove(item->id);
}

void CQoCollection::clearFileDbItemsMaps()
{
    m_fileIdMap.clear();
}
