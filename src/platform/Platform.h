#pragma once

#include "common/types/Export.h"
#include "platform/Forward.h"

namespace qo
{
/// The system's services as the house reaches them. A test may put its own in place, which the
/// caller keeps alive and takes out again with null; not while another thread works.
QO_API IFileSystem& fileSystem();
QO_API IClock& systemClock();
QO_API ISpecialFolders& specialFolders();

QO_API void setFileSystem(IFileSystem* replacement);
QO_API void setSystemClock(IClock* replacement);
} // namespace qo
