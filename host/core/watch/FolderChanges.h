#pragma once

#include "core/watch/FolderEvent.h"

#include <QoKernel/Collection.h>

#include <string>
#include <vector>

namespace qo::host
{
class Session;

/// Brings what a FolderWatch saw into the loaded collection. Events are taken as hints: what counts
/// is what is on the disk when they are applied. For the kernel's thread.
class FolderChanges
{
public:
    struct Report
    {
        int scanned = 0; ///< files that are new or were looked at again
        int moved = 0;
        int removed = 0;
    };

    explicit FolderChanges(Session& session);

    /// Ignores demands for a rescan. Throws HostError as CollectionChanges::apply() does. Also
    /// throws it with the code away, and changes nothing, when files seem to have gone but a root
    /// folder is not there.
    Report apply(const std::vector<FolderEvent>& events, IQoProgress& progress);

private:
    class Collector;

    Session& m_session;
};
} // namespace qo::host
