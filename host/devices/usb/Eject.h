#pragma once

#include "devices/known/Devices.h"

#include <string>

namespace qo::host
{
/// Takes a disk that is mounted out of use by UDisks2: what is to be written is written, it is
/// unmounted, an encrypted volume locked, and its drive powered off or its medium ejected where it
/// can. Returns "", or why it is unmounted but still has power. Throws HostError: busy, with the
/// programs that use it, or failed. It takes as long as the disk needs.
std::string ejectDisk(const Device& device);
} // namespace qo::host
