#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "types/Export.h"

/// What the player asks of single files. Each call opens the collection's usual database for
/// itself, so calls may come from any thread. CSQLiteException* goes to the caller.
class QO_API CMpFileUtils
{
public:
    /// Notes in the record's params that the user has settled the cut by hand, and writes the whole
    /// record with CQoCollDb::updateFile(), fpParams included. A record that says so already, or
    /// has no params, is not written.
    static void SetManualCutQuality(QoFileDbItemPtr& item);
    /// The record of that row id, which must belong to a device or a share and not to the user's
    /// own collection; false, with item unchanged, if there is none.
    static bool GetFileFromDevice(int id, QoFileDbItemPtr& item);
};
