#include "cli/Interrupt.h"
#include "cli/playlist/PlaylistCommand.h"
#include "cli/shown/ProgressDisplay.h"
#include "cli/shown/Text.h"
#include "core/base/SystemPath.h"
#include "core/playlist/PlaylistExport.h"
#include "core/playlist/PlaylistImport.h"

#include <algorithm>
#include <filesystem>

namespace qo::cli
{
namespace
{
using host::PlaceStyle;
using host::Playlist;
using host::Playlists;
using host::StoredEntry;

constexpr const char* formats[] = {"m3u8", "m3u", "pls", "xspf"};

std::string listFile(const PlaylistOptions& options)
{
    return options.file.empty() || options.file == "-" ? "" : host::absolutePath(options.file);
}

/// A list of entries by their positions, each with its place, under a key.
void putPositions(Json& object,
                  const char* key,
                  const std::vector<StoredEntry>& entries,
                  const std::vector<std::size_t>& indices)
{
    Json list = Json::array();
    for (const std::size_t index : indices)
    {
        Json record;
        record["position"] = index + 1;
        putEntry(record, entries[index]);
        list.push_back(record);
    }
    object[key] = list;
}

/// "3: Kino - Zvezda  Kino/01.mp3" for each.
void notePositions(const CommandLine& line,
                   const std::vector<StoredEntry>& entries,
                   const std::vector<std::size_t>& indices)
{
    std::string text;
    for (const std::size_t index : indices)
    {
        const std::string names = artistAndTitle(entries[index].artist, entries[index].title);
        text += host::sentenceBreak + std::to_string(index + 1) + ": " +
                (names.empty() ? "" : names + "  ") + placeOf(entries[index]);
    }
    if (!text.empty())
        line.note("no file of the collection was found for:" + text);
}

ExitCode importPlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    const std::string path = host::absolutePath(options.file);
    const std::vector<host::ListedSong> songs = host::readPlaylistFile(path);
    const std::string stem = std::filesystem::path(path).stem().string();
    const CString name = !options.newName.empty() ? typedName(options.newName)
                         : isUtf8(stem)           ? fromUtf8(stem)
                                                  : fromCharset(stem, "windows-1252");
    Playlist list;
    list.name = name;
    if (!options.replaces)
        playlists.needFreeName(name);
    else
        list = fixedPlaylist(playlists, toUtf8(name));
    const host::ImportedSongs imported =
        host::importSongs(songs, host::parentOf(path), options.match);
    if (!line.dryRun && options.replaces)
    {
        confirm(line,
                "The songs of the playlist \"" + toUtf8(list.name) + "\", " +
                    std::to_string(list.entries.size()) + ", will be replaced.");
        playlists.setEntries(list, imported.entries);
    }
    else if (!line.dryRun)
        list = playlists.make(name, imported.entries);
    const std::size_t lost = imported.withoutFile.size();
    if (line.json)
    {
        Json object;
        object["playlist"] = toUtf8(list.name);
        object["id"] = list.id != 0 ? Json(list.id) : Json();
        object["entries"] = songs.size();
        object["byPathEnd"] = imported.byPathEnd;
        object["byTags"] = imported.byTags;
        putPositions(object, "withoutFile", imported.entries, imported.withoutFile);
        line.out.line(dump(object));
    }
    else
    {
        std::string sentence = wouldHave(line) + "imported " +
                               countText(static_cast<std::int64_t>(songs.size()), "song") +
                               " as \"" + toUtf8(list.name) + "\"";
        if (imported.byTags > 0)
            sentence += ", " + std::to_string(imported.byTags) + " of them by their tags";
        if (imported.byPathEnd > 0)
            sentence += ", " + std::to_string(imported.byPathEnd) + " by the end of their paths";
        if (lost > 0)
            sentence += "; " + std::to_string(lost) + " without a file stay as text";
        line.note(sentence);
        notePositions(line, imported.entries, imported.withoutFile);
    }
    return lost > 0 ? ExitCode::partly : ExitCode::done;
}

std::string listText(const PlaylistOptions& options,
                     const std::string& path,
                     const CString& name,
                     const std::vector<host::ListedSong>& songs)
{
    const std::string named = options.format.empty() ? path : "." + options.format;
    return host::playlistText(host::playlistFormatOf(named), name, songs);
}

ExitCode exportList(CommandLine& line, const Playlist& list, const PlaylistOptions& options)
{
    const std::string path = listFile(options);
    if (path.empty())
        line.refuseJson();
    const std::vector<StoredEntry> entries = presentEntries(list);
    const PlaceStyle style = options.asAddresses                  ? PlaceStyle::address
                             : options.isAbsolute || path.empty() ? PlaceStyle::absolute
                                                                  : PlaceStyle::relative;
    std::vector<std::size_t> missing;
    const std::string folder = path.empty() ? "/" : host::existingFolder(host::parentOf(path));
    const auto songs = host::exportedSongs(entries, style, folder, missing);
    const std::string text = listText(options, path, list.name, songs);
    if (path.empty())
        line.out.write(text);
    else
        prepareOutput(line, path);
    if (!path.empty() && !line.dryRun)
        host::writePlaylistFile(path, text);
    if (line.json)
    {
        Json object;
        putPath(object, "file", path);
        object["songs"] = songs.size();
        putPositions(object, "withoutFile", entries, missing);
        line.out.line(dump(object));
        return missing.empty() ? ExitCode::done : ExitCode::partly;
    }
    if (!path.empty())
        line.note(wouldHave(line) + "written " +
                  countText(static_cast<std::int64_t>(songs.size()), "song") + " to " + path);
    notePositions(line, entries, missing);
    return missing.empty() ? ExitCode::done : ExitCode::partly;
}

void makeCopies(CommandLine& line, std::vector<host::SongCopy>& copies, const std::string& folder)
{
    ShownProgress progress(line);
    host::makeCopies(copies, folder, [&progress] { return progress.reporter().isCanceled(); });
}

/// Says what became of each copy; returns how many could not be made.
std::size_t sayCopies(CommandLine& line, const std::vector<host::SongCopy>& copies)
{
    std::size_t failed = 0;
    for (const host::SongCopy& copy : copies)
    {
        failed += copy.failure.empty() ? 0 : 1;
        if (line.json)
        {
            Json object;
            object["position"] = copy.index + 1;
            putPath(object, "from", copy.from);
            putPath(object, "to", copy.to);
            object["wasThere"] = copy.isThere;
            object["error"] = copy.failure.empty() ? Json() : Json(copy.failure);
            line.out.line(dump(object));
        }
        else if (!copy.failure.empty())
            line.note(copy.from + " could not be copied: " + copy.failure);
        else if (line.dryRun)
            line.out.line(harmless(copy.from) + " -> " + harmless(copy.to));
    }
    line.out.flush();
    return failed;
}

ExitCode exportCopies(CommandLine& line, const Playlist& list, const PlaylistOptions& options)
{
    const std::string folder = host::absolutePath(options.folder);
    const std::string path =
        options.file.empty()
            ? host::inFolder(
                  folder,
                  host::portableName(list.name,
                                     options.format.empty() ? ".m3u8" : "." + options.format))
            : listFile(options);
    if (path.empty())
        throw HostError(ExitCode::usage, "with copies the list needs a file");
    const std::vector<StoredEntry> entries = presentEntries(list);
    std::vector<host::SongCopy> copies = host::planCopies(entries, folder);
    host::checkCopies(copies, folder);
    if (host::parentOf(path) != folder || fileSystem().isDirectory(fromSystemPath(folder)))
        prepareOutput(line, path);
    if (!line.dryRun)
        makeCopies(line, copies, folder);
    std::vector<bool> isCopied(entries.size());
    std::vector<host::ListedSong> songs;
    for (const host::SongCopy& copy : copies)
    {
        isCopied[copy.index] = true;
        if (!copy.failure.empty())
            continue;
        songs.push_back(copy.song);
        songs.back().place = host::placeFor(copy.to, PlaceStyle::relative, host::parentOf(path));
    }
    if (!line.dryRun)
        host::writePlaylistFile(path, listText(options, path, list.name, songs));
    const std::size_t failed = sayCopies(line, copies);
    std::vector<std::size_t> missing;
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (!isCopied[i])
            missing.push_back(i);
    const auto there = std::ranges::count_if(copies, &host::SongCopy::isThere);
    if (!line.json)
        line.note(wouldHave(line) + "copied " +
                  countText(static_cast<std::int64_t>(songs.size()) - there, "song") + " to " +
                  folder + (there > 0 ? ", " + std::to_string(there) + " were there already" : "") +
                  "; the list is " + path);
    notePositions(line, entries, missing);
    return failed > 0 || !missing.empty() ? ExitCode::partly : ExitCode::done;
}

ExitCode exportPlaylist(CommandLine& line, Playlists& playlists, const PlaylistOptions& options)
{
    const Playlist list = playlists.find(options.playlist);
    if (!options.folder.empty())
        return exportCopies(line, list, options);
    if (options.file.empty())
        throw HostError(ExitCode::usage,
                        "say which file to write, \"-\" for the output, or a folder for copies "
                        "with --copy-to");
    return exportList(line, list, options);
}
} // namespace

