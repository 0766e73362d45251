#pragma once

#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "core/collection/PendingTags.h"

#include <functional>

namespace qo::cli
{
/// The spelling of the file under which edits wait, or else the typed one.
CString editedPath(const host::PendingTags& pending, const std::string& typed);

/// Loads the collection if the choice needs it; whether it did. On any thread.
bool prepareChoice(CommandLine& line, host::Session& session, const FileChoice& choice);
/// Of a choice that is prepared. On the kernel's thread.
std::vector<CString> chosenMusic(const FileChoice& choice, const host::PendingTags& pending);

/// What a command works with.
struct ChosenMusic
{
    host::Session& session;
    bool isLoaded; ///< the collection
    std::vector<CString> paths;
    host::PendingTags pending;
};
using MusicWork = std::function<ExitCode(ChosenMusic& chosen)>;

/// Starts the kernel and calls the work on its thread with the chosen music files. Where files
/// alone were typed, these need not be in the collection; otherwise it is loaded, and all music
/// that fits is meant, in its order. Throws HostError where nothing was chosen, or nothing fits.
ExitCode
withChosenMusic(CommandLine& line, KernelUse use, const FileChoice& choice, const MusicWork& work);
/// The choice of a command that works on music, of which none may be left out.
void addMusic(CLI::App& command, FileChoice& choice);

/// Calls the work for each of the list and goes on after a HostError, unless there is one alone.
template <class List, class Work>
ExitCode forEachOf(const List& list, Work work)
{
    std::size_t failed = 0;
    for (const auto& each : list)
    {
        try
        {
            work(each);
        }
        catch (const HostError& error)
        {
            if (list.size() == 1 || error.code() == ExitCode::interrupted)
                throw;
            CommandLine::complain(error.what());
            ++failed;
        }
    }
    if (failed == 0)
        return ExitCode::done;
    return failed < list.size() ? ExitCode::partly : ExitCode::failed;
}
} // namespace qo::cli
