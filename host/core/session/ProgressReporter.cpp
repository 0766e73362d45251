#include "core/session/ProgressReporter.h"

#include "core/base/HostFiles.h"

namespace qo::host
{
namespace
{
constexpr std::chrono::milliseconds leastGap{100};
/// The clock is not read for each step: for a million quick steps that would take noticeable time.
constexpr int stepsBetweenLooks = 16;
} // namespace

ProgressReporter::ProgressReporter(Sink sink, std::function<Clock::time_point()> now)
    : m_sink(std::move(sink))
    , m_now(std::move(now))
    , m_stageStart(m_now())
    , m_lastReport(m_stageStart)
{
}

void ProgressReporter::startCounting()
{
    m_event.count = 0;
    m_event.ratePerSecond = 0;
    m_event.remainingSeconds = -1;
    m_stageStart = m_now();
    m_untilLook = 0;
}

void ProgressReporter::setStage(int stage)
{
    m_isSaving = stage == stageSave;
    m_event.stage = stage;
    m_event.total = 0;
    m_event.item.clear();
    startCounting();
    report(nullptr);
}

void ProgressReporter::setRange(int mode, int total)
{
    m_event.total = mode == rangeKnown ? total : 0;
    startCounting();
}

bool ProgressReporter::isDue()
{
    if (m_untilLook-- > 0)
        return false;
    m_untilLook = stepsBetweenLooks;
    if (m_now() - m_lastReport < leastGap)
        return false;
    // Slow steps: read the clock for each of them.
    m_untilLook = 0;
    return true;
}

void ProgressReporter::setCurrentItem(const char16_t* text, int kind)
{
    if (isDue())
        report(kind == itemFilePath ? text : nullptr);
}

void ProgressReporter::step(int count)
{
    m_event.count += count;
    if (isDue())
        report(nullptr);
}

void ProgressReporter::report(const char16_t* item)
{
    m_lastReport = m_now();
    if (item)
        m_event.item = shownPath(item);
    const double seconds = std::chrono::duration<double>(m_lastReport - m_stageStart).count();
    if (seconds > 0 && m_event.count > 0)
    {
        m_event.ratePerSecond = static_cast<double>(m_event.count) / seconds;
        if (m_event.total >= m_event.count)
            m_event.remainingSeconds = static_cast<int>(
                static_cast<double>(m_event.total - m_event.count) / m_event.ratePerSecond + 0.5);
    }
    if (m_sink)
        m_sink(m_event);
}

void ProgressReporter::beginTransfer(std::int64_t bytes)
{
    setStage(stageTransfer);
    m_event.total = bytes;
}

void ProgressReporter::showTransfer(std::int64_t bytes, const std::string& item)
{
    m_event.count = bytes;
    m_event.item = item;
    if (isDue())
        report(nullptr);
}

bool ProgressReporter::isCanceled()
{
    if (!m_wasStopped)
        m_wasStopped = m_cancel.load(std::memory_order_relaxed) && !m_isSaving;
    return m_wasStopped;
}
} // namespace qo::host
