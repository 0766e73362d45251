#pragma once

#include "cli/places/FarPlace.h"
#include "devices/known/Devices.h"

namespace qo::cli
{
// A device that is connected, as a place: a disk or stick, and a portable device.
std::unique_ptr<FarPlace> diskPlace(const host::Device& device);
std::unique_ptr<FarPlace> portablePlace(const host::Device& device);

inline UploadRules uploadRulesOf(const UsbDeviceInfo& info)
{
    return {info.m_musicPath, info.m_musicUploadRule, info.m_moviesPath, info.m_moviesUploadRule};
}

inline std::unique_ptr<FarPlace> devicePlace(const host::Device& device)
{
    return device.isPortable() ? portablePlace(device) : diskPlace(device);
}
} // namespace qo::cli
