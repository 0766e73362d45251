#pragma once

#include "cli/KernelCommand.h"
#include "cli/music/MusicFilter.h"
#include "core/collection/PendingTags.h"

#include <functional>

namespace qo::cli
{
/// Which music files a command is about: files, which need not be in the collection, the music in
/// folders of the collection, and with names only those of the tracks that have them.
struct MusicChoice
{
    std::vector<std::string> paths;
    MusicFilter filter;
};

/// Gives the command the arguments PATH and the options of the filter.
void addChoice(CLI::App& command, MusicChoice& choice);

/// The spelling of the file under which edits wait, or else the typed one.
CString editedPath(const host::PendingTags& pending, const std::string& typed);

/// What a command does with the chosen files.
using MusicWork =
    std::function<ExitCode(const std::vector<CString>& paths, host::PendingTags& pending)>;

/// Starts the kernel, loads the collection if the choice needs it, and calls the work on the
/// kernel's thread with the chosen files: each once, in the order of the paths and of the
/// collection. Throws HostError where nothing was chosen, or a path has nothing.
ExitCode
withChosenMusic(CommandLine& line, KernelUse use, const MusicChoice& choice, const MusicWork& work);

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
