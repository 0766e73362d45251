#include "cli/KernelCommand.h"
#include "cli/places/FarTransfer.h"
#include "cli/places/PluginPlace.h"
#include "cli/places/TrackPlace.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/search/SearchResults.h"

#include <algorithm>
#include <map>

namespace qo::cli
{
namespace
{
using host::ProgressReporter;
using host::SearchResultPtr;
using host::SearchResults;

struct SearchOptions
{
    std::string text;
    std::string plugin;
    int limit = 50;
    std::vector<int> numbers;
    std::string to;
    bool replaces = false;
    bool isLong = false;
};

/// Puts tracks that were found into a list.
class FoundListing
{
public:
    FoundListing(CommandLine& line, bool isLong)
        : m_listing(line,
                    isLong,
                    {"id", "title", "artist", "album", "duration", "size", "plugin"},
                    {Listing::Column::number,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::name})
    {
    }

    void add(const CHDSearchResult& result)
    {
        add(result.getDbItem()->id, *result.getDbItem(), host::pluginOf(result));
    }
    /// One that is not kept.
    void add(const ITrackResult& track, const CString& plugin)
    {
        QoFileDbItem item;
        item.title = track.GetTitle();
        item.artist = track.GetArtist();
        item.album = track.GetAlbum();
        item.duration = track.GetDuration();
        item.size = track.GetSize();
        add(0, item, plugin);
    }
    void finish() { m_listing.finish(); }

private:
    void add(int id, const QoFileDbItem& item, const CString& plugin)
    {
        if (m_listing.isForPeople())
            return m_listing.addCells({id != 0 ? std::to_string(id) : "",
                                       oneLine(item.title),
                                       oneLine(item.artist),
                                       oneLine(item.album),
                                       item.duration > 0 ? durationText(item.duration) : "",
                                       oneLine(plugin)});
        Json record;
        record["id"] = id != 0 ? Json(id) : Json();
        record["title"] = toUtf8(item.title);
        record["artist"] = toUtf8(item.artist);
        record["album"] = toUtf8(item.album);
        record["duration"] = item.duration;
        record["size"] = item.size;
        record["plugin"] = toUtf8(plugin);
        m_listing.addRecord(record);
    }

