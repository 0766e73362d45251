#pragma once

#include "core/load/CollectionLoader.h"

namespace qo::host
{
/// Loads the collection for a session without the lock: as its database has it at one moment,
/// beside whoever writes to it. Changes nothing, neither in the data folder nor in the database:
/// what a start with the lock would settle first is left as it is, with a note. Without a database
/// the collection stays empty. Throws HostError. On the kernel's thread.
///
/// With the id of another collection of the database, such as that of a device, that one takes the
/// place of the user's own.
LoadReport
loadStored(Session& session, ProgressReporter& progress, const CString& collection = CString());
} // namespace qo::host
