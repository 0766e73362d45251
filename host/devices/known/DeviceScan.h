#pragma once

#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"
#include "devices/known/Devices.h"

#include <string>
#include <vector>

namespace qo::host
{
/// What a scan of a device found.
struct DeviceReport
{
    int files = 0;
    int added = 0;
    int changed = 0;
    int gone = 0;
    double seconds = 0;
    std::vector<std::string> remarks; ///< sentences about what could not be read
};

/// Looks through the folders of a device that is connected, into a collection of its own in the
/// database. Records below what cannot be listed stay, and so do all when the device leaves in the
/// middle. Throws HostError: interrupted, or failed when the collection cannot be loaded or saved.
DeviceReport scanDevice(Session& session,
                        const Device& device,
                        const CString& database,
                        bool isDeep,
                        ProgressReporter& progress);

/// Takes the files of a device out of the database. Throws HostError.
void dropDevice(const Device& device);
} // namespace qo::host
