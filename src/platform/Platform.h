#pragma once

#include "platform/Forward.h"
#include "types/Export.h"

namespace qo
{
/// The system's services as the house reaches them. A test may put its own in place, which the
/// caller keeps alive and takes out again with null; not while another thread works.
QO_API IFileSystem& fileSystem();
QO_API IClock& systemClock();
QO_API ISpecialFolders& specialFolders();

QO_API void setFileSystem(IFileSystem* replacement);
QO_API void setSystemClock(IClock* replacement);

/// What lists folders ahead of the walks of this thread; null, as a rule, for none. A host that has
/// a thread to spare sets it before a walk, keeps it alive and takes it out again with null.
QO_API FolderAhead* folderAhead();
QO_API void setFolderAhead(FolderAhead* ahead);

/// Takes what the walks of this thread could not list; null, as a rule, for nobody. Set and taken
/// out in the same way.
QO_API FolderErrors* folderErrors();
QO_API void setFolderErrors(FolderErrors* errors);
} // namespace qo
