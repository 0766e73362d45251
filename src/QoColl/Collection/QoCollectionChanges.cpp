#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoFileChangeInfoList.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/ScanLookup.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "common/Log.h"
#include "common/MakeObject.h"
#include "common/QoProgress.h"

#include <unordered_set>

// What a host may change in a loaded collection: files that came, went or moved
// (applyQoFileChanges), and other root folders (setRootDirs). Each change sets the state of one
// record; then all changed records are built and saved together.

namespace
{
using qo::log;
namespace level = qo::level;
namespace dbState = qo::dbState;

/// Gives the record the parameters of an imported file, of music or of movies.
void setImportedMediaType(QoFileDbItem& item)
{
    QorganizerDef::VelmoraFileParams params;
    params.mediaFileType = (item.flags & qo::fileFlag::music) != 0
                               ? CVelmoraMediaFileTypes::typeImportedMusicFiles
                               : CVelmoraMediaFileTypes::typeImportedMovies;
    item.params = CVelmoraFileParamsUtils::ToDbParam(params);
}

using Records = std::unordered_set<const QoFileDbItem*>;

/// Several records may share a path while a batch of moves is applied. Returns the one that had the
/// path before the batch. Example: the moves a to b and b to c. After the first one two records
/// have the path b; for the second one the record that was not changed yet is meant.
int recordToChange(const QoFileDbItemArray& items, int index, const Records& changed)
{
    if (changed.empty() || !changed.contains(items[index].get()))
        return index;
    const auto isOther = [&](int i) {
        return i >= 0 && i < items.GetSize() &&
               items[i]->path.CompareNoCase(items[index]->path) == 0;
    };
    for (const int step : {-1, 1})
    {
        for (int i = index + step; isOther(i); i += step)
        {
            if (!changed.contains(items[i].get()))
                return i;
        }
    }
    return index;
}

const qo::FileInfo* seenOf(const CQoFileChangeInfo& change)
{
    return change.m_seen ? &*change.m_seen : nullptr;
}

/// A file that is there again although its record is marked as deleted (that deletion could not be
/// saved): the record is used again. False if it is not marked.
bool revive(QoFileDbItem& item)
{
    if (item.dbState != dbState::deleted)
        return false;
    item.dbState = item.id != 0 ? dbState::modified : dbState::added;
    return true;
}

/// Inserts the record by its path; changes mostly come in that order.
void addChanged(QoFileDbItemPtr& item, QoFileDbItemArray& changed)
{
    if (changed.IsEmpty() || item->path.CompareNoCase(changed[changed.GetUpperBound()]->path) > 0)
        changed.Add(item);
    else
        CQoCollDbUtils::addQoDbFileItem(item, changed, false);
}
} // namespace

bool CQoCollection::applyQoFileChanges(const CQoFileChangeInfoList& changes,
                                       const CStringArray& dirsToAnalyze,
                                       IQoProgress* progress)
{
    m_loadedSuccesfully = true;
    if (!checkDBLoaded())
        return false;
    log(level::flow, u"CQoCollection::applyQoFileChanges : %d files", changes.GetSize());
    progress->setStage(IQoProgress::stageBuild);
    progress->setRange(IQoProgress::rangeKnown, changes.GetSize());
    QoFileDbItemArray changed;
    // A record that was moved may be found again under its new path; it must be built only once.
    Records known;
    qo::ScanLookup records(m_fileDbItems);
    for (const CQoFileChangeInfo* change : changes)
    {
        if (progress->isCanceled())
            break;
        progress->step(1);
        progress->setCurrentItem(change->m_path, IQoProgress::itemFilePath);
        int index = 0;
        QoFileDbItemPtr item;
        if (records.find(change->m_path, index))
        {
            index = recordToChange(m_fileDbItems, index, known);
            item = m_fileDbItems[index];
        }
        if (applyChange(*change, item, index, progress) && known.insert(item.get()).second)
            addChanged(item, changed);
    }
    if (!progress->isCanceled())
    {
        qo::CollPathArray dirs;
        validateRootDirs(dirsToAnalyze, dirs);
        log(level::flow,
            u"CQoCollection::applyQoFileChanges : creating/destroying data for changed %d files",
            changed.GetSize());
        createColl(changed, dirs, progress);
    }
    if (!progress->isCanceled())
        log(level::flow,
            u"CQoCollection::applyQoFileChanges : save changes for %d files",
            changed.GetSize());
    saveOrClear(progress);
    log(level::flow, u"CQoCollection::applyQoFileChanges : ended");
    return true;
}

bool CQoCollection::applyChange(const CQoFileChangeInfo& change,
                                QoFileDbItemPtr& item,
                                int index,
                                IQoProgress* progress)
{
    switch (change.m_action)
    {
    case CQoFileChangeInfo::addVelmoraFile:
        return applyAddVelmoraFile(change, item, index, progress);
    case CQoFileChangeInfo::scan:
        return applyScan(change, item, index, progress);
    case CQoFileChangeInfo::move:
        return item && applyMove(change, item, index, progress);
    case CQoFileChangeInfo::remove:
        if (!item)
            return false;
        removeFileFromColl(change.m_path, !change.m_keepEmptyDirs);
        item->dbState = dbState::deleted;
        return true;
    case CQoFileChangeInfo::noAction:
        break;
    }
    return false;
}

