#include "QoColl/Player/MpSessionUtils.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "common/ProfileTimer.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace
{
boost::shared_ptr<QoSessionDbItem> newSession()
{
    return qo::makeObject<QoSessionDbItem>(QO_HERE(u".\\QoColl\\Player\\MpSessionUtils"));
}
} // namespace

int CMpSessionUtils::startSession(eItemSource source, const CString& name)
{
    auto item = newSession();
    item->name = name;
    item->source = source;
    item->startTime = qo::systemClock().now();
    CQoCollDb(CQoPaths::getQoDbFilePath()).insertSession(item);
    return item->id;
}

void CMpSessionUtils::endSession(int id)
{
    auto item = newSession();
    item->id = id;
    item->endTime = qo::systemClock().now();
    CQoCollDb(CQoPaths::getQoDbFilePath()).updateSessionEndTime(item);
}

void CMpSessionUtils::getAllSessions(CArray<QoSessionQueryItem>& items, int limitPerSource)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).getAllSessions(items, limitPerSource);
}

bool CMpSessionUtils::getSession(int id, boost::shared_ptr<QoSessionDbItem>& item)
{
    return CQoCollDb(CQoPaths::getQoDbFilePath()).getSession(id, item);
}

void CMpSessionUtils::clearEmptySessions()
{
    const qo::ProfileTimer timer(u"CMpSessionUtils::clearEmptySessions");
    CQoCollDb db(CQoPaths::getQoDbFilePath());
    CArray<QoSessionQueryItem> items;
    db.getAllSessions(items, 0);
    for (const QoSessionQueryItem& item : items)
        if (item.fileCount == 0)
            db.deleteSession(item.session->id);
}
