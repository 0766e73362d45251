#include "cli/tags/ChosenMusic.h"

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

bool areFiles(const FileChoice& choice)
{
    const host::QueryRequest& request = choice.request;
    return !request.isMarked && !request.hasNames() &&
           std::ranges::all_of(request.words, isRegularFile);
}
} // namespace

bool prepareChoice(CommandLine& line, host::Session& session, const FileChoice& choice)
{
    if (!choice.isSet())
        throw HostError(ExitCode::usage,
                        "name files or folders, or find tracks with words, --artist, --album and "
                        "--genre");
    if (areFiles(choice))
        return false;
    loadForReading(line, session);
    return true;
}

std::vector<CString> chosenMusic(const FileChoice& choice, const host::PendingTags& pending)
{
    std::vector<CString> chosen;
    if (areFiles(choice))
    {
        std::set<CString> seen;
        for (const std::string& typed : choice.request.words)
        {
            const CString path = editedPath(pending, typed);
            if (seen.insert(path).second)
                chosen.push_back(path);
        }
        return chosen;
    }
    for (const QoFileDbItemPtr& item : chosenFiles(choice))
    {
        if (CMusicTagEx::fileSupportsTags(item->path))
            chosen.push_back(item->path);
    }
    if (chosen.empty())
        throw HostError(ExitCode::notFound,
                        "there is no music in " + (choice.request.words.empty()
                                                       ? std::string("what was chosen")
                                                       : choice.request.words.front()));
    return chosen;
}

void addMusic(CLI::App& command, FileChoice& choice)
{
    addQuery(command, choice);
    addNames(command, choice);
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
withChosenMusic(CommandLine& line, KernelUse use, const FileChoice& choice, const MusicWork& work)
{
    const auto session = openKernel(line, use);
    const bool isLoaded = prepareChoice(line, *session, choice);
    return session->kernel().run(
        [&]
        {
            if (session->hasLock())
                session->prepareStore();
            ChosenMusic chosen{*session, isLoaded, {}, {}};
            chosen.paths = chosenMusic(choice, chosen.pending);
            return work(chosen);
        });
}
} // namespace qo::cli
