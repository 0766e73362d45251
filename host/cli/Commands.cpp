#include "cli/CommandLine.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace qo::cli
{
// Every command: its group, its name, the function that gives it options and an action, and the
// sentence of the help. Help and completion keep this order, and a test compares the README with
// it. It is a macro so that a row is all that a new command needs beside its source: the row
// declares the function, too.
#define QO_COMMANDS(ROW)                                                                           \
    ROW(collection, "scan", setUpScan, "Look through the root folders and take in what changed")   \
    ROW(collection, "load", setUpLoad, "Start from the database and say how long it took")         \
    ROW(collection, "watch", setUpWatch, "Take in changes of the root folders as they happen")     \
    ROW(collection, "roots", setUpRoots, "The folders that the collection is made of")             \
    ROW(collection, "status", setUpStatus, "Where things are and how they stand")                  \
    ROW(looking, "ls", setUpList, "List the files of the collection")                              \
    ROW(looking, "tree", setUpTree, "Show the folders of the collection")                          \
    ROW(looking, "info", setUpInfo, "Show all that is known of a file")                            \
    ROW(looking, "artists", setUpArtists, "List the artists with their albums, tracks and years")  \
    ROW(looking, "genres", setUpGenres, "List the genres with their tracks and artists")           \
    ROW(looking, "albums", setUpAlbums, "List the albums with their years and tracks")             \
    ROW(looking, "tracks", setUpTracks, "List the tracks, album by album")                         \
    ROW(looking, "lyrics", setUpLyrics, "Show the lyrics of a track, from its tag and from texts") \
    ROW(looking, "placed", setUpPlaced, "List pictures and texts with the music that they found")  \
    ROW(looking, "untagged", setUpUntagged, "List the music files without an artist or a title")   \
    ROW(looking, "dup", setUpDuplicates, "List equal tracks, and files that begin alike")          \
    ROW(looking, "stats", setUpStats, "Say what one has, in numbers and bars")                     \
    ROW(looking, "view", setUpView, "Show the collection in three panes")                          \
    ROW(looking, "mark", setUpMark, "Give files a check mark")                                     \
    ROW(looking, "unmark", setUpUnmark, "Take check marks off files")                              \
    ROW(looking, "marked", setUpMarked, "Say how many files have a check mark")                    \
    ROW(looking, "rate", setUpRate, "Rate files with stars")                                       \
    ROW(looking, "played", setUpPlayed, "Count that files were played")                            \
    ROW(looking, "playlist", setUpPlaylist, "Playlists, from and for other players too")           \
    ROW(looking, "session", setUpSession, "Sessions in which files were recorded")                 \
    ROW(tags, "tag", setUpTag, "Look at and edit the tags of a file")                              \
    ROW(tags, "cover", setUpCover, "Show, extract, set and remove the pictures in tags")           \
    ROW(sorting, "rule", setUpRule, "The rules by which files are sorted and named")               \
    ROW(sorting, "reorg", setUpReorg, "Sort and name the files of the collection by a rule")       \
    ROW(sorting, "mv", setUpMove, "Move or rename files and folders, on the disk as well")         \
    ROW(sorting, "rm", setUpRemove, "Put files and folders of the collection into the trash")      \
    ROW(sorting, "add", setUpAdd, "Take in new files, or copy others there first")                 \
    ROW(sorting, "undo", setUpUndo, "Take back what the last mv, rm, add or plan did")             \
    ROW(sorting, "runs", setUpRuns, "List what mv, rm, add and plans did, or the files of one")    \
    ROW(places, "plugin", setUpPlugin, "Storage services: browse them, copy from and to them")     \
    ROW(places, "device", setUpDevice, "Disks, sticks and phones: take in, copy from and to them") \
    ROW(places, "search", setUpSearch, "Search in storage services, and fetch what was found")     \
    ROW(sharing, "extract", setUpExtract, "The collection as a text file, to be shown to others")  \
    ROW(sharing, "share", setUpShare, "Offer files to friends, and fetch what friends offer")      \
    ROW(upkeep, "config", setUpConfig, "The settings")                                             \
    ROW(upkeep, "log", setUpLog, "Show the log of the last run")                                   \
    ROW(upkeep, "doctor", setUpDoctor, "Look the whole house over, and say what to do")            \
    ROW(upkeep, "db", setUpDatabase, "The collection's database")                                  \
    ROW(upkeep, "version", setUpVersion, "Which version this is")                                  \
    ROW(upkeep, "help", setUpHelp, "Explain a command or an idea")                                 \
    ROW(upkeep, "completion", setUpCompletion, "Complete commands and names in a shell")           \
    ROW(hidden, "complete", setUpComplete, "What may stand at the cursor")                         \
    ROW(hidden, "man", setUpManual, "Write the man pages")

#define QO_DECLARE(group, name, setUp, description)                                                \
    void setUp(CommandLine& line, CLI::App& command);
QO_COMMANDS(QO_DECLARE)
#undef QO_DECLARE

namespace
{
struct Row
{
    const char* group;
    std::string_view name;
    void (*setUp)(CommandLine& line, CLI::App& command);
    const char* description;

    void add(CommandLine& line) const
    {
        setUp(line, *line.app.add_subcommand(std::string(name), description)->group(group));
    }
};

namespace group
{
constexpr const char* collection = "Collection";
constexpr const char* looking = "Looking";
constexpr const char* tags = "Tags";
constexpr const char* sorting = "Sorting";
constexpr const char* places = "Places";
constexpr const char* sharing = "Sharing";
constexpr const char* upkeep = "Upkeep";
constexpr const char* hidden = ""; // not in the help
} // namespace group

#define QO_ROW(of, ...) {group::of, __VA_ARGS__},
constexpr Row rows[] = {QO_COMMANDS(QO_ROW)};
#undef QO_ROW

/// Commands that tell of others.
constexpr std::string_view tellers[] = {"help", "completion", "complete", "man"};
} // namespace

void addCommands(CommandLine& line)
{
    for (const Row& row : rows)
        row.add(line);
}

bool addNamedCommands(CommandLine& line, const std::vector<std::string>& arguments)
{
    const auto isNamed = [&arguments](std::string_view name)
    { return std::find(arguments.begin(), arguments.end(), name) != arguments.end(); };
    if (std::any_of(std::begin(tellers), std::end(tellers), isNamed))
        return false;
    bool isAny = false;
    for (const Row& row : rows)
    {
        if (!isNamed(row.name))
            continue;
        row.add(line);
        isAny = true;
    }
    return isAny;
}
} // namespace qo::cli
