#include "core/load/RootPresence.h"

#include "core/base/HostError.h"

#include <algorithm>

namespace qo::host
{
RootPresence::RootPresence(const CStringArray& folders,
                           const CString& database,
                           const std::vector<RootProblem>& givenUp)
    : m_database(database)
{
    for (const CString& folder : folders)
    {
        const auto isThis = [&folder](const RootProblem& problem)
        { return problem.folder == folder; };
        if (std::none_of(givenUp.begin(), givenUp.end(), isThis))
            m_folders.Add(folder);
    }
}

bool RootPresence::areThere()
{
    if (m_lost.empty())
        m_lost = checkRoots(m_folders, m_database);
    return m_lost.empty();
}

void RootPresence::refuse() const
{
    throw HostError(ExitCode::away,
                    rootSentences(m_lost, "went away during the scan") +
                        "nothing more was changed");
}
} // namespace qo::host
