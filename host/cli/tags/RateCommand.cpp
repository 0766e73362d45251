#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "cli/tags/TagWriting.h"
#include "core/collection/CollectionFiles.h"
#include "core/query/QueryRange.h"
#include "core/store/HostStore.h"

namespace qo::cli
{
namespace
{
using host::HostStore;
using host::Session;

struct RateOptions
{
    FileChoice choice; ///< with the stars as the last word, until takeStars()
    bool writes = false;
    std::string when;
};

/// The chosen files that can be heard or seen: a query that names a folder also finds its pictures.
std::vector<const QoFileDbItem*> chosenMedia(const FileChoice& choice)
{
    std::vector<const QoFileDbItem*> media;
    for (const QoFileDbItemPtr& item : chosenFiles(choice))
    {
        if (host::isMedia(*item))
            media.push_back(item.get());
    }
    if (media.empty())
        throw HostError(ExitCode::notFound, "none of these files is music or a video");
    return media;
}

std::vector<LastingId> idsOf(const std::vector<const QoFileDbItem*>& items)
{
    std::vector<LastingId> ids;
    ids.reserve(items.size());
    for (const QoFileDbItem* const item : items)
        ids.push_back(item->velmoraId);
    return ids;
}

/// Takes the last word off the query: half stars, or FileNotes::ofTag for "tag".
int takeStars(FileChoice& choice)
{
    std::vector<std::string>& words = choice.request.words;
    if (words.size() < 2 && !(words.size() == 1 && choice.request.isMarked))
        throw HostError(ExitCode::usage, "say which files, and then how many stars: 0 to 5");
    const std::string typed = words.back();
    words.pop_back();
    if (typed == "tag")
        return host::FileNotes::ofTag;
    const host::QueryRange range =
        host::parseRange(host::QueryKind::stars, typed, "rate " + typed, 0);
    if (range.first != range.last)
        throw HostError(ExitCode::usage, "\"" + typed + "\" is no number of stars");
    return static_cast<int>(range.first);
}

/// Into the files, whose tags then say what the store says.
ExitCode writeRatings(CommandLine& line,
                      Session& session,
                      const std::vector<const QoFileDbItem*>& items,
                      int halfStars)
{
    std::vector<CString> paths;
    paths.reserve(items.size());
    for (const QoFileDbItem* const item : items)
        paths.push_back(item->path);
    if (paths.size() > 1 && !line.dryRun)
        confirm(line,
                "The rating will be written into " +
                    countText(static_cast<std::int64_t>(paths.size()), "file") + ".");
    TagWriting writing(line, paths, "; the same command goes on");
    KVTagLib::CTags wanted;
    wanted.SetRating(halfStars);
    const ExitCode code =
        writing.run([&](const CString& path, host::ProgressReporter& progress)
                    { return line.dryRun ? tagShown(path) : writeTags(path, wanted, progress); });
    writing.takeIn(session, true);
    return code;
}

void say(CommandLine& line, std::size_t files, const std::string& deed)
{
    if (line.json)
        return line.out.line(dump({{"files", files}}));
    line.note((line.dryRun ? "would have " : "") + deed + " " +
              countText(static_cast<std::int64_t>(files), "file"));
}

ExitCode rate(CommandLine& line, RateOptions options)
{
    const int stars = takeStars(options.choice);
    if (stars == host::FileNotes::ofTag && options.writes)
        throw HostError(ExitCode::usage, "what the tag says is in the file already");
    const auto session = openKernel(line, KernelUse::change);
    loadForReading(line, *session);
    return session->kernel().run(
        [&]
        {
            const auto items = chosenMedia(options.choice);
            if (session->hasLock())
            {
                session->prepareStore();
                HostStore(Session::folder()).setRating(idsOf(items), stars);
            }
            say(line, items.size(), "rated");
            return options.writes ? writeRatings(line, *session, items, stars) : ExitCode::done;
        });
}

ExitCode countPlays(CommandLine& line, const RateOptions& options)
{
    const std::int64_t now = toTicks(systemClock().now());
    const std::int64_t when =
        options.when.empty()
            ? now
            : host::parseRange(host::QueryKind::time, options.when, "--at " + options.when, now)
                  .first;
    if (when > now)
        throw HostError(ExitCode::usage, options.when + " has not come yet");
    const auto session = openKernel(line, KernelUse::change);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            const auto items = chosenMedia(options.choice);
            if (session->hasLock())
            {
                session->prepareStore();
                HostStore(Session::folder()).addPlays(idsOf(items), 1, when);
            }
            say(line, items.size(), "counted a play of");
        });
    return ExitCode::done;
}
} // namespace

void setUpRate(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<RateOptions>();
    line.setAction(command, [&line, options] { return rate(line, *options); });
    addQuery(command, options->choice)->required();
    command.add_flag("--write", options->writes, "Into the tags of the files, too");
}

void setUpPlayed(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<RateOptions>();
    line.setAction(command, [&line, options] { return countPlays(line, *options); });
    addQuery(command, options->choice)->required();
    addArgument(command, "--at", options->when, "When: 2024-05-31T18:30, -2h (now)")
        ->type_name("TIME");
}
} // namespace qo::cli
