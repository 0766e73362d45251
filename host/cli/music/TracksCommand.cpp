#include "cli/files/FileRecord.h"
#include "cli/music/MusicCommand.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
int compareNames(const CLTObject* a, const CLTObject* b)
{
    return a == b ? 0 : CLTManager::compareLTNames(nameOf(a), nameOf(b));
}

/// The order of tracks on their albums. The collection's comparison of numbers is not used, because
/// a missing number equals all others there, and that is no order.
bool comesBefore(const TrackFile& fileA, const TrackFile& fileB)
{
    const CLTTrack* const a = fileA.track;
    const CLTTrack* const b = fileB.track;
    if (const int order = compareNames(a->getArtist().get(), b->getArtist().get()))
        return order < 0;
    if (const int order = compareNames(a->getAlbum().get(), b->getAlbum().get()))
        return order < 0;
    const int numberA = textToInt(a->getTrackNumber().view());
    const int numberB = textToInt(b->getTrackNumber().view());
    if (numberA != numberB)
        return numberA < numberB;
    if (const int order = compareNames(a, b))
        return order < 0;
    return CQoUtils::comparePaths(fileA.file->getPath(), fileB.file->getPath()) < 0;
}

void addRow(Listing& listing, const TrackFile& file)
{
    const CLTTrack& track = *file.track;
    const int duration = file.file->getDbItem()->duration;
    const std::string path = host::shownPath(file.file->getPath());
    if (listing.isForPeople())
        return listing.addCells(
            {oneLine(track.getTrackNumber()),
             displayName(&track),
             displayName(track.getArtist().get()),
             displayName(track.getAlbum().get()),
             oneLine(track.getYear()),
             isUnnamed(track.getGenre().get()) ? "" : displayName(track.getGenre().get()),
             duration > 0 ? durationText(duration) : "",
             path});
    Json record;
    record["track"] = toUtf8(track.getTrackNumber());
    record["title"] = toUtf8(track.getName());
    record["artist"] = toUtf8(nameOf(track.getArtist().get()));
    record["album"] = toUtf8(nameOf(track.getAlbum().get()));
    record["year"] = toUtf8(track.getYear());
    record["genre"] = toUtf8(nameOf(track.getGenre().get()));
    record["duration"] = duration;
    putPath(record, "path", path);
    listing.addRecord(record, path);
}

void listTracks(CommandLine& line, const MusicOptions& options)
{
    host::RecordOrder order(options.choice.order);
    std::vector<TrackFile> files = chosenTracks(options);
    std::stable_sort(files.begin(), files.end(), comesBefore);
    host::sortRows(files,
                   order.order(),
                   [&order](const TrackFile& file)
                   { return order.valuesOf(*file.file->getDbItem()); });
    applyLimit(files, options.choice);
    Listing listing(line,
                    options.isLong,
                    {"track", "title", "artist", "album", "year", "genre", "duration", "path"},
                    {Listing::Column::number,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::path});
    for (const TrackFile& file : files)
    {
        if (listing.isClosed())
            return;
        addRow(listing, file);
    }
    listing.finish();
}
} // namespace

void setUpTracks(CommandLine& line, CLI::App& command)
{
    setUpMusic(line, command, [&line](const MusicOptions& options) { listTracks(line, options); });
}
} // namespace qo::cli
