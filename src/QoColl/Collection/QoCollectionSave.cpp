#include "Database/src/DbFacade/SQLiteException.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/SharedIdentities.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/FpCutInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Log.h"
#include "common/ProfileTimer.h"
#include "common/QoException.h"
#include "common/QoProgress.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

#include <memory>

// saveToDb() writes the records by their states in one transaction. Ids and states are changed for
// good only after the commit, so that a save that failed can be repeated.

namespace
{
using qo::log;
namespace level = qo::level;

/// Logs the failure, lets the host know and deletes the exception.
void endFailedSave(CSQLiteException* caught, IQoScanHost& host, const CString& database)
{
    const std::unique_ptr<CSQLiteException> exception(caught);
    qo::logException(u"CQoCollection::saveToDb : error saving to db ", *exception);
    host.failed(IQoScanHost::ETrouble::save, database, qo::textOf(*exception));
}

/// How many records were inserted, updated and deleted.
struct Counts
{
    int inserted = 0;
    int updated = 0;
    int deleted = 0;

    bool any() const { return inserted > 0 || updated > 0 || deleted > 0; }
};

/// Counts only the records that were written: most saves change few of many.
Counts countStates(const QoFileDbItemArray& written)
{
    Counts counts;
    for (const QoFileDbItemPtr& item : written)
    {
        counts.inserted += item->dbState == qo::dbState::added ? 1 : 0;
        counts.updated += item->dbState == qo::dbState::modified ? 1 : 0;
        counts.deleted += item->dbState == qo::dbState::deleted ? 1 : 0;
    }
    return counts;
}

/// Inserts a record. If other rows may have its lasting id, they get its fingerprint values.
void insert(CQoCollDb& db,
            QoFileDbItemPtr& item,
            const CString& collId,
            const qo::SharedIdentities& identities)
{
    const qo::ProfileTimer timer(u"insertFile");
    db.insertFile(item, collId);
    if (!identities.mayBeShared(item->velmoraId))
        return;
    FpCutInfoDbItem cut;
    cut.velmoraId = item->velmoraId;
    cut.fpParams = item->fpParams;
    db.setFPCutInfo(cut);
}

void update(CQoCollDb& db, QoFileDbItemPtr& item)
{
    const qo::ProfileTimer timer(u"updateFile");
    db.updateFile(item);
}

void remove(CQoCollDb& db, QoFileDbItemPtr& item)
{
    const qo::ProfileTimer timer(u"deleteFile");
    db.deleteFile(item);
}

/// Removes the deleted records and sets the others to unchanged. To be called only after the
/// commit.
void settle(QoFileDbItemArray& files, const QoFileDbItemArray& written, const Counts& counts)
{
    if (counts.deleted > 0)
    {
        QoFileDbItemArray kept;
        for (const QoFileDbItemPtr& item : files)
        {
            if (item->dbState != qo::dbState::deleted)
                kept.Add(item);
        }
        files = std::move(kept);
    }
    for (const QoFileDbItemPtr& item : written)
    {
        if (item->dbState != qo::dbState::deleted)
            item->dbState = qo::dbState::unchanged;
    }
}
} // namespace

void CQoCollection::saveDbChanges(CQoCollDb& db, IQoProgress* progress, OpResultInfo* result)
{
    const std::uint32_t start = qo::systemClock().tickCount();
    saveToDb(m_fileDbItems, db, progress, result);
    log(level::timing,
        u"CQoCollection::saveDbChange took %d millis",
        qo::systemClock().tickCount() - start);
}

void CQoCollection::saveOrClear(IQoProgress* progress)
{
    if (!progress->isCanceled())
    {
        CQoCollDb db(m_dbPath);
        saveDbChanges(db, progress, nullptr);
    }
    if (progress->isCanceled())
    {
        m_loadedSuccesfully = false;
        clear(true);
    }
}

void CQoCollection::saveToDb(QoFileDbItemArray& files,
                             CQoCollDb& db,
                             IQoProgress* progress,
                             OpResultInfo* result)
{
    if (progress->isCanceled())
        return;
    log(level::flow, u"CQoCollection::saveToDb start");
    m_scanHost->beforeSave();
    progress->setStage(IQoProgress::stageSave);
    progress->setRange(IQoProgress::rangeKnown, files.GetSize());
    QoFileDbItemArray written;
    QoFileDbItemArray gotIds;
    // A record that was not committed has no row and therefore no id.
    const auto takeBackIds = [&]
    {
        for (QoFileDbItemPtr& item : gotIds)
        {
            removeFromFileDbItemsMaps(item);
            item->id = 0;
        }
    };
    try
    {
        qo::DbTransaction transaction(db);
        writeChanges(files, db, progress, written, gotIds);
        const Counts counts = countStates(written);
        if (result)
        {
            result->m_inserted = counts.inserted;
            result->m_updated = counts.updated;
            result->m_deleted = counts.deleted;
        }
        log(level::flow,
            u"CQoCollection::saveToDb end (inserted %d, updated %d, deleted %d",
            counts.inserted,
            counts.updated,
            counts.deleted);
        updateCollInfo();
        if (counts.any())
            m_collInfo.modifiedTime = qo::systemClock().now();
        db.setCollInfo(m_collId, m_collInfo);
        transaction.commit();
        settle(files, written, counts);
    }
    catch (CSQLiteException* caught)
    {
        endFailedSave(caught, *m_scanHost, m_dbPath);
        takeBackIds();
        if (result)
            result->m_inserted = result->m_updated = result->m_deleted = 0;
    }
    catch (...)
    {
        takeBackIds();
        throw;
    }
}

void CQoCollection::writeChanges(QoFileDbItemArray& files,
                                 CQoCollDb& db,
                                 IQoProgress* progress,
                                 QoFileDbItemArray& written,
                                 QoFileDbItemArray& gotIds)
{
    const qo::SharedIdentities identities(files, db, m_collId);
    for (QoFileDbItemPtr& item : files)
    {
        progress->step(1);
        if (item->dbState == qo::dbState::unchanged)
            continue;
        written.Add(item);
        if (item->dbState == qo::dbState::added)
        {
            if (item->id == 0)
                gotIds.Add(item);
            insert(db, item, m_collId, identities);
            addToFileDbItemsMaps(item);
        }
        else if (item->dbState == qo::dbState::modified)
            update(db, item);
        else
            remove(db, item);
    }
}
