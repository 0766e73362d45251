#pragma once

#include "cli/CommandLine.h"
#include "cli/music/MusicFilter.h"
#include "cli/shown/Listing.h"

#include <functional>
#include <memory>

namespace qo::cli
{
/// What the commands that show the music as music have in common.
struct MusicOptions
{
    MusicFilter filter;
    bool isLong = false;
};

/// Gives the command the options of the filter and --long. run is called on the kernel's thread
/// with the collection loaded.
void setUpMusic(CommandLine& line, CLI::App& command, std::function<void(const MusicOptions&)> run);

/// Puts the years of the sum into the record: "yearFrom" and "yearTo", null when no track has a
/// year.
void putYears(Json& record, const MusicSum& sum);
} // namespace qo::cli
