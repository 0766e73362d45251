#pragma once

#include "core/session/ProgressReporter.h"

#include <chrono>
#include <string>

namespace qo::cli
{
/// Shows progress on standard error: one line that is drawn over itself on a terminal, a line every
/// few seconds elsewhere. A stage that takes less than half a second is not shown.
class ProgressDisplay
{
public:
    explicit ProgressDisplay(bool quiet);
    /// Takes the line off the terminal.
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    void show(const host::ProgressEvent& event);

private:
    void draw(const host::ProgressEvent& event);

    bool m_quiet;
    bool m_isTerminal;
    bool m_isDrawn = false;
    int m_stage = -1;
    std::chrono::steady_clock::time_point m_stageStart;
    std::chrono::steady_clock::time_point m_lastLine;
};

/// "checking files 120/1000 (12 %), 300/s, 0:03 left", without the file.
std::string progressText(const host::ProgressEvent& event);
} // namespace qo::cli
