#include "cli/playlist/PlaylistCommand.h"

#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/query/QueryWords.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::EntryLookup;
using host::EntryState;
using host::Playlist;
using host::Playlists;
using host::Session;
using host::StoredEntry;

ExitCode listPlaylists(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    Listing listing(line,
                    options.isLong,
                    {"id", "name", "entries", "withoutFile", "query"},
                    {Listing::Column::name, Listing::Column::text, Listing::Column::text});
    for (const Playlists::Facts& each : playlists.all())
    {
        const bool isLiving = each.list.isLiving();
        if (listing.isForPeople())
        {
            listing.addCells({oneLine(each.list.name),
                              isLiving ? "living" : countText(each.entries, "song"),
                              isLiving ? oneLine(each.list.query)
                              : each.withoutFile > 0
                                  ? std::to_string(each.withoutFile) + " without a file"
                                  : ""});
            continue;
        }
        Json record;
        record["id"] = isLiving ? Json() : Json(each.list.id);
        record["name"] = toUtf8(each.list.name);
        record["entries"] = isLiving ? Json() : Json(each.entries);
        record["withoutFile"] = isLiving ? Json() : Json(each.withoutFile);
        record["query"] = isLiving ? Json(toUtf8(each.list.query)) : Json();
        listing.addRecord(record);
    }
    listing.finish();
    return ExitCode::done;
}

const char* remarkOn(EntryState state)
{
    switch (state)
    {
    case EntryState::found:
        return "";
    case EntryState::otherSong:
        return "another song";
    case EntryState::gone:
        return "gone";
    case EntryState::withoutFile:
        break;
    }
    return "no file";
}

ExitCode showPlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    const Playlist list = playlists.find(options.playlist);
    Listing listing(
        line,
        options.isLong,
        {"position", "state", "artist", "title", "duration", "path", "text", "velmoraId"},
        {Listing::Column::number,
         Listing::Column::text,
         Listing::Column::number,
         Listing::Column::text,
         Listing::Column::path});
    EntryLookup lookup;
    int position = 0;
    for (const StoredEntry& entry : presentEntries(list))
    {
        if (listing.isClosed())
            break;
        const EntryLookup::Answer answer = lookup.look(entry);
        const StoredEntry shown =
            answer.state == EntryState::found ? host::entryOf(*answer.item) : entry;
        ++position;
        if (listing.isForPeople())
        {
            listing.addCells({std::to_string(position),
                              artistAndTitle(shown.artist, shown.title),
                              shown.duration > 0 ? durationText(shown.duration) : "",
                              remarkOn(answer.state),
                              harmless(placeOf(shown))});
            continue;
        }
        Json record;
        record["position"] = position;
        record["state"] = wordOf(answer.state);
        putEntry(record, shown);
        listing.addRecord(record, host::shownPath(shown.path));
    }
    listing.finish();
    return ExitCode::done;
}

ExitCode makePlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    const CString name = typedName(options.playlist);
    playlists.needFreeName(name);
    Playlist list;
    list.name = name;
    if (!options.livingQuery.empty())
    {
        refuseRelativePaths(options.livingQuery, "a living list");
        list.query = fromUtf8(options.livingQuery);
        const std::string content =
            countText(static_cast<std::int64_t>(presentEntries(list).size()), "song");
        if (!line.dryRun)
            playlists.makeLiving(name, list.query);
        sayPlaylist(line,
                    list,
                    wouldHave(line) + "made the living list \"" + options.playlist +
                        "\"; it finds " + content + " now");
        return ExitCode::done;
    }
    if (!options.choice.isSet() && (!options.choice.order.empty() || options.choice.limit >= 0))
        throw HostError(ExitCode::usage, "say which files; \".\" stands for the current folder");
    if (options.choice.isSet())
        list.entries = host::entriesOf(chosenFiles(options.choice));
    if (options.choice.isSet() && list.entries.empty())
        throw HostError(ExitCode::notFound, "no music or video of the collection fits that");
    if (!line.dryRun)
        list = playlists.make(name, list.entries);
    sayPlaylist(line,
                list,
                wouldHave(line) + "made \"" + options.playlist + "\" with " +
                    countText(static_cast<std::int64_t>(list.entries.size()), "song"));
    return ExitCode::done;
}

ExitCode renamePlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    Playlist list = playlists.find(options.playlist);
    const std::string former = toUtf8(list.name);
    const CString name = typedName(options.newName);
    playlists.needName(name, list);
    if (!line.dryRun)
        playlists.rename(list, name);
    list.name = name;
    sayPlaylist(
        line, list, wouldHave(line) + "renamed \"" + former + "\": \"" + options.newName + "\"");
    return ExitCode::done;
}

