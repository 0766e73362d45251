#pragma once

#include "platform/PortableDevices.h"

namespace qo
{
/// A system without a service for portable devices: every call says so.
class NoPortableDevices final : public IPortableDevices
{
public:
    DeviceResult devices(std::vector<CString>&) override { return deviceResult::notImplemented; }
    DeviceResult friendlyName(const CString&, CString&) override
    {
        return deviceResult::notImplemented;
    }
    DeviceResult open(const CString&, bool, std::unique_ptr<IPortableDevice>&) override
    {
        return deviceResult::notImplemented;
    }
    DeviceResult watch(IPortableWatcher*) override { return deviceResult::notImplemented; }
};
} // namespace qo
