#include "QoColl/Player/MpSearchResultCollection.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Physical/HDSearchResult.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Player/MpPlaylistUtils.h"
#include "QoColl/Player/SearchResultDraggableObject.h"
#include "common/CollPath.h"
#include "common/MakeObject.h"
#include "common/ProfileTimer.h"
#include "common/QoException.h"
#include "types/CharClass.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <unordered_set>

CMpSearchResultCollection CMpSearchResultCollection::m_instance;

namespace
{
constexpr const char16_t* resultsDevice = u"web";

template <class Test>
boost::shared_ptr<CHDSearchResult> firstOf(const CPtrListT<CHDSearchResult>& results, Test test)
{
    const auto found = std::find_if(results.begin(),
                                    results.end(),
                                    [&](const boost::shared_ptr<CHDSearchResult>& result)
                                    { return test(*result->getDbItem()); });
    return found == results.end() ? boost::shared_ptr<CHDSearchResult>() : *found;
}
} // namespace

void CMpSearchResultCollection::load(const CString& dbPath)
{
    const qo::ProfileTimer timer(u"CMpSearchResultCollection::load");
    m_dbPath = dbPath;
    QoFileDbItemArray items;
    CQoCollDb(m_dbPath).getAllFiles(items, false, CQoCollection::m_searchResultCollID, true);
    m_results.clear();
    createColl(items);
}

void CMpSearchResultCollection::createColl(QoFileDbItemArray& items)
{
    const qo::ProfileTimer timer(u"CMpSearchResultCollection::createColl");
    for (const QoFileDbItemPtr& item : items)
        m_results.Add(CHDSearchResult::createSearchResult(item));
}

void CMpSearchResultCollection::saveDbChanges()
{
    try
    {
        CQoCollDb db(m_dbPath);
        qo::DbTransaction transaction(db);
        for (const auto& result : m_results)
        {
            QoFileDbItemPtr item = result->getDbItem();
            if (item->dbState == qo::dbState::modified)
                db.updateFile(item);
            else if (item->dbState == qo::dbState::deleted)
                db.deleteFile(item);
        }
        transaction.commit();
    }
    catch (CSQLiteException* caught)
    {
        const std::unique_ptr<CSQLiteException> exception(caught);
        qo::logException(u"CMpSearchResultCollection::saveDbChanges : error saving to db ",
                         *exception);
        return;
    }
    for (int i = m_results.GetSize() - 1; i >= 0; --i)
    {
        QoFileDbItem& item = *m_results[i]->getDbItem();
        const bool isDeleted = item.dbState == qo::dbState::deleted;
        item.dbState = qo::dbState::unchanged;
        if (isDeleted)
            m_results.RemoveAt(i);
    }
}

void CMpSearchResultCollection::clearUnusedLinks()
{
    DbItemArray<QoPlaylistDbItem> playlists;
    CMpPlaylistUtils::GetAllUserPlaylists(playlists);
    std::unordered_set<int> used;
    for (const auto& playlist : playlists)
    {
        for (const CString& track : playlist->tracks)
            used.insert(qo::textToInt(track.view()));
    }
    for (const auto& result : m_results)
    {
        if (!used.contains(result->getDbItem()->id))
            result->getDbItem()->dbState = qo::dbState::deleted;
    }
}

CString CMpSearchResultCollection::getAvailableNewPath(const CString& name) const
{
    int largest = -1;
    for (const auto& result : m_results)
    {
        int index = 0;
        if (result->isSameClip(name, index))
            largest = std::max(largest, index);
    }
    CString file = name;
    if (largest > 0 && largest < std::numeric_limits<int>::max())
        file.AppendFormat(u"_%d", largest + 1);
    CStringArray components;
    components.Add(file);
    return CQoCollPath(CQoCollPath::searchResult, resultsDevice, components).toString();
}

boost::shared_ptr<CHDSearchResult>
CMpSearchResultCollection::addSearchResultFile(const CSearchResultDraggableObject& object)
{
    CQoCollDb db(m_dbPath);
    return add(db, object);
}

CPtrListT<CHDSearchResult> CMpSearchResultCollection::addSearchResultFiles(
    const std::vector<CSearchResultDraggableObject>& objects)
{
    const int before = m_results.GetSize();
    CPtrListT<CHDSearchResult> added;
    try
    {
        CQoCollDb db(m_dbPath);
        qo::DbTransaction transaction(db);
        for (const CSearchResultDraggableObject& object : objects)
            added.Add(add(db, object));
        transaction.commit();
    }
    catch (...)
    {
        while (m_results.GetSize() > before)
            m_results.RemoveAt(m_results.GetSize() - 1);
        throw;
    }
    return added;
}

boost::shared_ptr<CHDSearchResult>
CMpSearchResultCollection::add(CQoCollDb& db, const CSearchResultDraggableObject& object)
{
    QoFileDbItemPtr item =
        qo::makeObject<QoFileDbItem>(QO_HERE(u".\\QoColl\\Player\\MpSearchResultCollection"));
    item->path = getAvailableNewPath(object.m_name);
    item->source = CVelmoraFileParamsUtils::IntToEItemSource(object.m_source);
    item->artist = object.m_artist;
    item->title = object.m_title;
    item->flags |= object.m_isVideo ? qo::fileFlag::video : qo::fileFlag::audio;
    QorganizerDef::VelmoraFileParams params;
    params.source = item->source;
    params.shareName = object.m_xml; // where files of shares have the name of their share
    item->params = CVelmoraFileParamsUtils::ToDbParam(params);
    db.insertFile(item, CQoCollection::m_searchResultCollID);
    const auto result = CHDSearchResult::createSearchResult(item);
    m_results.Add(result);
    return result;
}

void CMpSearchResultCollection::deleteSearchResultFile(boost::shared_ptr<CHDSearchResult>& result)
{
    if (result)
        result->getDbItem()->dbState = qo::dbState::deleted;
}

boost::shared_ptr<CHDSearchResult>
CMpSearchResultCollection::getSearchResultByVelmoraID(const CString& velmoraId) const
{
    const qo::LastingId wanted(velmoraId);
    return firstOf(m_results, [&](const QoFileDbItem& item) { return item.velmoraId == wanted; });
}

boost::shared_ptr<CHDSearchResult> CMpSearchResultCollection::getSearchResultByID(int id) const
{
    return firstOf(m_results, [&](const QoFileDbItem& item) { return item.id == id; });
}

boost::shared_ptr<CHDSearchResult>
CMpSearchResultCollection::getSearchResultByPath(const CString& path) const
{
    return firstOf(m_results, [&](const QoFileDbItem& item) { return item.path == path; });
}
