#pragma once

#include "platform/Forward.h"
#include "types/Export.h"

namespace qo
{
/// The services of the system. A test may replace them with its own, which it keeps alive and
/// removes again with null; not while another thread works.
QO_API IFileSystem& fileSystem();
QO_API IClock& systemClock();
QO_API ISpecialFolders& specialFolders();
QO_API IDrives& drives();
QO_API IPortableDevices& portableDevices();

QO_API void setFileSystem(IFileSystem* replacement);
QO_API void setSystemClock(IClock* replacement);
QO_API void setDrives(IDrives* replacement);
/// Also the way by which a host with a library for such devices hands it over.
QO_API void setPortableDevices(IPortableDevices* replacement);
} // namespace qo
