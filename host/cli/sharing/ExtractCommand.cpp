#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/share/Offers.h"

#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
struct ExtractOptions
{
    std::string file;
    FileChoice choice;
};

ExitCode writeExtract(CommandLine& line, const ExtractOptions& options)
{
    const std::string file = host::absolutePath(options.file);
    const CString path = fromSystemPath(file);
    prepareOutput(line, file);
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    const auto count = session->kernel().run(
        [&]
        {
            const QoFileDbItemArray files = chosenFiles(options.choice);
            const auto media = std::ranges::count_if(
                files, [](const QoFileDbItemPtr& item) { return host::isMedia(*item); });
            if (media == 0)
                throw HostError(ExitCode::notFound,
                                "none of these files is music or a video, so there is nothing to "
                                "offer");
            if (!line.dryRun)
                host::writeExtract(files, path);
            return media;
        });
    if (line.json)
        line.out.line(dump({{"file", file}, {"files", count}}));
    else
        line.note((line.dryRun ? "would be written: " : "written: ") + file + " (" +
                  countText(count, "file") + ")");
    return ExitCode::done;
}

/// The path as the peer has it: behind the root of the share stand its device and its folders.
std::string peerPath(const CString& path)
{
    CStringArray names = CQoCollPath(path).getComponents();
    const CString device = names[0];
    names.RemoveAt(0);
    const bool isNetwork = device.Left(1) == u"\\";
    return host::shownPath(
        CQoCollPath(isNetwork ? CQoCollPath::network : CQoCollPath::drive, device, names)
            .toString());
}

Json jsonOf(const QoFileDbItem& item)
{
    Json object;
    object["id"] = toUtf8(item.clipUid);
    putPath(object, "path", peerPath(item.path));
    object["artist"] = toUtf8(item.artist);
    object["title"] = toUtf8(item.title);
    object["album"] = toUtf8(item.album);
    object["genre"] = toUtf8(item.genre);
    object["track"] = toUtf8(item.trackNumber);
    object["year"] = toUtf8(item.year);
    object["size"] = std::max<std::int64_t>(item.size, 0);
    object["duration"] = std::max(item.duration, 0);
    object["bitrate"] = std::max(item.bitrate, 0);
    return object;
}

QoFileDbItemArray readExtract(const std::string& file)
{
    const CString path = fromSystemPath(file);
    int error = 0;
    if (!fileSystem().open(path, OpenMode::read, error))
        throw HostError(error == ENOENT ? ExitCode::notFound : ExitCode::failed,
                        "the extract " + file + " cannot be read: " + host::errorWords(error));
    QoFileDbItemArray files;
    switch (CQoDbExtract::LoadQoDbExtract(u"shown", path, files))
    {
    case CQoDbExtract::extractUnsupported:
        throw HostError(ExitCode::failed,
                        "the extract " + file + " was written by a newer version of the program");
    case CQoDbExtract::extractUnreadable:
        throw HostError(ExitCode::failed,
                        "the extract " + file +
                            " cannot be read to its end; \"qo log\" has the cause");
    case CQoDbExtract::extractLoaded:
        break;
    }
    if (files.IsEmpty())
        throw HostError(ExitCode::notFound, file + " is no extract, or names no file");
    return files;
}

ExitCode showExtract(CommandLine& line, const ExtractOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    const QoFileDbItemArray files =
        session->kernel().run([&] { return readExtract(host::absolutePath(options.file)); });
    Listing table(
        line, false, {}, {Listing::Column::number, Listing::Column::text, Listing::Column::path});
    table.writeAtOnce();
    for (const QoFileDbItemPtr& item : files)
    {
        if (table.isClosed())
            break;
        if (line.json)
            line.out.line(dump(jsonOf(*item)));
        else
            table.addCells({item->duration > 0 ? durationText(item->duration) : "",
                            artistAndTitle(item->artist, item->title),
                            harmless(peerPath(item->path))});
    }
    table.finish();
    return ExitCode::done;
}
} // namespace

void setUpExtract(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto written = std::make_shared<ExtractOptions>();
    CLI::App* const write =
        line.addCommand(command,
                        "write",
                        "Write the music and videos into an extract",
                        [&line, written] { return writeExtract(line, *written); });
    addArgument(*write, "FILE", written->file, "The file to write")->required();
    addQuery(*write, written->choice);
    addNames(*write, written->choice);

    const auto shown = std::make_shared<ExtractOptions>();
    CLI::App* const show = command.add_subcommand("show", "List what an extract, of anyone, holds");
    line.setListAction(*show, [&line, shown] { return showExtract(line, *shown); });
    addArgument(*show, "FILE", shown->file, "The extract")->required();
}
} // namespace qo::cli