void addPlaylistFiles(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<PlaylistOptions>();
    CLI::App* const in =
        addPlaylistCommand(line,
                           command,
                           options,
                           "import",
                           "Take in a list of another player",
                           {KernelUse::change, CollectionUse::loaded, importPlaylist});
    addArgument(*in, "FILE", options->file, "An M3U, M3U8, PLS or XSPF file")->required();
    addArgument(*in, "--name", options->newName, "Its name here; else that of the file");
    in->add_flag(
        "--match", options->match, "Look by artist, title and length for what is elsewhere");
    in->add_flag("--replace", options->replaces, "Replace the songs of the playlist of that name");

    CLI::App* const out =
        addPlaylistCommand(line,
                           command,
                           options,
                           "export",
                           "Write a list for other players",
                           {KernelUse::look, CollectionUse::loaded, exportPlaylist});
    addPlaylist(*out, *options);
    addArgument(*out, "FILE", options->file, "Its ending chooses the format; \"-\" is the output");
    addArgument(*out, "--copy-to", options->folder, "Copy the songs into this folder, too")
        ->type_name("DIR");
    addArgument(*out, "--format", options->format, "m3u8, m3u, pls or xspf")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(formats), std::end(formats))));
    CLI::Option* const absolute = out->add_flag(
        "--absolute", options->isAbsolute, "Write whole paths; else from the list's folder");
    out->add_flag("--addresses", options->asAddresses, "Write \"file:\" addresses")
        ->excludes(absolute);
}
} // namespace qo::cli
