#pragma once

// Devices: what can be plugged in, and files that come from elsewhere in the background.
#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/QoDownloadItem.h"
