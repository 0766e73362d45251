#pragma once

#include "cli/CommandLine.h"
#include "cli/music/MusicFilter.h"
#include "core/collection/PendingTags.h"
#include "core/session/Session.h"

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

/// Loads the collection if the choice needs it. Throws HostError where nothing was chosen at all.
void prepareChoice(CommandLine& line, host::Session& session, const MusicChoice& choice);
/// The chosen files, each once, in the order of the paths and of the collection. On the kernel's
/// thread. Throws HostError for a path where there is nothing.
std::vector<CString> chosenMusic(const MusicChoice& choice, const host::PendingTags& pending);
} // namespace qo::cli
