#pragma once

#include "core/session/ProgressReporter.h"

namespace qo::host
{
class FolderWatch;
}

namespace qo::cli
{
/// While it lives, the signals that ask a program to end cancel the operation behind the reporter
/// instead; a second one ends the program at once, which the database survives.
class InterruptGuard
{
public:
    explicit InterruptGuard(host::ProgressReporter& reporter);
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
};

/// While it lives, these signals end the waiting of the watch too.
class WatchGuard
{
public:
    explicit WatchGuard(host::FolderWatch& watch);
    ~WatchGuard();
    WatchGuard(const WatchGuard&) = delete;
    WatchGuard& operator=(const WatchGuard&) = delete;
};

/// Once, at the start of the program; also leaves broken pipes to those who write into them.
void installSignalHandlers();
/// Whether such a signal came, and the exit code that tells it to the shell.
bool wasInterrupted();
int interruptExitCode();
} // namespace qo::cli
