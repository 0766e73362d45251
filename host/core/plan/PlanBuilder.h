#pragma once

#include "core/plan/ReorganizePlan.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Rules.h>

namespace qo::host
{
/// Makes the plan by which a rule sorts files of the loaded collection. Looks at the disk and
/// changes nothing on it. For the kernel's thread.
class PlanBuilder
{
public:
    struct Options
    {
        CString rule;   ///< the rule's id
        CString target; ///< the folder to sort into, which may have to be made; "" for the root
                        ///< folder that each file lies in
        std::string id; ///< of the plan
    };

    /// Of the files in question; of all others only the places count. Refused ones come first, then
    /// those that move, then those that stay, each in the collection's order. What lies on no disk
    /// is left out. No foreign collection may be loaded, since rules would count its tracks. Throws
    /// HostError: notFound for an unknown rule and for a target that is in no
    /// root folder, interrupted when the progress stopped it.
    static ReorganizePlan
    build(const Options& options, const QoFileDbItemArray& records, IQoProgress& progress);

    /// Folders that stay also when they run empty: roots, output folders, those that the system
    /// gives every user. Absolute system paths.
    static std::vector<std::string> keptFolders();
};
} // namespace qo::host
