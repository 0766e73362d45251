#include "cli/Interrupt.h"

#include "cli/shown/Pager.h"
#include "core/watch/FolderWatch.h"

#include <csignal>

namespace qo::cli
{
namespace
{
std::atomic<host::ProgressReporter*> target{nullptr};
std::atomic<host::FolderWatch*> watchTarget{nullptr};
std::atomic<int> loops{0};
volatile std::sig_atomic_t lastSignal = 0;
constexpr int endSignals[] = {SIGINT, SIGTERM, SIGHUP};

void onEndSignal(int signal)
{
    host::ProgressReporter* const reporter = target.load();
    host::FolderWatch* const watch = watchTarget.load();
    if ((reporter || watch || loops > 0) && lastSignal == 0)
    {
        lastSignal = signal;
        if (reporter)
            reporter->cancel();
        if (watch)
            watch->stop();
        return;
    }
    // A program that ended before its pager would leave two readers at one keyboard.
    if (signal == SIGINT && Pager::isShowing())
        return;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}
} // namespace

InterruptGuard::InterruptGuard(host::ProgressReporter& reporter)
{
    target.store(&reporter);
}

InterruptGuard::~InterruptGuard()
{
    target.store(nullptr);
}

WatchGuard::WatchGuard(host::FolderWatch& watch)
{
    watchTarget.store(&watch);
}

WatchGuard::~WatchGuard()
{
    watchTarget.store(nullptr);
}

LoopGuard::LoopGuard()
{
    ++loops;
}

LoopGuard::~LoopGuard()
{
    --loops;
}

void installSignalHandlers()
{
    struct sigaction action
    {
    };
    action.sa_handler = onEndSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : endSignals)
    {
        // What the caller had switched off (nohup) stays off.
        struct sigaction before
        {
        };
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

bool wasInterrupted()
{
    return lastSignal != 0;
}

int interruptExitCode()
{
    return 128 + lastSignal;
}
} // namespace qo::cli
