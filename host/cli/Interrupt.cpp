#include "cli/Interrupt.h"

#include <csignal>

namespace qo::cli
{
namespace
{
std::atomic<host::ProgressReporter*> target{nullptr};
volatile std::sig_atomic_t lastSignal = 0;
constexpr int endSignals[] = {SIGINT, SIGTERM, SIGHUP};

void onEndSignal(int signal)
{
    host::ProgressReporter* const reporter = target.load();
    if (reporter && lastSignal == 0)
    {
        lastSignal = signal;
        reporter->cancel();
        return;
    }
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
