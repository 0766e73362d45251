#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/FoundFiles.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

namespace qo::cli
{
namespace
{
struct UntaggedOptions
{
    std::string path;
    bool isLong = false;
};

std::vector<std::string> missingFields(const QoFileDbItem& item)
{
    std::vector<std::string> missing;
    if (item.artist.IsEmpty())
        missing.emplace_back("artist");
    if (item.title.IsEmpty())
        missing.emplace_back("title");
    // Shown only beside another missing field, since many tracks have no album.
    if (!missing.empty() && item.album.IsEmpty())
        missing.emplace_back("album");
    return missing;
}

void addRow(CommandLine& line, Listing& listing, const QoFileDbItem& item)
{
    const std::vector<std::string> missing = missingFields(item);
    if (missing.empty())
        return;
    CString artist;
    CString title;
    CQoUtils::getArtistTitleFromFileName(item.path, artist, title);
    const std::string path = host::shownPath(item.path);
    if (listing.isForPeople())
    {
        std::string text;
        for (const std::string& each : missing)
            text += (text.empty() ? "no " : ", ") + each;
        return listing.addCells({text, line.out.foreign(path)});
    }
    Json record;
    putPath(record, "path", path);
    record["missing"] = missing;
    record["artist"] = toUtf8(item.artist);
    record["title"] = toUtf8(item.title);
    record["album"] = toUtf8(item.album);
    record["artistByName"] = toUtf8(artist);
    record["titleByName"] = toUtf8(title);
    listing.addRecord(record, path);
}

ExitCode listUntagged(CommandLine& line, const UntaggedOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            Listing listing(
                line,
                options.isLong,
                {"path", "missing", "artist", "title", "album", "artistByName", "titleByName"},
                {{}, {}});
            const FoundFiles found(options.path);
            for (const QoFileDbItemPtr& item : found.files())
            {
                if (listing.isClosed())
                    return;
                if (CQoUtils::isMusicFilePath(item->path))
                    addRow(line, listing, *item);
            }
            listing.finish();
        });
    return ExitCode::done;
}
} // namespace

void setUpUntagged(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<UntaggedOptions>();
    line.setAction(command, [&line, options] { return listUntagged(line, *options); });
    addArgument(command, "PATH", options->path, "Only this file or folder");
    command.add_flag("-l,--long",
                     options->isLong,
                     "Every field, also what the file's name tells, with tabs between them");
}
} // namespace qo::cli
