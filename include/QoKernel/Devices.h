#pragma once

// Devices: what can be plugged in, and files that come from elsewhere in the background.
#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Devices/QoUSBManager.h"
#include "QoColl/Devices/USBUtils.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/QoDownloadItem.h"
