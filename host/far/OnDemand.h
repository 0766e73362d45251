#pragma once

#include <QoKernel/Devices.h>
#include <QoKernel/Sharing.h>

#include <functional>
#include <memory>
#include <string>

/// What the kernel is given at each start, without opening the module: that happens with the first
/// question. A module that cannot be opened is a question that fails.
namespace qo::host
{
/// Portable devices as FarEnds makes them. The function, which may be empty, is also told, once,
/// why none can be reached.
std::unique_ptr<IPortableDevices> portablesOnDemand(std::function<void(const std::string&)> note);

/// The way to friends as FarEnds makes it.
std::unique_ptr<IVelmoraShareManager> sharesOnDemand();
} // namespace qo::host
