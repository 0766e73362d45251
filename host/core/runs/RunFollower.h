#pragma once

#include "core/collection/CollectionChanges.h"
#include "core/roots/RootLister.h"
#include "core/runs/MoveRun.h"

#include <QoKernel/Collection.h>

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace qo::host
{
class Session;

/// Lets the loaded collection follow what a run has done on the disk: records go where their files
/// are, leave with what goes out of the collection, and come with what comes into it. Knows records
/// by their lasting ids, so it does not matter how far an earlier attempt came. For the kernel's
/// thread.
class RunFollower
{
public:
    RunFollower(Session& session, MoveRun& run);

    /// Saves the collection and notes that in the journal. Throws HostError; what was saved before
    /// that stays, and the next attempt does the rest.
    void apply();

private:
    struct Known
    {
        QoFileDbItemPtr record; ///< null for one that is not there
        std::string id;
        std::string below; ///< the path from the file or folder of the run
        const std::map<std::string, std::string>* values = nullptr;
    };

    std::vector<Known> recordsOf(const MoveRun::Place& place);
    QoFileDbItemPtr recordOf(const std::string& id, const CString& path);
    void leave(const MoveRun::Place& place, const std::vector<Known>& records);
    void move(const MoveRun::Place& place, const std::vector<Known>& records);
    void arrive(const MoveRun::Place& place, const std::vector<Known>& records);
    void collectMoves();

    MoveRun& m_run;
    RootLister m_lister;
    CollectionChanges m_changes;
    std::unordered_map<std::size_t, std::vector<const MoveProgress::Record*>> m_recordsOf;
    std::unordered_map<std::string, QoFileDbItemPtr> m_byId;  ///< null for ids that several have
    std::vector<std::pair<QoFileDbItemPtr, CString>> m_moves; ///< records and their new paths
    std::vector<std::pair<CString, CString>> m_arrivals; ///< new files and where they came from
    std::vector<QoFileDbItemPtr> m_restored;
};
} // namespace qo::host
