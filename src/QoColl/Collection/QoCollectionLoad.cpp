#include "Physical/HDDirectory.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/StoredFiles.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "common/Log.h"
#include "common/QoException.h"
#include "common/QoProgress.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/CharClass.h"
#include "types/PassingSecret.h"
#include "types/Utf.h"

#include <algorithm>
#include <exception>
#include <memory>

// load() in the order of its stages: read all records, compare the stored root folders with the
// wanted ones, walk the disk only if needed, build the trees, save what changed. Every exception
// ends here as a false result with an empty collection.

namespace
{
using qo::log;
namespace level = qo::level;

constexpr const char16_t* loadError = u"CQoCollection::load : error loading collection";
} // namespace

bool CQoCollection::load(const CString& dbPath,
                         const CString& collId,
                         const CStringArray& rootDirs,
                         const CQoPathsInfoMap& pathsInfo,
                         bool rescan,
                         IQoProgress* progress,
                         OpResultInfo* result)
{
    return runLoad(dbPath,
                   collId,
                   progress,
                   result,
                   [&] { return loadFromDb(rootDirs, pathsInfo, rescan, progress, result); });
}

bool CQoCollection::loadStored(const CString& dbPath,
                               const CString& collId,
                               const CStringArray& moreRootDirs,
                               IQoProgress* progress)
{
    return runLoad(
        dbPath, collId, progress, nullptr, [&] { return readStored(moreRootDirs, progress); });
}

bool CQoCollection::runLoad(const CString& dbPath,
                            const CString& collId,
                            IQoProgress* progress,
                            OpResultInfo* result,
                            const std::function<bool()>& read)
{
    log(level::timing, u"PROFILE CQoCollection::load() - BEGIN");
    const std::uint32_t start = qo::systemClock().tickCount();
    bool success = false;
    const auto fail = [this](const CString& cause)
    { m_scanHost->failed(IQoScanHost::ETrouble::load, m_dbPath, cause); };
    try
    {
        clear(true);
        m_loadedSuccesfully = false;
        // The row of another collection says nothing of this one.
        if (dbPath != m_dbPath || collId != m_collId)
            m_collInfo = {};
        m_dbPath = dbPath;
        m_collId = collId;
        success = read();
    }
    catch (CQoException* caught)
    {
        const std::unique_ptr<CQoException> exception(caught);
        qo::logException(loadError, *exception);
        fail(exception->getErrorMessage());
        if (result && exception->getType() == CQoException::unsupportedExtract)
            result->m_unsupportedExtract = true;
        if (result && exception->getType() == CQoException::extractFailed)
            result->m_extractFailed = true;
    }
    catch (CException* caught)
    {
        const std::unique_ptr<CException> exception(caught);
        qo::logException(loadError, *exception);
        fail(qo::textOf(*exception));
    }
    catch (const std::exception& exception)
    {
        qo::logException(loadError, exception.what());
        fail(qo::fromUtf8(exception.what()));
    }
    catch (...)
    {
        log(level::error, u"CQoCollection::load : error loading collection, unknown exception");
        fail(u"unknown exception");
    }
    success = success && !progress->isCanceled();
    if (!success)
        clear(true);
    m_loadedSuccesfully = success;
    log(level::timing,
        u"PROFILE CQoCollection::load() - FINISHED, duration %d ms",
        qo::systemClock().tickCount() - start);
    return success;
}

bool CQoCollection::loadFromDb(const CStringArray& rootDirs,
                               const CQoPathsInfoMap& pathsInfo,
                               bool rescan,
                               IQoProgress* progress,
                               OpResultInfo* result)
{
    qo::CollPathArray valid;
    validateRootDirs(rootDirs, valid);
    log(level::flow, u"CQoCollection::load : db %s , root dirs %s", m_dbPath, qo::joinPaths(valid));
    log(level::flow, u"CQoCollection::load : init db %s", m_dbPath);
    progress->setStage(IQoProgress::stageReadDb);
    auto stored = std::make_unique<qo::StoredFiles>(m_dbPath, m_collId, m_scanHost->readsAhead());
    const bool hasNoInfo = !stored->hasCollection();
    m_collInfo = stored->collection();
    addRootDirs(valid, pathsInfo);
    if (result)
    {
        if (hasNoInfo)
            result->m_opType = OpResultInfo::newCollection;
        else if (rescan)
            result->m_opType = OpResultInfo::existingRescanned;
        result->m_collId = m_collId;
    }
    const bool isToBeWalked = rescan || checkUpdateCollInfo(valid, true);
    const bool hostWalks = !rescan && m_scanHost->walksItself();
    if (!isToBeWalked || hostWalks)
        buildStored(*stored, isToBeWalked, progress);
    else
    {
        takeStored(*stored, progress);
        markDeletedAllFiles(progress);
        QoFileDbItemArray scratch;
        checkPhysicalChanges(scratch, CQoFileChangeInfo::setImportedIfNew, progress, true);
        if (!progress->isCanceled())
        {
            keepUnmetFiles();
            createColl(m_fileDbItems,
                       rescan && canDetectLogicalStuff() ? valid : qo::CollPathArray(),
                       progress);
        }
    }
    stored.reset();
    CQoCollDb db(m_dbPath);
    if (!progress->isCanceled())
        saveDbChanges(db, progress, result);
    log(level::flow, u"CQoCollection::load : load coll succeeded");
    return true;
}

