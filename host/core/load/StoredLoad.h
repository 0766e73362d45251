#pragma once

#include "core/load/CollectionLoader.h"

#include <QoKernel/Collection.h>

namespace qo::host
{
/// Loads the collection for a session without the lock: as its database has it at one moment,
/// beside whoever writes to it. Changes nothing, neither in the data folder nor in the database:
/// what a start with the lock would settle first is left as it is, with a note. Without a database
/// the collection stays empty. Throws HostError. On the kernel's thread.
///
/// With the id of another collection of the database, such as that of a device, that one is loaded,
/// into the kernel's own or its foreign collection. The foreign one stands beside the user's files
/// in the trees of artists and albums; it is emptied by the next load or scan of such a place and
/// at the end of the session.
LoadReport loadStored(Session& session,
                      ProgressReporter& progress,
                      const CString& collectionId = CString(),
                      CQoCollection& collection = CQoCollection::m_ownCollection);
} // namespace qo::host
