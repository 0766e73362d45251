#pragma once

#include "core/session/ProgressReporter.h"

namespace qo::host
{
class FolderWatch;
}

namespace qo::cli
{
/// While it lives, SIGINT, SIGTERM and SIGHUP cancel the operation that reports to the reporter. A
/// second signal ends the program at once; the database survives that.
class InterruptGuard
{
public:
    explicit InterruptGuard(host::ProgressReporter& reporter);
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
};

/// While it lives, these signals also end the waiting of the watch.
class WatchGuard
{
public:
    explicit WatchGuard(host::FolderWatch& watch);
    ~WatchGuard();
    WatchGuard(const WatchGuard&) = delete;
    WatchGuard& operator=(const WatchGuard&) = delete;
};

/// While it lives, a loop of this process asks wasInterrupted() again and again, and ends then.
class LoopGuard
{
public:
    LoopGuard();
    ~LoopGuard();
    LoopGuard(const LoopGuard&) = delete;
    LoopGuard& operator=(const LoopGuard&) = delete;
};

/// To be called once, at the start of the program. Also ignores SIGPIPE, so that writing into a
/// closed pipe fails instead of ending the program.
void installSignalHandlers();
/// Whether such a signal came, and the exit code that says so to the shell.
bool wasInterrupted();
int interruptExitCode();
} // namespace qo::cli
