#pragma once

#include "devices/mtp/MtpConnection.h"

#include <memory>

namespace qo::host
{
/// The content of an object: in blocks, or of a copy in a temporary file that has no name, from a
/// device that cannot give parts.
DeviceResult readObject(const std::shared_ptr<MtpConnection>& connection,
                        const MtpId& id,
                        std::unique_ptr<IByteStream>& stream);

/// A new object. A device takes one in a single transfer of known length, so what is written goes
/// into a temporary file without a name first, and to the device with commit().
DeviceResult writeObject(const std::shared_ptr<MtpConnection>& connection,
                         const PropertyBag& values,
                         std::unique_ptr<IByteStream>& stream);

/// The folder of a new object, and its name. False when the properties lack them.
bool placeOf(const PropertyBag& values, MtpId& parent, std::string& name);
} // namespace qo::host
