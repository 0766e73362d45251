#pragma once

#include "types/Array.h"

#include <boost/smart_ptr/shared_ptr.hpp>

class CQoPluginManager;
class IDownloadItem;
class IDownloadWrapper;
class IGenericResult;
class ILogicalBrowseWrapper;
class ILogicalUploadWrapper;
class ILoginWrapper;
class IPhysicalBrowseDownloadpathWrapper;
class IPhysicalBrowseWrapper;
class IPhysicalResult;
class IPhysicalUploadWrapper;
class IPlugin;
class IPluginDownload;
class IPluginOperation;
class IPluginsManager;
class IQoDownloadItem;
class ISearchWrapper;
class ITrackResult;

using PluginOperationPtr = boost::shared_ptr<IPluginOperation>;
using PhysicalResultPtr = boost::shared_ptr<IPhysicalResult>;
using PluginResultPtr = boost::shared_ptr<IGenericResult>;
using PluginResultArray = CArray<PluginResultPtr>;
