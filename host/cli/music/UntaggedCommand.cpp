#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/music/MusicCommand.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

namespace qo::cli
{
namespace
{
std::vector<std::string> missingFields(const QoFileDbItem& item)
{
    std::vector<std::string> missing;
    if (item.artist.IsEmpty())
        missing.emplace_back("artist");
    if (item.title.IsEmpty())
        missing.emplace_back("title");
    if (item.album.IsEmpty())
        missing.emplace_back("album");
    return missing;
}

void addRow(Listing& listing, const QoFileDbItem& item)
{
    const std::vector<std::string> missing = missingFields(item);
    CString artist;
    CString title;
    CQoUtils::getArtistTitleFromFileName(item.path, artist, title);
    const std::string path = host::shownPath(item.path);
    if (listing.isForPeople())
    {
        std::string text;
        for (const std::string& each : missing)
            text += (text.empty() ? "no " : ", ") + each;
        return listing.addCells({text, path});
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

void listUntagged(CommandLine& line, const MusicOptions& options)
{
    Listing listing(line,
                    options.isLong,
                    {"path", "missing", "artist", "title", "album", "artistByName", "titleByName"},
                    {Listing::Column::text, Listing::Column::path});
    for (const QoFileDbItemPtr& item : chosenFiles(options.choice))
    {
        if (listing.isClosed())
            return;
        if (host::isUntagged(*item))
            addRow(listing, *item);
    }
    listing.finish();
}
} // namespace

void setUpUntagged(CommandLine& line, CLI::App& command)
{
    setUpMusic(
        line, command, [&line](const MusicOptions& options) { listUntagged(line, options); });
}
} // namespace qo::cli
