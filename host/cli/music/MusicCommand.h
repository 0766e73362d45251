#pragma once

#include "cli/CommandLine.h"
#include "cli/files/FileChoice.h"
#include "cli/music/MusicSum.h"
#include "cli/shown/Listing.h"

#include <functional>
#include <memory>

namespace qo::cli
{
/// What the commands that show the music as music have in common.
struct MusicOptions
{
    FileChoice choice;
    bool isLong = false;
};

/// A file of a track.
struct TrackFile
{
    const CLTTrack* track;
    const CHDMusicFile* file;
};

/// The chosen files with their tracks, folder by folder, whatever order was typed. Throws HostError
/// where none fits. On the kernel's thread.
std::vector<TrackFile> chosenTracks(const MusicOptions& options);

/// Gives the command a query, the options of names, order and limit, and --long. run is called on
/// the kernel's thread with the collection loaded.
void setUpMusic(CommandLine& line, CLI::App& command, std::function<void(const MusicOptions&)> run);

/// Puts the years of the sum into the record: "yearFrom" and "yearTo", null when no track has a
/// year.
void putYears(Json& record, const MusicSum& sum);
} // namespace qo::cli
