#pragma once

#include <QoKernel/Kernel.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>

namespace qo::host
{
/// Where a long operation stands.
struct ProgressEvent
{
    int stage = 0;             ///< IQoProgress::EStage, or ProgressReporter::stageTransfer
    std::string item;          ///< the file being worked on, a system path; may be empty
    std::int64_t count = 0;    ///< steps done in this stage, or bytes of a transfer
    std::int64_t total = 0;    ///< 0: unknown
    double ratePerSecond = 0;  ///< steps; 0 before there is anything to go by
    int remainingSeconds = -1; ///< of this stage; -1: unknown
};

/// Turns the kernel's reports into events: one for each stage that begins, and otherwise at most
/// ten a second. The sink is called on the kernel's thread and must be quick.
class ProgressReporter final : public IQoProgress
{
public:
    using Clock = std::chrono::steady_clock;
    using Sink = std::function<void(const ProgressEvent&)>;

    /// Bytes go to a far place or come from it; after the stages of the kernel.
    static constexpr int stageTransfer = 100;

    /// Tests pass a clock of their own.
    explicit ProgressReporter(Sink sink, std::function<Clock::time_point()> now = Clock::now);

    /// From any thread and from a signal handler. The operation stops at its next poll; a save
    /// that is under way is brought to its end and kept.
    void cancel() noexcept { m_cancel.store(true, std::memory_order_relaxed); }
    /// Whether cancel() was called.
    bool wasStopped() const noexcept { return m_wasStopped; }
    /// Whether cancel() came too late to stop it.
    bool cameTooLate() const noexcept { return m_cancel && !m_wasStopped; }

    void setStage(int stage) override;
    void setCurrentItem(const char16_t* text, int kind) override;
    void setRange(int mode, int total) override;
    void step(int count) override;
    bool isCanceled() override;

    /// Begins a transfer of so many bytes.
    void beginTransfer(std::int64_t bytes);
    /// So many of them are done, and this file, a system path or a name, is being worked on.
    void showTransfer(std::int64_t bytes, const std::string& item);

private:
    void startCounting();
    void report(const char16_t* item);
    bool isDue();

    Sink m_sink;
    std::function<Clock::time_point()> m_now;
    ProgressEvent m_event;
    Clock::time_point m_stageStart;
    Clock::time_point m_lastReport;
    int m_untilLook = 0; ///< steps until the clock is looked at again
    bool m_isSaving = false;
    bool m_wasStopped = false;
    std::atomic<bool> m_cancel{false};
    static_assert(std::atomic<bool>::is_always_lock_free,
                  "cancel() is called from signal handlers");
};
} // namespace qo::host
