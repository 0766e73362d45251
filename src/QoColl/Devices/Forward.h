#pragma once

#include "types/Array.h"

#include <boost/shared_ptr.hpp>

struct UsbDeviceInfo;
class IUsbDeviceChangedListener;
class CQoUSBManager;
class CQoUSBManagerBase;

using UsbDeviceInfoPtr = boost::shared_ptr<UsbDeviceInfo>;
using UsbDeviceInfoArray = CArray<UsbDeviceInfoPtr>;
