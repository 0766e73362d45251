#pragma once

#include "QoColl/Plugins/Forward.h"
#include "QoColl/Plugins/QoDownloadItem.h"

/// The download of one file or track from a plug-in, which was found before the item is made: the
/// item's thread asks for nothing but its bytes.
class CQoPluginDownloadItem final : public IQoDownloadItem
{
public:
    CQoPluginDownloadItem(Key key,
                          const CString& sourcePath,
                          const CString& targetPath,
                          const CString& pluginId,
                          const boost::shared_ptr<IDownloadWrapper>& wrapper,
                          const PluginResultPtr& source);
    ~CQoPluginDownloadItem() override;

private:
    bool getFileInfo(std::int64_t& size) override;
    bool download(IQoProgress* progress) override;
    bool settle(bool isWanted) override;

    const boost::shared_ptr<IDownloadWrapper> m_wrapper;
    const PluginResultPtr m_source;
    CString m_part;                                ///< the file that the fetch under way writes
    boost::shared_ptr<IPluginDownload> m_download; ///< of the fetch under way
};
