#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/FoundFiles.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

namespace qo::cli
{
namespace
{
struct ListOptions
{
    std::string path;
    bool isLong = false;
};

std::string describe(const QoFileDbItem& item)
{
    constexpr std::size_t nameWidth = 40;
    const std::string artist = oneLine(item.artist);
    const std::string title = oneLine(item.title);
    std::string name = artist.empty() || title.empty() ? artist + title : artist + " - " + title;
    if (textWidth(name) > nameWidth)
        name = cutToWidth(name, nameWidth - 1) + "…";
    const std::string time = item.duration > 0 ? durationText(item.duration) : "";
    return std::string(time.size() < 7 ? 7 - time.size() : 0, ' ') + time + "  " +
           padded(name, nameWidth) + "  ";
}

void printRecord(CommandLine& line, const ListOptions& options, const QoFileDbItem& item)
{
    if (line.json)
        return line.out.line(dump(recordJson(item)));
    if (options.isLong)
        return line.out.line(recordRow(line.out, item));
    line.out.line(describe(item) + line.out.foreign(host::shownPath(item.path)));
}

ExitCode list(CommandLine& line, const ListOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            const FoundFiles found(options.path);
            if (options.isLong && !line.json)
                line.out.line(recordHeader());
            for (const QoFileDbItemPtr& item : found.files())
            {
                if (line.out.isClosed())
                    return;
                printRecord(line, options, *item);
            }
        });
    return ExitCode::done;
}
} // namespace

void setUpList(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<ListOptions>();
    line.setAction(command, [&line, options] { return list(line, *options); });
    addArgument(command, "PATH", options->path, "Only this file or folder");
    command.add_flag("-l,--long", options->isLong, "Every field, with tabs between them");
}
} // namespace qo::cli
