#include "cli/music/MusicCommand.h"

#include "cli/KernelCommand.h"

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
    addFilter(command, options->filter);
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}

void putYears(Json& record, const MusicSum& sum)
{
    record["yearFrom"] = sum.firstYear > 0 ? Json(sum.firstYear) : Json();
    record["yearTo"] = sum.lastYear > 0 ? Json(sum.lastYear) : Json();
}
} // namespace qo::cli
