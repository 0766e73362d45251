#pragma once

#include "core/roots/RootLister.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace qo::host
{
/// A file that a walk met.
struct FoundFile
{
    CString path;
    FileInfo info;
};

/// Looks through root folders on a thread of its own, so that the database can be read meanwhile.
/// What it saw is as old as the walk; what changes afterwards is seen by the next one.
class RootWalk
{
public:
    /// Begins at once, with the folders in this order. The lister must live as long as this.
    RootWalk(const CStringArray& folders, RootLister& lister);
    /// Stops the walk and waits for it.
    ~RootWalk();
    RootWalk(const RootWalk&) = delete;
    RootWalk& operator=(const RootWalk&) = delete;

    /// Waits for the end and gives the files in the order in which a collection keeps its records;
    /// none when the progress stopped it. Once. Throws what the walk threw.
    std::vector<FoundFile> files(IQoProgress& progress);

private:
    void run(const std::vector<CString>& folders) noexcept;
    void walk(const std::vector<CString>& folders);

    RootLister& m_lister;
    std::vector<FoundFile> m_files;
    std::exception_ptr m_failure;
    std::atomic<bool> m_isStopped{false};
    std::mutex m_mutex;
    std::condition_variable m_end;
    bool m_hasEnded = false;
    std::thread m_thread; ///< last: it uses the others
};
} // namespace qo::host
