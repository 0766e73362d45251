#include "QoColl/Devices/QoWPDDownloadItem.h"

#include "QoColl/Devices/QoWPDManager.h"

CQoWPDDownloadItem::CQoWPDDownloadItem(Key key,
                                       const CString& sourcePath,
                                       const CString& targetPath)
    : IQoDownloadItem(key, sourcePath, targetPath, u"wpd")
{
}

bool CQoWPDDownloadItem::getFileInfo(std::int64_t& size)
{
    CQoWPDManager::ObjectInfo info;
    if (!CQoWPDManager::getPathInfo(CQoCollPath(m_sourcePath), this, info) || info.isFolder())
        return false;
    size = info.m_size;
    return true;
}

bool CQoWPDDownloadItem::download(IQoProgress* progress)
{
    return CQoWPDManager::getFile(m_sourcePath, m_targetPath, 0, progress, true);
}
