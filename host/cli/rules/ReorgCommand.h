#pragma once

#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/shown/ProgressDisplay.h"

namespace qo::cli
{
/// Runs the function, which gets the progress, on the kernel's thread: it is shown, and signals
/// that ask the program to end stop it.
template <class Function>
auto runShown(const CommandLine& line, host::Session& session, Function function)
{
    ProgressDisplay display(line.quiet);
    host::ProgressReporter progress([&display](const host::ProgressEvent& event)
                                    { display.show(event); });
    const InterruptGuard guard(progress);
    return session.kernel().run([&] { return function(progress); });
}

/// The commands about plans that are made.
void addReorgRunCommands(CommandLine& line, CLI::App& group);
} // namespace qo::cli
