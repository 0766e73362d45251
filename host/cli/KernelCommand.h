#pragma once

#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/shown/ProgressDisplay.h"
#include "core/base/HostFiles.h"
#include "core/base/ScratchDatabase.h"
#include "core/load/CollectionLoader.h"
#include "core/session/Session.h"

#include <memory>
#include <string>
#include <vector>

namespace qo::cli
{
using host::spellings;

/// What a command needs of the kernel.
enum class KernelUse
{
    look,   ///< changes nothing, so it works beside a process that does
    change, ///< a dry run looks, a real one holds
    hold    ///< the data folder is this process's own
};

/// Starts the kernel as the command line asks. Its notes go to standard error. Where a dry run
/// would save something, throws HostError when it could not. Of several sessions of one process
/// none is the last one.
std::unique_ptr<host::Session>
openKernel(const CommandLine& line, KernelUse use, bool isLast = true);

/// Throws HostError when nothing can be written in the folder.
void needWritable(const CString& folder);
/// Throws HostError when no file can be written there, or something else stands there, and asks
/// before one is written over; a dry run does not ask.
void prepareOutput(const CommandLine& line, const std::string& path);

/// Progress that people see while it lives. Signals that ask the program to end cancel it.
class ShownProgress
{
public:
    explicit ShownProgress(const CommandLine& line)
        : m_display(line.quiet)
        , m_reporter([this](const host::ProgressEvent& event) { m_display.show(event); })
        , m_guard(m_reporter)
    {
    }

    host::ProgressReporter& reporter() { return m_reporter; }

private:
    ProgressDisplay m_display;
    host::ProgressReporter m_reporter;
    InterruptGuard m_guard;
};

/// Runs the function, which gets the progress, on the kernel's thread.
template <class Function>
auto runShown(const CommandLine& line, host::Session& session, Function function)
{
    ShownProgress progress(line);
    return session.kernel().run([&] { return function(progress.reporter()); });
}

/// Checks the database and loads the collection, with progress and a way to interrupt.
host::LoadReport
loadCollection(const CommandLine& line, host::Session& session, const host::LoadOptions& options);
/// Makes the database ready for a session that may change it, and looks at it for one that may not.
/// On the kernel's thread; throws HostError.
void readyDatabase(host::Session& session);
/// A copy of the database, which a dry run may write to; null for a real run.
std::unique_ptr<host::ScratchDatabase> trialOf(const CommandLine& line, host::Session& session);
/// What --on does with the collection of a place.
enum class PlaceUse
{
    instead, ///< it is listed instead of the user's own
    beside   ///< it is the kernel's foreign collection, beside the user's own
};
/// Gives a command that shows what loadForReading() loads the option --on.
void addPlaceOption(CommandLine& line, CLI::App& command, PlaceUse use = PlaceUse::instead);
/// What the database has, for a session that looks; the plain start for one that holds. With a
/// place on the command line, what it has of that, instead of it or beside it.
host::LoadReport
loadForReading(const CommandLine& line, host::Session& session, PlaceUse use = PlaceUse::instead);
} // namespace qo::cli
