#pragma once

#include "core/load/FarScan.h"

#include <string>

namespace qo::host
{
/// The files of a place of that name: an adopted device, a storage service or a friend's share, of
/// which the database has a scan. Throws HostError when there is none, or several are called so. On
/// the kernel's thread; see Devices for what becomes of paths afterwards.
FarCollection scannedPlace(Session& session, const std::string& typed);
} // namespace qo::host