bool CQoCollection::applyAddVelmoraFile(const CQoFileChangeInfo& change,
                                        QoFileDbItemPtr& item,
                                        int index,
                                        IQoProgress* progress)
{
    if (item && revive(*item))
        return true;
    if (item)
    {
        log(level::error,
            u"CQoCollection::applyQoFileChanges : AddVelmoraFile : file %s already in collection",
            change.m_path);
        return false;
    }
    // The record is inserted at the position of the change's path, so its own path must be the
    // same.
    if (!change.m_dbItem || CQoUtils::comparePaths(change.m_dbItem->path, change.m_path) != 0)
    {
        log(level::error,
            u"CQoCollection::applyQoFileChanges : AddVelmoraFile : no record for file %s",
            change.m_path);
        return false;
    }
    item = change.m_dbItem;
    item->dbState = dbState::added;
    m_fileDbItems.InsertAt(index, item);
    checkUpdateFileInfo(item, progress, true, seenOf(change));
    return true;
}

bool CQoCollection::applyScan(const CQoFileChangeInfo& change,
                              QoFileDbItemPtr& item,
                              int index,
                              IQoProgress* progress)
{
    const bool isNew = item == nullptr;
    if (isNew)
    {
        item = makeNewRecord(change.m_path, {}, change.m_importedAction);
        if (change.m_scanFileType == CQoFileChangeInfo::importedFile)
            setImportedMediaType(*item);
        if (change.m_dbItem)
            CQoCollDbUtils::copyTags(change.m_dbItem, item);
        m_fileDbItems.InsertAt(index, item);
    }
    else if (const boost::shared_ptr<CHDFile> file = getFileByPath(item->path))
        file->keepTag();
    const bool isRevived = revive(*item);
    return checkUpdateFileInfo(item, progress, true, seenOf(change)) || isNew || isRevived;
}

bool CQoCollection::applyMove(const CQoFileChangeInfo& change,
                              QoFileDbItemPtr& item,
                              int index,
                              IQoProgress* progress)
{
    if (!CQoCollPath(change.m_newPath).isValid())
    {
        log(level::error,
            u"CQoCollection::applyQoFileChanges : Move : no new path for file %s",
            change.m_path);
        return false;
    }
    removeFileFromColl(change.m_path, !change.m_keepEmptyDirs);
    m_fileDbItems.RemoveAt(index);
    removeFromFileDbItemsMaps(item);
    // A record that was never stored must still be inserted and not updated.
    if (item->dbState != dbState::added && !revive(*item))
        item->dbState = dbState::modified;
    item->path = change.m_newPath;
    CQoCollDbUtils::addQoDbFileItem(item, m_fileDbItems, false);
    addToFileDbItemsMaps(item);
    if (change.m_rescan)
        checkUpdateFileInfo(item, progress, true, seenOf(change));
    return true;
}

void CQoCollection::setRootDirs(const CStringArray& dirs,
                                const CQoPathsInfoMap& info,
                                IQoProgress* progress)
{
    m_loadedSuccesfully = true;
    if (!checkDBLoaded())
        return;
    qo::CollPathArray valid;
    validateRootDirs(dirs, valid);
    qo::CollPathArray asked;
    qo::addPaths(asked, dirs);
    log(level::flow, u"CQoCollection::setRootDirs : %s", qo::joinPaths(asked));
    log(level::flow,
        u"CQoCollection::setRootDirs : valid root dirs are : %s",
        qo::joinPaths(valid));
    qo::CollPathArray old;
    getRootDirs(old);
    qo::CollPathArray added;
    qo::CollPathArray removed;
    qo::diffPathArrays(valid, old, added, removed);
    if (added.IsEmpty() && removed.IsEmpty())
    {
        log(level::flow, u"CQoCollection::setRootDirs : no folder changes, stop");
        return;
    }
    if (!removed.IsEmpty())
        dropRootDirs(removed);
    CLTManager::cleanUp(false);
    QoFileDbItemArray files;
    if (!added.IsEmpty())
    {
        log(level::flow,
            u"CQoCollection::setRootDirs : creating data for new dirs : %s",
            qo::joinPaths(added));
        addRootDirs(added, info);
        log(level::flow,
            u"CQoCollection::setRootDirs : adding files from new dirs : %s",
            qo::joinPaths(added));
        try
        {
            addFilesFromRootDirs(added, CQoFileChangeInfo::setImported, files, progress);
        }
        catch (...)
        {
            // A share that cannot be fetched: the folders have changed and their files have not.
            m_loadedSuccesfully = false;
            clear(true);
            throw;
        }
    }
    if (!progress->isCanceled())
        createColl(files, added, progress);
    if (!progress->isCanceled())
        log(level::flow, u"CQoCollection::setRootDirs : save changes");
    saveOrClear(progress);
}

void CQoCollection::dropRootDirs(const qo::CollPathArray& dirs)
{
    log(level::flow,
        u"CQoCollection::setRootDirs : delete data from dirs : %s",
        qo::joinPaths(dirs));
    markDeletedFilesFromDirs(dirs);
    CQoCollSubset::stopFollowing();
    for (const CQoCollPath& path : dirs)
    {
        if (const boost::shared_ptr<CHDDirectory> root = getRootDir(path))
        {
            m_marks.leaveAll(root);
            m_rootDirs.remove(root);
            m_zombieDirs.add(root);
        }
    }
}
