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

QO_API void setFileSystem(IFileSystem* replacement);
QO_API void setSystemClock(IClock* replacement);

/// What lists folders ahead for the walks of this thread; usually null. A host with a thread to
/// spare sets it before a walk, keeps it alive during the walk, and resets it to null.
QO_API FolderAhead* folderAhead();
QO_API void setFolderAhead(FolderAhead* ahead);

/// Collects what the walks of this thread cannot list; usually null. Set and reset in the same way.
QO_API FolderErrors* folderErrors();
QO_API void setFolderErrors(FolderErrors* errors);
} // namespace qo
