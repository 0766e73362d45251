#include "cli/playlist/PlaylistCommand.h"
#include "cli/shown/Text.h"
#include "core/playlist/PlaylistRepair.h"

namespace qo::cli
{
namespace
{
using host::EntryFinding;
using host::EntryState;
using host::Playlist;
using host::Playlists;
using host::StoredEntry;

/// The lists that were named, or all; a living list has no entries that could be wrong.
std::vector<Playlist> chosenLists(const Playlists& playlists, const PlaylistOptions& options)
{
    std::vector<Playlist> lists;
    for (const std::string& typed : options.playlists)
        lists.push_back(fixedPlaylist(playlists, typed));
    if (!options.playlists.empty())
        return lists;
    for (const Playlists::Facts& each : playlists.all())
        if (!each.list.isLiving())
            lists.push_back(playlists.find("#" + std::to_string(each.list.id)));
    return lists;
}

/// `: "Kino - Zvezda"`, or "" for a song without names.
std::string quotedNames(const StoredEntry& entry)
{
    const std::string names = artistAndTitle(entry.artist, entry.title);
    return names.empty() ? "" : ": \"" + names + "\"";
}

/// `Party 3: "Kino - Zvezda"`.
std::string startOf(const Playlist& list, const EntryFinding& finding)
{
    return oneLine(list.name) + " " + std::to_string(finding.index + 1) +
           quotedNames(finding.entry);
}

/// The sentence with what is remembered of the entry's place.
std::string withPlace(const std::string& sentence, const StoredEntry& entry)
{
    if (const std::string place = placeOf(entry); !place.empty())
        return sentence + ": " + place;
    return sentence + (entry.row != 0 ? ": row " + std::to_string(entry.row) : "");
}

std::string stateText(const EntryFinding& finding)
{
    switch (finding.state)
    {
    case EntryState::otherSong:
        return "its row now is another song" + quotedNames(host::entryOf(*finding.now)) + ", " +
               host::shownPath(finding.now->path);
    case EntryState::gone:
        return withPlace("its file is no longer in the collection", finding.entry);
    case EntryState::withoutFile:
    case EntryState::found:
        break;
    }
    return withPlace("it has no file", finding.entry);
}

Json findingJson(const Playlist& list, const EntryFinding& finding)
{
    Json object;
    object["playlist"] = toUtf8(list.name);
    object["position"] = finding.index + 1;
    object["state"] = wordOf(finding.state);
    putEntry(object, finding.entry);
    putPath(object, "now", finding.now ? finding.now->path : FilePath());
    return object;
}

ExitCode checkPlaylists(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    std::size_t entries = 0;
    std::size_t wrong = 0;
    for (const Playlist& list : chosenLists(playlists, options))
    {
        entries += list.entries.size();
        for (const EntryFinding& finding : checkEntries(list))
        {
            ++wrong;
            if (line.json)
                line.out.line(dump(findingJson(list, finding)));
            else
                line.out.line(harmless(startOf(list, finding) + ": " + stateText(finding)));
        }
    }
    line.out.flush();
    line.note(std::to_string(entries - wrong) + " of " +
              countText(static_cast<std::int64_t>(entries), "song") + " are what they were" +
              (wrong > 0 ? "; \"qo playlist repair\" looks for the others" : ""));
    return wrong > 0 ? ExitCode::partly : ExitCode::done;
}

ExitCode repairPlaylists(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    std::size_t found = 0;
    std::size_t lost = 0;
    for (Playlist& list : chosenLists(playlists, options))
    {
        std::vector<EntryFinding> findings = checkEntries(list);
        std::vector<host::StoredEntry> entries;
        repairEntries(list, findings, entries);
        // Also completes a change that was cut short, and remembers what another program added.
        if (!line.dryRun)
            playlists.setEntries(list, entries);
        for (const EntryFinding& finding : findings)
        {
            ++(finding.found ? found : lost);
            if (line.json)
            {
                Json object = findingJson(list, finding);
                object["by"] = finding.found ? Json(wordsOf(finding.by)) : Json();
                putPath(object, "found", finding.found ? finding.found->path : FilePath());
                line.out.line(dump(object));
            }
            else
                line.out.line(harmless(
                    startOf(list, finding) + ": " +
                    (finding.found ? "found by " + std::string(wordsOf(finding.by)) + ": " +
                                         host::shownPath(finding.found->path)
                                   : withPlace("not found; it stays in the list", finding.entry))));
        }
    }
    line.out.flush();
    line.note(wouldHave(line) + "found " + countText(static_cast<std::int64_t>(found), "song") +
              " again" + (lost > 0 ? "; " + std::to_string(lost) + " have no file" : ""));
    return lost > 0 ? ExitCode::partly : ExitCode::done;
}
} // namespace

void addPlaylistChecks(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<PlaylistOptions>();
    const auto add = [&](const char* name, const char* help, KernelUse use, PlaylistRun run)
    {
        CLI::App* const app = addPlaylistCommand(
            line, command, options, name, help, {use, CollectionUse::loaded, run});
        addArguments(*app, "PLAYLIST", options->playlists, "Playlists; else all of them");
    };
    add("check", "Name entries that do not mean their songs", KernelUse::look, checkPlaylists);
    add("repair", "Look for the songs of such entries", KernelUse::change, repairPlaylists);
}
} // namespace qo::cli
