#pragma once

#include "core/load/UnreadFiles.h"
#include "core/roots/RootGuard.h"

namespace qo::host
{
class ProgressReporter;

/// Looks at the root folders once more between the walk of a scan and what follows from it: one
/// that went away meanwhile was read as empty, and its files would leave the collection. The
/// operation is then stopped before it saves. Records whose files the walk could not reach, though
/// they may be there, stay.
class RootSentinel final : public IQoProgress
{
public:
    /// Folders that were given up are not asked about; every other one has to be there.
    RootSentinel(ProgressReporter& progress,
                 const CStringArray& folders,
                 const CString& database,
                 const std::vector<RootProblem>& givenUp);

    /// The folders that went away; looks for them. Before anything is made of a walk.
    const std::vector<RootProblem>& look();
    bool hasLost() const { return !m_lost.empty(); }
    /// Throws HostError: away.
    [[noreturn]] void refuse() const;
    UnreadFiles& unread() { return m_unread; }

    void setStage(int stage) override;
    void setCurrentItem(const char16_t* text, int kind) override;
    void setRange(int mode, int total) override;
    void step(int count) override;
    bool isCanceled() override;

private:
    void keepUnread();

    ProgressReporter& m_progress;
    CString m_database;
    CStringArray m_folders;
    UnreadFiles m_unread;
    std::vector<RootProblem> m_lost;
    bool m_wasWalked = false;
};
} // namespace qo::host
