#include "QoColl/Plugins/Plugin.h"

#include "QoColl/Plugins/PluginOperation.h"
#include "QoColl/Plugins/PluginResults.h"
#include "QoColl/Plugins/PluginWrappers.h"

IGenericResult::~IGenericResult() = default;
IPluginOperation::~IPluginOperation() = default;
ILoginWrapper::~ILoginWrapper() = default;
IPhysicalBrowseWrapper::~IPhysicalBrowseWrapper() = default;
IPhysicalBrowseDownloadpathWrapper::~IPhysicalBrowseDownloadpathWrapper() = default;
ILogicalBrowseWrapper::~ILogicalBrowseWrapper() = default;
IPluginDownload::~IPluginDownload() = default;
IDownloadWrapper::~IDownloadWrapper() = default;
IPhysicalUploadWrapper::~IPhysicalUploadWrapper() = default;
ILogicalUploadWrapper::~ILogicalUploadWrapper() = default;
ISearchWrapper::~ISearchWrapper() = default;
IPlugin::~IPlugin() = default;
IPluginsManager::~IPluginsManager() = default;

boost::shared_ptr<ITrackResult> IDownloadWrapper::GetTrack(const CString&)
{
    return {};
}

bool IPhysicalUploadWrapper::CanUploadToRoot(bool&)
{
    return false;
}

bool IPhysicalUploadWrapper::GetMaxPathDepth(int&)
{
    return false;
}

boost::shared_ptr<IPhysicalBrowseWrapper> IPlugin::GetPhysicalBrowse()
{
    return {};
}

boost::shared_ptr<IPhysicalBrowseDownloadpathWrapper> IPlugin::GetPhysicalBrowseDownloadpath()
{
    return {};
}

boost::shared_ptr<IPhysicalUploadWrapper> IPlugin::GetPhysicalUpload()
{
    return {};
}

boost::shared_ptr<IDownloadWrapper> IPlugin::GetDownload()
{
    return {};
}

boost::shared_ptr<ILogicalBrowseWrapper> IPlugin::GetLogicalBrowse()
{
    return {};
}

boost::shared_ptr<ILogicalUploadWrapper> IPlugin::GetLogicalUpload()
{
    return {};
}

boost::shared_ptr<ILoginWrapper> IPlugin::GetLogin()
{
    return {};
}

boost::shared_ptr<ISearchWrapper> IPlugin::GetSearch()
{
    return {};
}
