#include "Analyze/NSAnalyzer.h"
#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Collection/FolderOfFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoFileUtils.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/RecordAhead.h"
#include "QoColl/Collection/StoredFiles.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Statistics/QoStatistics.h"
#include "common/Log.h"
#include "common/QoProgress.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/TextPool.h"

// createColl() in three passes over the records that changed: cleanupColl() takes what is no longer
// valid out of the tree, createHDObjects() adds files and folders, and, after the analysis of
// names, createLTObjects() makes the logical objects.

namespace
{
using qo::log;
namespace level = qo::level;

/// The number of passes over all records, for the range of the progress.
constexpr int buildPasses = 3;
/// The same for a collection that is being read.
constexpr int storedPasses = 2;

constexpr std::ptrdiff_t cacheLine = 64;

/// Finds the files of one folder for records in path order, mostly without a search.
class FileCursor
{
public:
    FileCursor() = default;
    explicit FileCursor(const boost::shared_ptr<CHDDirectory>& dir) : m_dir(dir) {}

    /// The file after the one that was found last, if it belongs to the record; else null.
    const boost::shared_ptr<CHDFile>* findNext(const QoFileDbItemPtr& item)
    {
        if (!m_dir)
            return nullptr;
        const CPtrListT<CHDFile>& files = m_dir->getFiles();
        if (m_next >= files.GetSize() || files[m_next]->getDbItem() != item)
            return nullptr;
        announceFile(files);
        return &files[m_next++];
    }
    /// Searches the folder; null when it has no file of the record's path.
    const boost::shared_ptr<CHDFile>* find(const QoFileDbItemPtr& item)
    {
        if (!m_dir)
            return nullptr;
        const CPtrListT<CHDFile>& files = m_dir->getFiles();
        const int last = files.GetSize();
        const auto byPath = [](const qo::FilePath& path, const boost::shared_ptr<CHDFile>& file)
        { return CHDFile::cmpFilePath(path, file); };
        if (!files.findByKey(item->path, 0, last, byPath, m_next))
            return nullptr;
        return &files[m_next++];
    }

private:
    // Asks the processor to load a file that will be needed soon.
    void announceFile(const CPtrListT<CHDFile>& files) const
    {
        constexpr int filesAhead = 4;
        if (m_next + filesAhead >= files.GetSize())
            return;
        const auto* const file = reinterpret_cast<const char*>(files[m_next + filesAhead].get());
        __builtin_prefetch(file);
        __builtin_prefetch(file + cacheLine);
    }