ExitCode removePlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    const Playlist list = playlists.find(options.playlist);
    const std::string what =
        list.isLiving() ? "The living list \"" + toUtf8(list.name) + "\""
                        : "The playlist \"" + toUtf8(list.name) + "\" with its " +
                              countText(static_cast<std::int64_t>(list.entries.size()), "song");
    if (!line.dryRun)
    {
        confirm(line, what + " will be removed; the files stay.");
        playlists.remove(list);
    }
    sayPlaylist(line, list, wouldHave(line) + "removed \"" + toUtf8(list.name) + "\"");
    return ExitCode::done;
}
ExitCode runDeed(CommandLine& line, const PlaylistDeed& deed, const PlaylistOptions& options)
{
    const auto session = openKernel(line, deed.use);
    if (deed.collection == CollectionUse::loaded)
        loadForReading(line, *session);
    return session->kernel().run(
        [&]
        {
            if (deed.collection == CollectionUse::database)
                readyDatabase(*session);
            Playlists playlists;
            return deed.run(line, playlists, options);
        });
}

void addNew(CommandLine& line, CLI::App& command, const PlaylistOptionsPtr& options)
{
    CLI::App* const app =
        addPlaylistCommand(line,
                           command,
                           options,
                           "new",
                           "Make one",
                           {KernelUse::change, CollectionUse::loaded, makePlaylist});
    addArgument(*app, "NAME", options->playlist, "Its name")->required();
    CLI::Option* const living = addArgument(
        *app, "--query", options->livingQuery, "Make a living list: look this up when it is shown");
    const std::vector<CLI::Option*> before = app->get_options();
    addQuery(*app, options->choice);
    addNames(*app, options->choice);
    addOrder(*app, options->choice);
    for (CLI::Option* const option : app->get_options())
        if (std::ranges::find(before, option) == before.end())
            living->excludes(option);
}
} // namespace

CLI::App* addPlaylistCommand(CommandLine& line,
                             CLI::App& parent,
                             const PlaylistOptionsPtr& options,
                             const std::string& name,
                             const std::string& description,
                             const PlaylistDeed& deed)
{
    return line.addCommand(parent,
                           name,
                           description,
                           [&line, options, deed] { return runDeed(line, deed, *options); });
}

void addPlaylist(CLI::App& command, PlaylistOptions& options)
{
    addArgument(command, "PLAYLIST", options.playlist, "A playlist by its name, or as #ID")
        ->required();
}

CString typedName(const std::string& typed)
{
    if (!isUtf8(typed))
        throw HostError(ExitCode::usage, "the name of a playlist has to be UTF-8");
    return fromUtf8(typed);
}

Playlist fixedPlaylist(const Playlists& playlists, const std::string& typed)
{
    Playlist list = playlists.find(typed);
    if (list.isLiving())
        throw HostError(ExitCode::usage,
                        "\"" + toUtf8(list.name) +
                            "\" is a living list, whose songs are those that its query finds");
    return list;
}

std::vector<StoredEntry> presentEntries(const Playlist& list)
{
    if (!list.isLiving())
        return list.entries;
    host::Query query({{toUtf8(list.query)}});
    return host::entriesOf(query.files());
}

void putEntry(Json& object, const StoredEntry& entry)
{
    object["artist"] = toUtf8(entry.artist);
    object["title"] = toUtf8(entry.title);
    object["duration"] = entry.duration;
    putPath(object, "path", entry.path);
    object["text"] = toUtf8(entry.text);
    object["velmoraId"] = toUtf8(entry.id);
}

void sayPlaylist(CommandLine& line, const Playlist& list, const std::string& sentence)
{
    if (!line.json)
        return line.note(sentence);
    Json object;
    object["playlist"] = toUtf8(list.name);
    object["id"] = list.id != 0 ? Json(list.id) : Json();
    object["entries"] = list.entries.size();
    object["query"] = list.query.IsEmpty() ? Json() : Json(toUtf8(list.query));
    line.out.line(dump(object));
}

std::string wouldHave(const CommandLine& line)
{
    return line.dryRun ? "would have " : "";
}

void setUpPlaylist(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<PlaylistOptions>();
    const PlaylistDeed listing = {KernelUse::look, CollectionUse::database, listPlaylists};
    line.setAction(command, [&line, options, listing] { return runDeed(line, listing, *options); });
    command.require_subcommand(0, 1);
    const auto add = [&](const char* name, const char* help, const PlaylistDeed& deed)
    { return addPlaylistCommand(line, command, options, name, help, deed); };

    CLI::App* const ls = add("ls", "List them", listing);
    CLI::App* const show = add(
        "show", "List the songs of one", {KernelUse::look, CollectionUse::loaded, showPlaylist});
    addPlaylist(*show, *options);
    for (CLI::App* each : {ls, show})
        each->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
    addNew(line, command, options);
    CLI::App* const rename = add("rename",
                                 "Give one another name",
                                 {KernelUse::change, CollectionUse::database, renamePlaylist});
    addPlaylist(*rename, *options);
    addArgument(*rename, "NAME", options->newName, "Its new name")->required();
    addPlaylistEdits(line, command);
    CLI::App* const remove = add("rm",
                                 "Remove one; its files stay",
                                 {KernelUse::change, CollectionUse::database, removePlaylist});
    addPlaylist(*remove, *options);
    addPlaylistFiles(line, command);
    addPlaylistChecks(line, command);
}
} // namespace qo::cli
