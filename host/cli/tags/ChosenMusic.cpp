#include "cli/tags/ChosenMusic.h"

#include "cli/files/FoundFiles.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <algorithm>
#include <set>

namespace qo::cli
{
namespace
{
bool isRegularFile(const std::string& typed)
{
    FileInfo info;
    return fileSystem().info(spellings(typed).front(), Spelling::exact, info) == 0 &&
           info.kind == FileKind::regular;
}

/// The files of the tracks with the names of the filter.
std::vector<CString> tracksOf(const MusicFilter& filter)
{
    std::vector<CString> paths;
    for (const CLTTrack* track : filter.tracks())
    {
        for (const auto& file : track->getMusicFiles())
            paths.push_back(file->getPath());
    }
    std::ranges::sort(
        paths, [](const CString& a, const CString& b) { return CQoUtils::comparePaths(a, b) < 0; });
    return paths;
}

/// What lies at the typed path: a file itself, or the music of a folder.
std::vector<CString> musicAt(const std::string& typed, const host::PendingTags& pending)
{
    if (isRegularFile(typed))
        return {editedPath(pending, typed)};
    const FoundFiles found(typed);
    std::vector<CString> paths;
    for (const QoFileDbItemPtr& item : found.files())
    {
        if (CMusicTagEx::fileSupportsTags(item->path))
            paths.push_back(item->path);
    }
    return paths;
}

/// Loads the collection if the choice needs it.
void prepareChoice(CommandLine& line, host::Session& session, const MusicChoice& choice)
{
    if (choice.paths.empty() && !choice.filter.isSet())
        throw HostError(ExitCode::usage,
                        "name files or folders, or tracks with --artist, --album and --genre");
    if (choice.filter.isSet() || !std::ranges::all_of(choice.paths, isRegularFile))
        loadForReading(line, session);
}

std::vector<CString> chosenMusic(const MusicChoice& choice, const host::PendingTags& pending)
{
    const bool isFiltered = choice.filter.isSet();
    std::vector<CString> chosen = isFiltered ? tracksOf(choice.filter) : std::vector<CString>();
    if (choice.paths.empty())
        return chosen;
    const std::set<CString> named(chosen.begin(), chosen.end());
    std::set<CString> seen;
    chosen.clear();
    for (const std::string& typed : choice.paths)
    {
        for (const CString& path : musicAt(typed, pending))
        {
            if ((!isFiltered || named.contains(path)) && seen.insert(path).second)
                chosen.push_back(path);
        }
    }
    if (chosen.empty())
        throw HostError(ExitCode::notFound, "there is no such music in " + choice.paths.front());
    return chosen;
}
} // namespace

void addChoice(CLI::App& command, MusicChoice& choice)
{
    addArguments(command, "PATH", choice.paths, "Music files, and folders of the collection");
    addFilter(command, choice.filter);
}

CString editedPath(const host::PendingTags& pending, const std::string& typed)
{
    const std::vector<CString> forms = spellings(typed);
    for (const CString& form : forms)
    {
        if (pending.isEdited(form))
            return form;
    }
    return forms.front();
}

ExitCode
withChosenMusic(CommandLine& line, KernelUse use, const MusicChoice& choice, const MusicWork& work)
{
    const auto session = openKernel(line, use);
    prepareChoice(line, *session, choice);
    return session->kernel().run(
        [&]
        {
            if (use == KernelUse::hold)
                session->prepareStore();
            host::PendingTags pending;
            return work(chosenMusic(choice, pending), pending);
        });
}
} // namespace qo::cli
