#include "cli/files/FileChoice.h"

#include "core/base/ClosestName.h"
#include "core/base/HostFiles.h"
#include "core/query/QueryWords.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Logical.h>

namespace qo::cli
{
namespace
{
/// Refuses a name that no music has.
template <class List>
void checkName(const char* kind,
               std::optional<std::string> host::QueryRequest::*member,
               const host::QueryRequest& request,
               const List& all)
{
    const std::optional<std::string>& typed = request.*member;
    host::QueryRequest alone;
    alone.*member = typed;
    if (!typed || !host::Query(alone).files().IsEmpty())
        return;
    const CString name = fromUtf8(*typed);
    std::string text = name.IsEmpty() ? std::string("every track has an ") + kind
                                      : std::string("there is no ") + kind + " \"" + *typed + "\"";
    host::ClosestName closest(name);
    for (const auto& each : all)
        closest.look(each->getName());
    if (!closest.best().IsEmpty())
        text += "; the closest is \"" + toUtf8(closest.best()) + "\"";
    throw HostError(ExitCode::notFound, text);
}
} // namespace

CLI::Option* addQuery(CLI::App& command, FileChoice& choice)
{
    command.add_flag("--marked", choice.request.isMarked, "Only files with a check mark");
    return addArguments(command,
                        "QUERY",
                        choice.request.words,
                        "Words, FIELD:TEXT, paths and patterns: see \"qo help queries\"");
}

void addAll(CLI::App& command, bool& all, const char* help)
{
    std::vector<CLI::Option*> others = command.get_options();
    CLI::Option* const flag = command.add_flag("--all", all, help);
    for (CLI::Option* const other : others)
    {
        if (other != command.get_help_ptr())
            flag->excludes(other);
    }
}

void addNames(CLI::App& command, FileChoice& choice)
{
    addOptional(command,
                "--artist",
                choice.request.artist,
                "Only music of exactly this artist; \"\": without one");
    addOptional(command, "--album", choice.request.album, "Only albums of exactly this name");
    addOptional(command, "--genre", choice.request.genre, "Only music of exactly this genre");
}

void addOrder(CLI::App& command, FileChoice& choice)
{
    addArgument(command, "--sort", choice.order, "Sort by these, each with + or -: year-,album")
        ->type_name("FIELD,...");
    command.add_option("--limit", choice.limit, "At most so many")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
}

QoFileDbItemArray chosenFiles(const FileChoice& choice)
{
    host::RecordOrder order(choice.order);
    host::Query query(choice.request);
    QoFileDbItemArray files = query.files();
    if (files.IsEmpty() && choice.isSet() && !query.isFoldersOnly())
        complainOfNothing(choice);
    order.sort(files);
    if (choice.limit >= 0 && files.GetSize() > choice.limit)
        files.SetSize(choice.limit);
    return files;
}

QoFileDbItemArray chosenSingleFiles(const FileChoice& choice, const char* advice)
{
    const std::vector<std::string>& words = choice.request.words;
    const auto path = words.size() == 1 ? host::pathInCollection(words[0]) : std::nullopt;
    if (path && CQoCollection::m_ownCollection.getDir(*path))
        throw HostError(ExitCode::usage, words[0] + " is a folder; " + advice);
    return chosenFiles(choice);
}

void refuseRelativePaths(const std::string& query, const char* what)
{
    const auto alternatives =
        host::QueryParser::parse({query}, [](const std::string&) { return false; });
    for (const host::QueryAlternative& words : alternatives)
        for (const host::QueryWord& word : words)
        {
            const bool isPath =
                !word.field && !word.isQuoted && !word.isRegex && !word.value.starts_with('/') &&
                (host::looksLikePath(word.value) || host::pathInCollection(word.value));
            if (isPath)
                throw HostError(ExitCode::usage,
                                what + (" is looked up from any folder: write the path " +
                                        word.value + " as " + host::absolutePath(word.value)));
        }
}

void complainOfNothing(const FileChoice& choice)
{
    const host::QueryRequest& request = choice.request;
    checkName("artist", &host::QueryRequest::artist, request, CLTManager::getArtists());
    checkName("album", &host::QueryRequest::album, request, CLTManager::getAlbums());
    checkName("genre", &host::QueryRequest::genre, request, CLTManager::getGenres());
    std::string typed;
    for (const std::string& word : request.words)
        typed += (typed.empty() ? "" : " ") + word;
    const std::string subject = request.isMarked ? "no marked file" : "no file of the collection";
    if (!typed.empty())
        throw HostError(ExitCode::notFound, subject + " fits \"" + typed + "\"");
    throw HostError(ExitCode::notFound,
                    request.hasNames() ? "no track has all of these names"
                                       : "no file of the collection has a check mark");
}
} // namespace qo::cli
