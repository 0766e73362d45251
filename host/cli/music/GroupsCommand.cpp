#include "cli/music/MusicCommand.h"
#include "cli/shown/Text.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace qo::cli
{
namespace
{
/// An artist or a genre with the sum of its tracks.
struct MusicGroup
{
    const CLTObject* object = nullptr; ///< null: all that have no name
    MusicSum sum;
    std::unordered_set<const CLTObject*> others; ///< albums of the artist, artists of the genre
};

/// The groups by name. All unnamed ones are one group, since nothing distinguishes them.
template <class GetObject, class GetOther>
std::vector<MusicGroup>
groupsOf(const std::vector<TrackFile>& files, GetObject getObject, GetOther getOther)
{
    std::vector<MusicGroup> groups;
    std::unordered_map<const CLTObject*, std::size_t> indexes;
    for (const TrackFile& each : files)
    {
        const CLTTrack* const track = each.track;
        const CLTObject* const object = getObject(*track);
        const CLTObject* const key = isUnnamed(object) ? nullptr : object;
        const auto [at, isNew] = indexes.emplace(key, groups.size());
        if (isNew)
            groups.push_back({key, {}, {}});
        MusicGroup& group = groups[at->second];
        group.sum.add(*track, *each.file);
        if (const CLTObject* const other = getOther(*track); !isUnnamed(other))
            group.others.insert(other);
    }
    std::stable_sort(groups.begin(),
                     groups.end(),
                     [](const MusicGroup& a, const MusicGroup& b) {
                         return CLTManager::compareLTNames(nameOf(a.object), nameOf(b.object)) < 0;
                     });
    return groups;
}

/// In the order that was typed, and no more than the limit.
void arrange(std::vector<MusicGroup>& groups, const FileChoice& choice, const char* others)
{
    const auto order = host::TypedOrder::parse(choice.order, {"name", others, "tracks", "length"});
    host::sortRows(groups,
                   order,
                   [&order](const MusicGroup& group)
                   {
                       std::vector<host::TypedOrder::Value> values;
                       for (const auto& key : order.keys)
                           values.push_back(key.index == 0   ? host::textValue(nameOf(group.object))
                                            : key.index == 1 ? std::int64_t(group.others.size())
                                            : key.index == 2 ? std::int64_t(group.sum.tracks)
                                                             : group.sum.duration);
                       return values;
                   });
    applyLimit(groups, choice);
}

const CLTObject* artistOf(const CLTTrack& track)
{
    return track.getArtist().get();
}

void listArtists(CommandLine& line, const MusicOptions& options)
{
    auto groups = groupsOf(chosenTracks(options),
                           artistOf,
                           [](const CLTTrack& track) { return track.getAlbum().get(); });
    arrange(groups, options.choice, "albums");
    Listing listing(line,
                    options.isLong,
                    {"name", "albums", "tracks", "duration", "yearFrom", "yearTo"},
                    {Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::number,
                     Listing::Column::number,
                     Listing::Column::number});
    for (const MusicGroup& group : groups)
    {
        if (listing.isClosed())
            return;
        const auto albums = static_cast<std::int64_t>(group.others.size());
        if (listing.isForPeople())
        {
            listing.addCells({displayName(group.object),
                              countText(albums, "album"),
                              countText(group.sum.tracks, "track"),
                              durationText(group.sum.duration),
                              group.sum.years()});
            continue;
        }
        Json record;
        record["name"] = toUtf8(nameOf(group.object));
        record["albums"] = albums;
        record["tracks"] = group.sum.tracks;
        record["duration"] = group.sum.duration;
        putYears(record, group.sum);
        listing.addRecord(record);
    }
    listing.finish();
}

void listGenres(CommandLine& line, const MusicOptions& options)
{
    auto groups = groupsOf(
        chosenTracks(options),
        [](const CLTTrack& track) -> const CLTObject* { return track.getGenre().get(); },
        artistOf);
    arrange(groups, options.choice, "artists");
    Listing listing(line,
                    options.isLong,
                    {"name", "tracks", "artists", "duration"},
                    {Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::number,
                     Listing::Column::number});
    for (const MusicGroup& group : groups)
    {
        if (listing.isClosed())
            return;
        const auto artists = static_cast<std::int64_t>(group.others.size());
        if (listing.isForPeople())
        {
            listing.addCells({displayName(group.object),
                              countText(group.sum.tracks, "track"),
                              countText(artists, "artist"),
                              durationText(group.sum.duration)});
            continue;
        }
        Json record;
        record["name"] = toUtf8(nameOf(group.object));
        record["tracks"] = group.sum.tracks;
        record["artists"] = artists;
        record["duration"] = group.sum.duration;
        listing.addRecord(record);
    }
    listing.finish();
}
} // namespace

void setUpArtists(CommandLine& line, CLI::App& command)
{
    setUpMusic(line, command, [&line](const MusicOptions& options) { listArtists(line, options); });
}

void setUpGenres(CommandLine& line, CLI::App& command)
{
    setUpMusic(line, command, [&line](const MusicOptions& options) { listGenres(line, options); });
}
} // namespace qo::cli
