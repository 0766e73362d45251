#include "QoColl/Plugins/PluginDownloadItem.h"

#include "QoColl/Plugins/PluginWrappers.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

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
    m_download = m_wrapper->CreateDownload(m_source, m_targetPath);
    return m_download && m_download->GetSize(size);
}

bool CQoPluginDownloadItem::download(IQoProgress* progress)
{
    const boost::shared_ptr<IPluginDownload> download = std::move(m_download);
    const bool isComplete = download->Run(progress);
    // A download that was cancelled with its last byte ends as cancelled, too.
    if (!isComplete || progress->isCanceled())
        qo::fileSystem().removeFile(m_targetPath);
    return isComplete;
}
