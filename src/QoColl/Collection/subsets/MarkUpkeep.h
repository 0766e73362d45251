#pragma once

#include "QoColl/Collection/QoUtilsTypes.h"

#include <unordered_set>

struct QoFileDbItem;

namespace qo
{
/// Keeps check marks true while files leave and join a collection: a file that is read again keeps
/// its mark, and directories and logical objects follow the files that they have then. Costs
/// nothing until something is checked.
class MarkUpkeep
{
public:
    /// To be called before the file leaves its directory. It gets no state at all, since it stays
    /// linked to its logical objects until it is released.
    void leave(const QoUtilsTypes::File& file);
    /// The same for a root directory with all its files.
    void leaveAll(const QoUtilsTypes::Dir& root);
    /// To be called when the files are linked to their logical objects. Ends what leave() began.
    void join(const QoUtilsTypes::Files& files);
    void clear();

private:
    void touch(const QoUtilsTypes::File& file);

    std::unordered_set<const QoFileDbItem*> m_checked; ///< records of checked files that left
    CPtrListT<CLTObject> m_objects;
    CPtrListT<CHDDirectory> m_dirs;
};
} // namespace qo
