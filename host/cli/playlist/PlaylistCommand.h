#pragma once

#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "core/playlist/Playlists.h"

#include <memory>
#include <string>
#include <vector>

namespace qo::cli
{
/// What was typed for one of the commands "qo playlist ...".
struct PlaylistOptions
{
    std::string playlist;
    std::vector<std::string> playlists;
    std::string newName;
    FileChoice choice;
    std::string livingQuery;
    std::string positions; ///< "3,5-7"
    int at = 0;            ///< the position that the first of the songs shall have; 0 for the end
    std::string file;
    std::string folder; ///< for copies
    std::string format;
    bool isAbsolute = false;
    bool asAddresses = false;
    bool match = false;
    bool replaces = false;
    bool isLong = false;
};
using PlaylistOptionsPtr = std::shared_ptr<PlaylistOptions>;

/// Whether the collection has to be loaded for a command, or its database alone made ready.
enum class CollectionUse
{
    database,
    loaded
};
using PlaylistRun = ExitCode (*)(CommandLine&, host::Playlists&, const PlaylistOptions&);
/// What a command needs, and what it does on the kernel's thread.
struct PlaylistDeed
{
    KernelUse use;
    CollectionUse collection;
    PlaylistRun run;
};
/// Adds "qo playlist NAME".
CLI::App* addPlaylistCommand(CommandLine& line,
                             CLI::App& parent,
                             const PlaylistOptionsPtr& options,
                             const std::string& name,
                             const std::string& description,
                             const PlaylistDeed& deed);

/// The argument PLAYLIST.
void addPlaylist(CLI::App& command, PlaylistOptions& options);
/// Commands of "qo playlist" that stand in files of their own.
void addPlaylistEdits(CommandLine& line, CLI::App& command);
void addPlaylistFiles(CommandLine& line, CLI::App& command);
void addPlaylistChecks(CommandLine& line, CLI::App& command);

/// The name that a list shall have; throws HostError when it is not UTF-8.
CString typedName(const std::string& typed);
/// The playlist of that name. Throws HostError for a living list, which cannot be changed so.
host::Playlist fixedPlaylist(const host::Playlists& playlists, const std::string& typed);
/// The entries of a list; a living one is looked up now.
std::vector<host::StoredEntry> presentEntries(const host::Playlist& list);

/// Puts artist, title, duration, path and text of the entry into an object.
void putEntry(Json& object, const host::StoredEntry& entry);
/// What became of a list: an object with its name, id and count, or a sentence such as
/// "made "Party" with 3 songs".
void sayPlaylist(CommandLine& line, const host::Playlist& list, const std::string& sentence);
/// "would have " with --dry-run.
std::string wouldHave(const CommandLine& line);
} // namespace qo::cli