bool CQoCollection::readStored(const CStringArray& moreRootDirs, IQoProgress* progress)
{
    progress->setStage(IQoProgress::stageReadDb);
    qo::StoredFiles stored(m_dbPath, m_collId, m_scanHost->readsAhead());
    m_collInfo = stored.collection();
    CQoPathsInfoMap kinds;
    const int known = std::min(m_collInfo.rootDirs.GetSize(), m_collInfo.rootDirTypes.GetSize());
    for (int i = 0; i < known; ++i)
        kinds.SetAt(m_collInfo.rootDirs[i],
                    static_cast<CQoPathInfo::EType>(m_collInfo.rootDirTypes[i]));
    qo::CollPathArray roots;
    qo::addPaths(roots, m_collInfo.rootDirs);
    qo::addPaths(roots, moreRootDirs);
    qo::CollPathArray valid;
    validateRootDirs(roots, valid);
    addRootDirs(valid, kinds);
    buildStored(stored, false, progress);
    return true;
}

void CQoCollection::validateRootDirs(const CStringArray& in, qo::CollPathArray& out)
{
    qo::CollPathArray paths;
    qo::addPaths(paths, in);
    validateRootDirs(paths, out);
}

void CQoCollection::validateRootDirs(const qo::CollPathArray& in, qo::CollPathArray& out)
{
    for (const CQoCollPath& path : in)
    {
        // An invalid path could not be stored and read back: every start would find the folders
        // changed.
        if (!path.isValid())
        {
            log(level::error, u"CQoCollection::validateRootDirs : a root folder has no valid path");
            continue;
        }
        bool isBelowAnother = false;
        for (const CQoCollPath& other : in)
            isBelowAnother = isBelowAnother || path.isSubPathOf(other);
        if (!isBelowAnother)
            qo::addUniquePath(out, path);
    }
}

bool CQoCollection::checkUpdateCollInfo(const qo::CollPathArray& rootDirs, bool forRescan)
{
    qo::CollPathArray stored;
    qo::addPaths(stored, m_collInfo.rootDirs);
    qo::CollPathArray added;
    qo::CollPathArray removed;
    qo::diffPathArrays(rootDirs, stored, added, removed);
    CString userName;
    if (!m_collId.IsEmpty() && rootDirs.IsEmpty())
        log(level::error, u"no root dirs for device %s", m_collId);
    else if (!m_collId.IsEmpty() && rootDirs[0].isPlugin())
    {
        CString password;
        const qo::PassingSecret secret(password);
        (void)CQoPluginManager::getPluginCredentials(m_collId, userName, password);
    }

    CString message(forRescan ? u"will rescan coll because" : u"");
    bool changed = false;
    if (CQoCollDbUtils::IsNullFILETIME(m_collInfo.scanTime))
    {
        message += u" : it was never scanned";
        changed = true;
    }
    if (!added.IsEmpty() || !removed.IsEmpty())
    {
        m_collInfo.rootDirs.RemoveAll();
        m_collInfo.rootDirTypes.RemoveAll();
        for (const CQoCollPath& dir : rootDirs)
        {
            m_collInfo.rootDirs.Add(dir.toString());
            m_collInfo.rootDirTypes.Add(m_pathsInfoMap.getType(dir.toString()));
        }
        message.AppendFormat(
            u" : root dirs changed '%s' -> '%s'", qo::joinPaths(stored), qo::joinPaths(rootDirs));
        changed = true;
    }
    if (m_collInfo.userName != userName)
    {
        message.AppendFormat(u" : user name changed '%s' -> '%s'", m_collInfo.userName, userName);
        m_collInfo.userName = userName;
        changed = true;
    }
    if (changed)
        log(level::step, u"%s", message);
    return changed;
}

bool CQoCollection::checkCollInfoChanged()
{
    qo::CollPathArray dirs;
    getRootDirs(dirs);
    return checkUpdateCollInfo(dirs, true);
}

bool CQoCollection::updateCollInfo()
{
    qo::CollPathArray dirs;
    getRootDirs(dirs);
    return checkUpdateCollInfo(dirs, false);
}
