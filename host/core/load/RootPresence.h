#pragma once

#include "core/roots/RootGuard.h"

#include <vector>

namespace qo::host
{
/// Whether the root folders of a scan are still there: one that goes away during a walk is read as
/// if it were empty, and its files would leave the collection. So each conclusion that files have
/// gone is followed by a look at the roots. On the kernel's thread.
class RootPresence
{
public:
    /// Folders that were given up are not asked about; every other one has to be there.
    RootPresence(const CStringArray& folders,
                 const CString& database,
                 const std::vector<RootProblem>& givenUp);

    /// Looks; false from the first time on that one was missing, even if it comes back, since the
    /// walk may have missed what is in it.
    bool areThere();
    bool hasLost() const { return !m_lost.empty(); }
    /// Throws HostError: away.
    [[noreturn]] void refuse() const;

private:
    CString m_database;
    CStringArray m_folders;
    std::vector<RootProblem> m_lost;
};
} // namespace qo::host
