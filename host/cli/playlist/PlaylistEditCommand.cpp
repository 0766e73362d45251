#include "cli/playlist/PlaylistCommand.h"
#include "cli/shown/Text.h"

#include <algorithm>
#include <sstream>
#include <unordered_set>

namespace qo::cli
{
namespace
{
using host::Playlist;
using host::Playlists;
using host::StoredEntry;

[[noreturn]] void refusePositions(const std::string& word)
{
    throw HostError(ExitCode::usage,
                    "\"" + word + "\" is no position: write numbers and ranges as 3,5-7");
}

/// A position of a list with so many entries, counted from 1.
std::size_t positionOf(const std::string& digits, const std::string& word, std::size_t count)
{
    if (digits.empty() || digits.size() > 9 ||
        !std::all_of(digits.begin(), digits.end(), [](char c) { return isDigit(c); }))
        refusePositions(word);
    const auto position = static_cast<std::size_t>(textToInt(fromUtf8(digits).view()));
    if (position == 0 || position > count)
        throw HostError(ExitCode::usage,
                        "there is no position " + digits + ": the list has " +
                            countText(static_cast<std::int64_t>(count), "song"));
    return position;
}

/// "3,5-7": for each entry whether it is meant.
std::vector<bool> meantBy(const std::string& typed, std::size_t count)
{
    if (typed.empty())
        refusePositions(typed);
    std::vector<bool> isMeant(count);
    std::istringstream words(typed);
    for (std::string word; std::getline(words, word, ',');)
    {
        const std::size_t dash = word.find('-');
        const std::size_t first = positionOf(word.substr(0, dash), word, count);
        const std::size_t last =
            dash == std::string::npos ? first : positionOf(word.substr(dash + 1), word, count);
        if (last < first)
            refusePositions(word);
        std::fill(isMeant.begin() + static_cast<std::ptrdiff_t>(first - 1),
                  isMeant.begin() + static_cast<std::ptrdiff_t>(last),
                  true);
    }
    return isMeant;
}

/// Puts the songs where the first of them shall be; after all others for 0.
void insertAt(std::vector<StoredEntry>& entries, const std::vector<StoredEntry>& songs, int at)
{
    const std::size_t index =
        at > 0 ? std::min(static_cast<std::size_t>(at - 1), entries.size()) : entries.size();
    entries.insert(
        entries.begin() + static_cast<std::ptrdiff_t>(index), songs.begin(), songs.end());
}

ExitCode finish(CommandLine& line,
                Playlists& playlists,
                Playlist& list,
                const std::vector<StoredEntry>& entries,
                const std::string& sentence)
{
    if (!line.dryRun)
        playlists.setEntries(list, entries);
    list.entries = entries;
    sayPlaylist(line,
                list,
                wouldHave(line) + sentence + " \"" + toUtf8(list.name) + "\"; it " +
                    (line.dryRun ? "would have " : "has ") +
                    countText(static_cast<std::int64_t>(entries.size()), "song"));
    return ExitCode::done;
}

ExitCode addSongs(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    if (!options.choice.isSet())
        throw HostError(ExitCode::usage, "say which files to add");
    Playlist list = fixedPlaylist(playlists, options.playlist);
    const std::vector<StoredEntry> songs = host::entriesOf(chosenFiles(options.choice));
    if (songs.empty())
        throw HostError(ExitCode::notFound, "no music or video of the collection fits that");
    std::vector<StoredEntry> entries = list.entries;
    insertAt(entries, songs, options.at);
    return finish(line,
                  playlists,
                  list,
                  entries,
                  "added " + countText(static_cast<std::int64_t>(songs.size()), "song") + " to");
}

ExitCode removeSongs(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    if (options.choice.isSet() != options.positions.empty())
        throw HostError(ExitCode::usage, "say which songs: a query, or positions with --at");
    Playlist list = fixedPlaylist(playlists, options.playlist);
    std::vector<bool> isMeant(list.entries.size());
    if (!options.positions.empty())
        isMeant = meantBy(options.positions, list.entries.size());
    else
    {
        std::unordered_set<int> rows;
        for (const QoFileDbItemPtr& item : chosenFiles(options.choice))
            rows.insert(item->id);
        host::EntryLookup lookup;
        for (std::size_t i = 0; i < isMeant.size(); ++i)
            isMeant[i] = rows.contains(list.entries[i].row) &&
                         lookup.look(list.entries[i]).state == host::EntryState::found;
    }
    std::vector<StoredEntry> entries;
    for (std::size_t i = 0; i < isMeant.size(); ++i)
        if (!isMeant[i])
            entries.push_back(list.entries[i]);
    const std::size_t gone = list.entries.size() - entries.size();
    if (gone == 0)
        throw HostError(ExitCode::notFound,
                        "no song of the playlist \"" + toUtf8(list.name) + "\" fits that");
    return finish(line,
                  playlists,
                  list,
                  entries,
                  "removed " + countText(static_cast<std::int64_t>(gone), "song") + " from");
}

ExitCode moveSongs(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    Playlist list = fixedPlaylist(playlists, options.playlist);
    const std::vector<bool> isMeant = meantBy(options.positions, list.entries.size());
    std::vector<StoredEntry> moved;
    std::vector<StoredEntry> entries;
    for (std::size_t i = 0; i < isMeant.size(); ++i)
        (isMeant[i] ? moved : entries).push_back(list.entries[i]);
    insertAt(entries, moved, options.at);
    return finish(line,
                  playlists,
                  list,
                  entries,
                  "moved " + countText(static_cast<std::int64_t>(moved.size()), "song") +
                      " within");
}
} // namespace

void addPlaylistEdits(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<PlaylistOptions>();
    const auto add =
        [&](const char* name, const char* help, CollectionUse collection, PlaylistRun run)
    {
        CLI::App* const app = addPlaylistCommand(
            line, command, options, name, help, {KernelUse::change, collection, run});
        addPlaylist(*app, *options);
        return app;
    };
    CLI::App* const more = add("add", "Add songs", CollectionUse::loaded, addSongs);
    addQuery(*more, options->choice);
    addNames(*more, options->choice);
    addOrder(*more, options->choice);
    more->add_option("--at", options->at, "Where the first of them shall stand; else at the end")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    CLI::App* const less = add("remove", "Take songs out", CollectionUse::loaded, removeSongs);
    addQuery(*less, options->choice);
    addNames(*less, options->choice);
    addArgument(*less, "--at", options->positions, "Those at these positions, as 3,5-7")
        ->type_name("N,...");
    CLI::App* const order = add("move", "Change the order", CollectionUse::database, moveSongs);
    addArgument(*order, "POSITIONS", options->positions, "Which songs, as 3,5-7")->required();
    order->add_option("TO", options->at, "The position of the first of them afterwards")
        ->required()
        ->check(CLI::PositiveNumber);
}
} // namespace qo::cli
