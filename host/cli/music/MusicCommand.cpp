#include "cli/music/MusicCommand.h"

#include "cli/KernelCommand.h"

#include <QoKernel/Physical.h>

#include <utility>

namespace qo::cli
{
void setUpMusic(CommandLine& line, CLI::App& command, std::function<void(const MusicOptions&)> run)
{
    auto options = std::make_shared<MusicOptions>();
    line.setAction(command,
                   [&line, options, run = std::move(run)]
                   {
                       const auto session = openKernel(line, KernelUse::look);
                       loadForReading(line, *session);
                       session->kernel().run([&] { run(*options); });
                       return ExitCode::done;
                   });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    addOrder(command, options->choice);
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}

std::vector<TrackFile> chosenTracks(const MusicOptions& options)
{
    host::Query query(options.choice.request);
    std::vector<TrackFile> found;
    for (const auto& track : CLTManager::getTracks())
    {
        for (const auto& file : track->getMusicFiles())
        {
            if (query.fits(*file->getDbItem()))
                found.push_back({track.get(), file.get()});
        }
    }
    if (found.empty() && options.choice.isSet() && !query.isFoldersOnly())
        complainOfNothing(options.choice);
    return found;
}

void putYears(Json& record, const MusicSum& sum)
{
    record["yearFrom"] = sum.firstYear > 0 ? Json(sum.firstYear) : Json();
    record["yearTo"] = sum.lastYear > 0 ? Json(sum.lastYear) : Json();
}
} // namespace qo::cli
