#include "cli/music/MusicCommand.h"

#include "cli/KernelCommand.h"

#include <QoKernel/Physical.h>

#include <utility>

namespace qo::cli
{
void setUpMusic(CommandLine& line, CLI::App& command, std::function<void(const MusicOptions&)> run)
{
    auto options = std::make_shared<MusicOptions>();
    line.setListAction(command,
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
    addPlaceOption(line, command);
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}

std::vector<TrackFile> chosenTracks(const MusicOptions& options)
{
    host::Query query(options.choice.request);
    std::vector<TrackFile> found;
    // Neighbours in the tree share folder, artist and album, which a query makes use of, and lie
    // near each other in memory.
    std::vector<const CHDDirectory*> waiting;
    const auto addDirs = [&waiting](const auto& dirs)
    {
        for (int i = dirs.GetSize() - 1; i >= 0; --i)
            waiting.push_back(dirs[i].get());
    };
    addDirs(CQoCollection::m_ownCollection.getRootDirs());
    while (!waiting.empty())
    {
        const CHDDirectory* const dir = waiting.back();
        waiting.pop_back();
        addDirs(dir->getSubDirs());
        for (const auto& file : dir->getFiles())
        {
            if (file->getFileType() != CHDFile::FT_Music)
                continue;
            const auto& music = static_cast<const CHDMusicFile&>(*file);
            if (music.getTrack() && query.fits(*music.getDbItem()))
                found.push_back({music.getTrack().get(), &music});
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