    Listing m_listing;
};

/// Whether the plug-in of that id can search.
bool canSearch(const CString& id)
{
    boost::shared_ptr<IPlugin> plugin;
    return CQoPluginManager::getPlugin(id, plugin) && plugin->GetSearch();
}

/// The plug-in to search on: the one that was named, or the only one that can. Throws HostError.
CString searchedPlugin(const std::string& typed)
{
    if (!typed.empty())
    {
        const CString id = needPlugin(typed);
        if (!canSearch(id))
            throw HostError(ExitCode::usage,
                            toUtf8(id) + " cannot be searched; \"qo plugin browse " + toUtf8(id) +
                                " --deep\" lists all that is in it");
        return id;
    }
    CStringArray ids;
    CQoPluginManager::getBrowsePlugins(ids);
    std::vector<CString> able;
    std::ranges::copy_if(ids, std::back_inserter(able), canSearch);
    if (able.size() != 1)
        throw HostError(ExitCode::usage,
                        able.empty() ? "no service of yours can be searched; music servers can"
                                     : "say where to search: --on NAME");
    return able.front();
}

ExitCode search(CommandLine& line, const SearchOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    FoundListing listing(line, options.isLong);
    int found = 0;
    runShown(
        line,
        *session,
        [&](ProgressReporter& progress)
        {
            const CString plugin = searchedPlugin(options.plugin);
            host::FoundTracks tracks;
            if (!CQoPluginManager::searchTracks(plugin, fromUtf8(options.text), &progress, tracks))
            {
                stopIfCancelled(progress);
                failPlugin("the search in " + toUtf8(plugin) + " failed");
            }
            found = tracks.GetSize();
            if (found > options.limit)
                tracks.SetSize(options.limit);
            readyDatabase(*session);
            if (line.dryRun)
            {
                for (const auto& track : tracks)
                    listing.add(*track, plugin);
                return;
            }
            for (const SearchResultPtr& result : SearchResults().keep(plugin, tracks))
                listing.add(*result);
        });
    listing.finish();
    if (found == 0)
        line.note("nothing was found");
    else if (found > options.limit)
        line.note(std::to_string(options.limit) + " of " + countText(found, "track") +
                  " that were found; --limit shows more");
    return ExitCode::done;
}

ExitCode listKept(CommandLine& line, const SearchOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FoundListing listing(line, options.isLong);
    session->kernel().run(
        [&]
        {
            readyDatabase(*session);
            const SearchResults results;
            for (const SearchResultPtr& result : results.all())
                listing.add(*result);
        });
    listing.finish();
    return ExitCode::done;
}

ExitCode searchOrList(CommandLine& line, const SearchOptions& options)
{
    return options.text.empty() ? listKept(line, options) : search(line, options);
}

/// Tracks of one plug-in that shall be fetched.
struct FoundFetches
{
    std::unique_ptr<TrackPlace> place;
    std::vector<Transfer> transfers;
};

std::map<CString, FoundFetches> foundFetches(const std::vector<int>& numbers, const CString& folder)
{
    std::map<CString, FoundFetches> byPlugin;
    const SearchResults results;
    for (const int number : numbers)
    {
        const SearchResultPtr result = results.need(number);
        const auto track = host::needTrack(*result);
        const CString plugin = host::pluginOf(*result);
        FoundFetches& fetches = byPlugin[plugin];
        if (!fetches.place)
            fetches.place = std::make_unique<TrackPlace>(plugin);
        fetches.transfers.push_back({fetches.place->add(track),
                                     combinePath(folder, CMpSearchResultUtils::fileNameOf(*track)),
                                     track->GetSize()});
    }
    return byPlugin;
}

ExitCode fetchFound(CommandLine& line, const SearchOptions& options)
{
    const auto run = [&](const FetchWork& work)
    {
        readyDatabase(work.session);
        for (auto& [plugin, fetches] : foundFetches(options.numbers, work.folder))
            fetchTransfers(work, *fetches.place, fetches.transfers);
    };
    return fetchInto(line, options.to, options.replaces, run);
}

ExitCode clearKept(CommandLine& line, const SearchOptions&)
{
    const auto session = openKernel(line, KernelUse::change);
    const std::int64_t count = session->kernel().run(
        [&]
        {
            readyDatabase(*session);
            SearchResults results;
            const std::vector<SearchResultPtr> unused = results.unused();
            if (!line.dryRun)
                results.forget(unused);
            return static_cast<std::int64_t>(unused.size());
        });
    if (line.json)
        line.out.line(host::dump({{"forgotten", count}}));
    else
        line.note((line.dryRun ? "would have forgotten " : "forgotten: ") +
                  countText(count, "search result"));
    return ExitCode::done;
}
} // namespace

void setUpSearch(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<SearchOptions>();
    const auto add = [&](const char* name, const char* help, auto run)
    {
        return line.addCommand(
            command, name, help, [&line, options, run] { return run(line, *options); });
    };
    line.setListAction(command, [&line, options] { return searchOrList(line, *options); });
    command.require_subcommand(0, 1);
    addArgument(command, "TEXT", options->text, "What to look for (all that is kept)");
    addArgument(command, "--on", options->plugin, "The service (the only one that can be searched)")
        ->type_name("NAME");
    command.add_option("--limit", options->limit, "At most so many tracks (50)")
        ->check(CLI::PositiveNumber)
        ->type_name("N");

    CLI::App* const ls = add("ls", "List the tracks that were found and are kept", listKept);
    for (CLI::App* const each : {&command, ls})
        each->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
    CLI::App* const get = add("get", "Copy tracks that were found from their services", fetchFound);
    get->add_option("NUMBER", options->numbers, "The numbers of the tracks, as the list has them")
        ->required()
        ->check(CLI::PositiveNumber);
    addArgument(*get, "--to", options->to, "The folder that the copies go to")
        ->required()
        ->type_name("DIR");
    get->add_flag("--replace", options->replaces, "Replace files that are there");
    add("clear", "Forget the tracks that no playlist holds", clearKept);
}
} // namespace qo::cli
