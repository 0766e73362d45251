#include "QoColl/Sharing/QoShareDownloadItem.h"

#include "QoColl/Sharing/QoShareManager.h"

CQoShareDownloadItem::CQoShareDownloadItem(Key key,
                                           const CQoCollPath& sharePath,
                                           const CString& targetPath,
                                           const CString& fileId,
                                           std::int64_t size)
    : IQoDownloadItem(key, sharePath.toString(), targetPath, u"share")
    , m_sharePath(sharePath)
    , m_fileId(fileId)
    , m_size(size)
{
}

bool CQoShareDownloadItem::getFileInfo(std::int64_t& size)
{
    size = m_size;
    return m_size >= 0;
}

bool CQoShareDownloadItem::download(IQoProgress* progress)
{
    return m_sharePath.isShare() && !m_fileId.IsEmpty() &&
           CQoShareManager::fetch({m_targetPath,
                                   m_sharePath.getDevice(),
                                   m_fileId,
                                   0,
                                   progress,
                                   true,
                                   true,
                                   m_sharePath.toString(),
                                   m_size});
}