    boost::shared_ptr<CHDDirectory> m_dir;
    int m_next = 0; ///< index at which the next record's file is expected
};

/// Other files have no logical objects.
void createLTObjectsOf(const boost::shared_ptr<CHDFile>& file)
{
    switch (file->getFileType())
    {
    case CHDFile::FT_Music:
        CLTManager::createMusicLTObjects(boost::static_pointer_cast<CHDMusicFile>(file));
        break;
    case CHDFile::FT_Picture:
        CLTManager::createPictureLTObjects(boost::static_pointer_cast<CHDPictureFile>(file));
        break;
    case CHDFile::FT_Text:
        CLTManager::createLyricsLTObjects(boost::static_pointer_cast<CHDTextFile>(file));
        break;
    case CHDFile::FT_Other:
        break;
    }
}

/// Gives texts that many of the changed records have in common one buffer each, as those have that
/// come from the database.
void shareTexts(const QoFileDbItemArray& files)
{
    constexpr CString QoFileDbItem::*fields[] = {&QoFileDbItem::artist,
                                                 &QoFileDbItem::album,
                                                 &QoFileDbItem::genre,
                                                 &QoFileDbItem::trackNumber,
                                                 &QoFileDbItem::year,
                                                 &QoFileDbItem::picturePath};
    qo::TextPool pool;
    for (const QoFileDbItemPtr& item : files)
    {
        if (item->dbState == qo::dbState::unchanged)
            continue;
        item->path.shareFolder(pool);
        for (CString QoFileDbItem::*const field : fields)
            (*item).*field = pool.intern(((*item).*field).view());
    }
}
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
    // Folders between the two are made when they are missing.
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
    if (asRootDir)
        CQoCollSubset::stopFollowing(); // files may get another root folder
    for (int i = 0; i < m_rootDirs.GetSize(); ++i)
    {
        // A root folder below the new one becomes its sub-folder.
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

void CQoCollection::createColl(QoFileDbItemArray& files,
                               const qo::CollPathArray& dirsToAnalyze,
                               IQoProgress* progress)
{
    const std::uint32_t start = qo::systemClock().tickCount();
    log(level::flow, u"CQoCollection::createColl : start");
    m_scanHost->beforeNames(m_fileDbItems);
    progress->setStage(IQoProgress::stageBuild);
    progress->setRange(IQoProgress::rangeKnown, buildPasses * files.GetSize());
    cleanupColl(files, progress);
    CLTManager::cleanUp(false);
    shareTexts(files);
    createHDObjects(files, progress);
    detectLogicalStuff(dirsToAnalyze, files, progress);
    createLTObjects(files, progress);
    progress->setRange(IQoProgress::rangeUnknown, 0);
    followBuilt(files);
    CQoStatistics::logStatistics(*this);
    log(level::timing,
        u"CQoCollection::createColl : end (took %d millis)",
        qo::systemClock().tickCount() - start);
}

void CQoCollection::takeStored(qo::StoredFiles& stored, IQoProgress* progress)
{
    for (QoFileDbItemArray files; stored.next(files, *progress);)
        takeStored(files);
}

void CQoCollection::takeStored(const QoFileDbItemArray& files)
{
    m_fileDbItems.Append(files);
    for (const QoFileDbItemPtr& item : files)
        addToFileDbItemsMaps(item);
}

void CQoCollection::buildStored(qo::StoredFiles& stored, bool drop, IQoProgress* progress)
{
    const std::uint32_t start = qo::systemClock().tickCount();
    progress->setStage(IQoProgress::stageBuild);
    for (QoFileDbItemArray files; stored.next(files, *progress);)
    {
        if (m_fileDbItems.IsEmpty())
            progress->setRange(IQoProgress::rangeKnown, storedPasses * stored.count());
        takeStored(files);
        if (drop)
            dropStrangers(files);
        createHDObjects(files, progress);
        createLTObjects(files, progress);
    }
    progress->setRange(IQoProgress::rangeUnknown, 0);
    followBuilt(m_fileDbItems);
    CQoStatistics::logStatistics(*this);
    log(level::timing,
        u"CQoCollection::buildStored : end (took %d millis)",
        qo::systemClock().tickCount() - start);
}

/// Subsets in use follow with these files; others are forgotten. Only the two collections of the
/// program are in subsets.
void CQoCollection::followBuilt(const QoFileDbItemArray& files)
{
    const bool isShown = this == &m_ownCollection || this == &m_foreignCollection;
    const bool inSubsets = isShown && CQoCollSubset::isFollowing();
    CPtrListT<CHDFile> built;
    if (inSubsets || CQoCheckObject::wasAnyChecked())
    {
        for (const QoFileDbItemPtr& item : files)
        {
            const bool isGone = item->dbState == qo::dbState::deleted;
            if (const auto file = isGone ? CQoUtils::File() : getFileByPath(item->path))
                built.add(file);
        }
    }
    m_marks.join(built);
    if (inSubsets)
        CQoCollSubset::refreshSubsets(built);
    else
        CQoCollSubset::refreshSubsets();
}

void CQoCollection::cleanupColl(QoFileDbItemArray& files, IQoProgress* progress)
{
    // In a tree without files there is nothing to find.
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

/// Records outside of all root folders, and second records of one path, are marked as deleted here,
/// so the save removes their rows.
void CQoCollection::createHDObjects(QoFileDbItemArray& files, IQoProgress* progress)
{
    qo::FolderOfFile folder;
    bool isInCollection = false;
    boost::shared_ptr<CHDDirectory> dir;
    const qo::RecordAhead ahead(files);
    for (int i = 0; i < files.GetSize(); ++i)
    {
        ahead.announce(i);
        QoFileDbItemPtr& item = files[i];
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
        else if (item->dbState == qo::dbState::deleted)
            log(level::error, u"trying to create deleted file??? skyping: %s", item->path);
        else if (!CHDDirectory::addFile(dir, CHDFile::createHDFile(item)))
        {
            log(level::error, u"found duplicated db file: %s", item->path);
            item->dbState = qo::dbState::deleted;
        }
    }
}

void CQoCollection::detectLogicalStuff(const qo::CollPathArray& dirs,
                                       const QoFileDbItemArray&,
                                       IQoProgress* progress)
{
    for (const CQoCollPath& path : dirs)
    {
        if (progress->isCanceled())
            return;
        boost::shared_ptr<CHDDirectory> dir = getDir(path);
        if (!dir)
            continue;
        CNSAnalyzer::detectUnrelatedAssocs(dir, progress);
        CNSAnalyzer::createOtherNamePatternsAndLTObjects(dir, progress);
    }
}

/// Files are found again through their folder: the records are in path order, so a cursor mostly
/// needs no search.
void CQoCollection::createLTObjects(const QoFileDbItemArray& files, IQoProgress* progress)
{
    qo::FolderOfFile folder;
    FileCursor cursor;
    const qo::RecordAhead ahead(files);
    for (int i = 0; i < files.GetSize(); ++i)
    {
        ahead.announce(i);
        const QoFileDbItemPtr& item = files[i];
        if (progress->isCanceled())
            return;
        progress->step(1);
        if (item->dbState == qo::dbState::deleted)
            continue;
        const boost::shared_ptr<CHDFile>* file = cursor.findNext(item);
        if (!file)
        {
            if (folder.moveTo(item->path))
                cursor = FileCursor(getDir(folder.path()));
            file = cursor.find(item);
        }
        if (file)
            createLTObjectsOf(*file);
        else
            log(level::error, u"couldnt find hdfile in coll : %s", item->path);
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

void CQoCollection::removeFileFromColl(const CString& path, bool removeEmptyDirs)
{
    const boost::shared_ptr<CHDFile> file = getFileByPath(path);
    if (!file)
        return;
    // The record may change or vanish; whoever holds the file shall see its tag as it was.
    file->keepTag();
    CQoCollSubset::removeFile(file);
    m_marks.leave(file);
    m_zombieFiles.add(file);
    boost::shared_ptr<CHDDirectory> dir = file->getParentDir();
    // The file keeps its parent, so that a zombie still knows where it was.
    dir->takeOutFile(file);
    while (dir->getItemCount() == 0 && !dir->isRootDir())
    {
        const boost::shared_ptr<CHDDirectory> parent = dir->getParentDir();
        if (removeEmptyDirs && dir->getPath().isLocalDisk())
            CQoFileUtils::checkRemoveEmptyDir(CQoUtils::getRealPath(dir->getPath()), false);
        parent->removeSubDir(dir);
        dir = parent;
    }
}
