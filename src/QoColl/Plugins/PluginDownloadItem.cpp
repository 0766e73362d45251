#include "QoColl/Plugins/PluginDownloadItem.h"

#include "QoColl/Plugins/PluginWrappers.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/TemporaryNames.h"

CQoPluginDownloadItem::CQoPluginDownloadItem(Key key,
                                             const CString& sourcePath,
                                             const CString& targetPath,
                                             const CString& pluginId,
                                             const boost::shared_ptr<IDownloadWrapper>& wrapper,
                                             const PluginResultPtr& source)
    : IQoDownloadItem(key, sourcePath, targetPath, pluginId), m_wrapper(wrapper), m_source(source)
{
}

CQoPluginDownloadItem::~CQoPluginDownloadItem() = default;

bool CQoPluginDownloadItem::getFileInfo(std::int64_t& size)
{
    // A file that stands there is replaced when all has come, and two downloads of one name do not
    // meet.
    m_part = qo::temporaryPathBeside(m_targetPath);
    m_download = m_wrapper->CreateDownload(m_source, m_part);
    return m_download && m_download->GetSize(size);
}

bool CQoPluginDownloadItem::download(IQoProgress* progress)
{
    const boost::shared_ptr<IPluginDownload> download = std::move(m_download);
    return download->Run(progress);
}

bool CQoPluginDownloadItem::settle(bool isWanted)
{
    if (isWanted && qo::fileSystem().moveFile(m_part, m_targetPath) == 0)
        return true;
    if (!m_part.IsEmpty())
        qo::fileSystem().removeFile(m_part);
    return false;
}
