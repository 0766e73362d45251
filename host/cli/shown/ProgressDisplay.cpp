#include "cli/shown/ProgressDisplay.h"

#include "cli/shown/Output.h"
#include "cli/shown/Text.h"
#include "cli/shown/Window.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace qo::cli
{
namespace
{
constexpr std::chrono::seconds gapBetweenLines{5};
constexpr std::chrono::milliseconds shownStage{500};

const char* stageName(int stage)
{
    switch (stage)
    {
    case IQoProgress::stageReadDb:
        return "reading the database";
    case IQoProgress::stageScan:
        return "looking for files";
    case IQoProgress::stageCheck:
        return "checking files";
    case IQoProgress::stageBuild:
        return "building the collection";
    case IQoProgress::stageSave:
        return "saving";
    case host::ProgressReporter::stageTransfer:
        return "copying";
    default:
        return "working";
    }
}

void put(const std::string& text)
{
    // A failure is ignored: the operation does not depend on its display.
    (void)!::write(STDERR_FILENO, text.data(), text.size());
}
} // namespace

std::string progressText(const host::ProgressEvent& event)
{
    const bool isTransfer = event.stage == host::ProgressReporter::stageTransfer;
    const auto amount = [isTransfer](std::int64_t number)
    { return isTransfer ? sizeText(number) : std::to_string(number); };
    std::string text = stageName(event.stage);
    if (event.total > 0)
        text += " " + amount(event.count) + "/" + amount(event.total) + " (" +
                std::to_string(event.count * 100 / event.total) + " %)";
    else if (event.count > 0)
        text += " " + amount(event.count);
    if (event.ratePerSecond >= 1)
        text += ", " + amount(static_cast<std::int64_t>(event.ratePerSecond)) + "/s";
    if (event.total > 0 && event.remainingSeconds >= 0 && event.count < event.total)
        text += ", " + durationText(event.remainingSeconds * 1000LL) + " left";
    return text;
}

ProgressDisplay::ProgressDisplay(bool quiet)
    : m_quiet(quiet)
    , m_isTerminal(isCapableTerminal(STDERR_FILENO))
    , m_lastLine(std::chrono::steady_clock::now())
{
}

ProgressDisplay::~ProgressDisplay()
{
    if (m_isDrawn)
        put("\r\x1b[K");
}

void ProgressDisplay::show(const host::ProgressEvent& event)
{
    if (m_quiet)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (event.stage != m_stage)
        m_stageStart = now;
    m_stage = event.stage;
    if (now - m_stageStart < shownStage)
        return;
    if (m_isTerminal)
        return draw(event);
    if (now - m_lastLine < gapBetweenLines)
        return;
    m_lastLine = now;
    put("qo: " + progressText(event) + "\n");
}

void ProgressDisplay::draw(const host::ProgressEvent& event)
{
    constexpr std::size_t barWidth = 10;
    std::string text;
    if (event.total > 0)
    {
        const auto filled = static_cast<std::size_t>(
            event.count * static_cast<std::int64_t>(barWidth) / event.total);
        text = "[" + std::string(std::min(filled, barWidth), '#') +
               std::string(barWidth - std::min(filled, barWidth), '-') + "] ";
    }
    text += progressText(event);
    if (!event.item.empty())
        text += "  " + harmless(event.item.substr(event.item.rfind('/') + 1));
    put("\r" + cutToWidth(text, windowOf(STDERR_FILENO).columns - 1) + "\x1b[K");
    m_isDrawn = true;
}
} // namespace qo::cli
