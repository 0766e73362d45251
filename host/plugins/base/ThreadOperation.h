#pragma once

#include <QoKernel/Devices.h>

#include <atomic>
#include <functional>
#include <thread>

namespace qo::host
{
/// What a request has given; a failure is one sentence.
struct PluginOutcome
{
    CString failure;
    PluginResultArray results;
};

/// A request that works on a thread of its own. Released while it runs, it is cancelled and waited
/// for, which takes a moment.
class ThreadOperation final : public IPluginOperation
{
public:
    /// What the work may ask and say, from its thread.
    struct Link
    {
        std::atomic<bool> isCanceled = false;
        std::atomic<std::int64_t> done = 0;
    };
    using Work = std::function<PluginOutcome(Link&)>;

    /// total is that of the progress; 0 without one.
    explicit ThreadOperation(Work work, std::int64_t total = 0);
    ~ThreadOperation() override;
    ThreadOperation(const ThreadOperation&) = delete;
    ThreadOperation& operator=(const ThreadOperation&) = delete;

    int GetState() override;
    bool GetProgress(std::int64_t& done, std::int64_t& total) override;
    void GetResults(PluginResultArray& results) override;
    CString GetErrorText() override;

private:
    const std::int64_t m_total;
    Link m_link;
    PluginOutcome m_outcome; ///< the thread's until m_state is no longer OS_Running
    std::atomic<int> m_state = OS_Running;
    std::thread m_thread;
};
} // namespace qo::host
