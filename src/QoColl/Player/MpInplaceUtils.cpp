#include "QoColl/Player/MpInplaceUtils.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

boost::shared_ptr<QoInplaceFileDbItem>
CMpInplaceUtils::AddInplaceFile(const QorganizerDef::VelmoraFileParams& params)
{
    auto item = qo::makeObject<QoInplaceFileDbItem>(QO_HERE(u".\\QoColl\\Player\\MpInplaceUtils"));
    item->path = params.originalPath;
    item->params = CVelmoraFileParamsUtils::ToDbParam(params);
    qo::FileInfo info;
    if (qo::fileSystem().info(item->path, qo::Spelling::anyCase, info) == 0)
    {
        item->size = info.size;
        item->createTime = info.created;
        item->modifTime = info.modified;
    }
    CMusicTagEx tag;
    if (tag.readTag(item->path))
        tag.getTag(item);
    CQoCollDb(CQoPaths::getQoDbFilePath()).insertInplaceFile(item);
    return item;
}

bool CMpInplaceUtils::GetInplaceFile(int id, boost::shared_ptr<QoInplaceFileDbItem>& item)
{
    return CQoCollDb(CQoPaths::getQoDbFilePath()).getInplaceFile(id, item);
}

void CMpInplaceUtils::DeleteInplaceFile(boost::shared_ptr<QoInplaceFileDbItem>& item)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).deleteInplaceFile(item);
}

void CMpInplaceUtils::GetAllInplaceFiles(DbItemArray<QoInplaceFileDbItem>& items)
{
    CQoCollDb(CQoPaths::getQoDbFilePath()).getAllInplaceFiles(items);
}
