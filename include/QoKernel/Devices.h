#pragma once

// Devices and plug-ins: what can be plugged in, storage services, and files that come from
// elsewhere in the background. A host's plug-in needs the headers whose names begin with Plugin.
#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Devices/QoUSBManager.h"
#include "QoColl/Devices/QoWPDDownloadItem.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "QoColl/Devices/USBUtils.h"
#include "QoColl/Devices/WPDKeys.h"
#include "QoColl/Devices/WPDUtils.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/FarName.h"
#include "QoColl/Plugins/Plugin.h"
#include "QoColl/Plugins/PluginOperation.h"
#include "QoColl/Plugins/PluginResults.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoDownloadItem.h"
#include "QoColl/Plugins/QoPluginManager.h"
