#include "core/load/RootSentinel.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/session/ProgressReporter.h"

#include <algorithm>

namespace qo::host
{
RootSentinel::RootSentinel(ProgressReporter& progress,
                           const CStringArray& folders,
                           const CString& database,
                           const std::vector<RootProblem>& givenUp)
    : m_progress(progress), m_database(database), m_unread(CQoCollection::m_ownCollection, givenUp)
{
    for (const CString& folder : folders)
    {
        const auto isThis = [&folder](const RootProblem& problem)
        { return problem.folder == folder; };
        if (std::none_of(givenUp.begin(), givenUp.end(), isThis))
            m_folders.Add(folder);
    }
}

const std::vector<RootProblem>& RootSentinel::look()
{
    // A folder that was away once and is back was still walked without what is in it.
    if (m_lost.empty())
        m_lost = checkRoots(m_folders, m_database);
    return m_lost;
}

/// The walk leaves every record that it did not meet marked as deleted.
void RootSentinel::keepUnread()
{
    QoFileDbItemArray records;
    CQoCollection::m_ownCollection.copyFiles(records);
    for (const QoFileDbItemPtr& record : records)
    {
        if (record->dbState == dbState::deleted && !m_unread.isGone(record->path))
            record->dbState = dbState::unchanged;
    }
}

void RootSentinel::refuse() const
{
    throw HostError(ExitCode::away,
                    rootSentences(m_lost, "went away during the scan") +
                        "nothing more was changed");
}

void RootSentinel::setStage(int stage)
{
    m_wasWalked = m_wasWalked || stage == stageScan;
    if (m_wasWalked && stage == stageBuild)
    {
        m_wasWalked = false;
        if (!m_progress.isCanceled())
            keepUnread();
        // Behind it: with a folder that goes away all in it seems to have gone.
        look();
    }
    m_progress.setStage(stage);
}

void RootSentinel::setCurrentItem(const char16_t* text, int kind)
{
    m_progress.setCurrentItem(text, kind);
}

void RootSentinel::setRange(int mode, int total)
{
    m_progress.setRange(mode, total);
}

void RootSentinel::step(int count)
{
    m_progress.step(count);
}

bool RootSentinel::isCanceled()
{
    return hasLost() || m_progress.isCanceled();
}
} // namespace qo::host
