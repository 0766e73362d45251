#include "Physical/HDOfflineFile.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/FilePathParts.h"
#include "common/MakeObject.h"

boost::shared_ptr<CHDOfflineFile>
CHDOfflineFile::createHDOfflineFile(const boost::shared_ptr<QoFileDbItem>& item)
{
    auto file = qo::makeObject<CHDOfflineFile>(QO_HERE(u".\\Physical\\HDOfflineFile"), Key(), item);
    file->setFileInfo();
    return file;
}

CHDOfflineFile::CHDOfflineFile(Key, const boost::shared_ptr<QoFileDbItem>& item)
    : CHDObject(HD_File), m_fileTitle(qo::fileTitleOf(item->path)), m_dbItem(item)
{
}

CHDOfflineFile::~CHDOfflineFile() = default;

CString CHDOfflineFile::toString(bool /*full*/) const
{
    return m_dbItem->path;
}

void CHDOfflineFile::clearLTObjects() {}

void CHDOfflineFile::setFileInfo() {}

bool CHDOfflineFile::isVideo() const noexcept
{
    return (m_dbItem->flags & qo::fileFlag::video) != 0;
}
