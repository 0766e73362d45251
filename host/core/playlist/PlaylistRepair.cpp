#include "core/playlist/PlaylistRepair.h"

#include "core/playlist/SongPlace.h"

namespace qo::host
{
std::vector<EntryFinding> checkEntries(const Playlist& list)
{
    std::vector<EntryFinding> findings;
    EntryLookup lookup;
    for (std::size_t i = 0; i < list.entries.size(); ++i)
    {
        const EntryLookup::Answer answer = lookup.look(list.entries[i]);
        // No file ever belongs to an address in the web.
        const bool isWeb =
            answer.state == EntryState::withoutFile && isAddress(toUtf8(list.entries[i].text));
        if (answer.state != EntryState::found && !isWeb)
            findings.push_back(
                {i, list.entries[i], answer.state, answer.item, FoundBy::nothing, {}});
    }
    return findings;
}

void repairEntries(const Playlist& list,
                   std::vector<EntryFinding>& findings,
                   std::vector<StoredEntry>& entries)
{
    entries = list.entries;
    EntryLookup lookup;
    for (StoredEntry& entry : entries)
        if (const auto answer = lookup.look(entry); answer.state == EntryState::found)
            entry = entryOf(*answer.item);
    SongFinder finder;
    for (EntryFinding& finding : findings)
    {
        finding.found = findRemembered(finder, finding.entry, finding.by);
        if (finding.found)
            entries[finding.index] = entryOf(*finding.found);
        // A row id of which nothing is remembered is all that there is of the entry.
        else if (!placeOf(finding.entry).empty())
            entries[finding.index].row = 0;
    }
}
} // namespace qo::host
