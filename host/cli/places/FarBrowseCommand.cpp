#include "cli/KernelCommand.h"
#include "cli/places/FarPlace.h"
#include "cli/places/FarReport.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"

#include <QoKernel/Collection.h>

namespace qo::cli
{
namespace
{
using host::ProgressReporter;

struct BrowseOptions
{
    std::string name;
    std::string path;
    std::vector<std::string> paths;
    bool isDeep = false;
    bool isLong = false;
};

/// Puts the entries of a place into a list.
class FarListing
{
public:
    FarListing(CommandLine& line, bool isLong)
        : m_listing(line,
                    isLong,
                    {"path", "kind", "size"},
                    {Listing::Column::number, Listing::Column::path})
    {
    }

    void add(const std::string& shown, bool isFolder, std::int64_t size)
    {
        ++m_count;
        if (m_listing.isForPeople())
            return m_listing.addCells(
                {isFolder ? "" : sizeText(size), harmless(shown) + (isFolder ? "/" : "")});
        Json record;
        record["path"] = shown;
        record["kind"] = isFolder ? "folder" : "file";
        record["size"] = isFolder ? Json() : Json(size);
        m_listing.addRecord(record, shown);
    }
    void add(const FarPlace& place, const QoFileDbItemArray& records, bool areFolders)
    {
        for (const QoFileDbItemPtr& record : records)
            add(place.shown(CQoCollPath(record->path)), areFolders, record->size);
    }
    void finish() { m_listing.finish(); }
    bool isEmpty() const { return m_count == 0; }

private:
    Listing m_listing;
    std::size_t m_count = 0;
};

ExitCode browse(CommandLine& line, const PlaceKind& kind, const BrowseOptions& options)
{
    using Items = FarPlace::Items;
    const auto session = openKernel(line, KernelUse::look);
    FarListing listing(line, options.isLong);
    bool isComplete = true;
    std::string cause;
    runShown(line,
             *session,
             [&](ProgressReporter& progress)
             {
                 const auto place = kind.open(*session, options.name, nullptr);
                 const CQoCollPath path = place->path(options.path);
                 const FarEntry entry = place->need(path, progress);
                 if (!entry.isFolder)
                     return listing.add(place->shown(path), false, entry.size);
                 QoFileDbItemArray folders;
                 QoFileDbItemArray files;
                 const int depth = options.isDeep ? FarPlace::allLevels : 1;
                 if (!options.isDeep)
                     isComplete = place->list(path, Items::folders, 1, progress, folders);
                 isComplete = isComplete && place->list(path, Items::files, depth, progress, files);
                 stopIfCancelled(progress);
                 if (!isComplete)
                     cause = place->takeCause();
                 listing.add(*place, folders, true);
                 listing.add(*place, files, false);
             });
    listing.finish();
    if (isComplete)
        return ExitCode::done;
    CommandLine::complain("not all could be listed" + (cause.empty() ? "" : ": " + cause));
    return listing.isEmpty() ? ExitCode::failed : ExitCode::partly;
}

ExitCode removeFar(CommandLine& line, const PlaceKind& kind, const BrowseOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "removed");
    runShown(line,
             *session,
             [&](ProgressReporter& progress)
             {
                 const auto place = kind.open(*session, options.name, nullptr);
                 if (!place->takesFiles())
                     throw HostError(ExitCode::failed, options.name + " lets nothing be removed");
                 std::vector<FarDeed> deeds;
                 std::vector<CQoCollPath> paths;
                 bool hasFolder = false;
                 for (const std::string& typed : options.paths)
                 {
                     paths.push_back(place->path(typed));
                     if (paths.back() == place->root())
                         throw HostError(ExitCode::usage,
                                         std::string("the root of a ") + kind.noun +
                                             " cannot be removed");
                     const FarEntry entry = place->need(paths.back(), progress);
                     hasFolder = hasFolder || entry.isFolder;
                     deeds.push_back({place->shownWhole(paths.back()), "", entry.size});
                 }
                 if (!line.dryRun)
                     confirm(line,
                             (deeds.size() == 1
                                  ? deeds.front().path
                                  : std::to_string(deeds.size()) + " entries of " + options.name) +
                                 " will be removed for good" +
                                 (hasFolder ? ", folders with all that is in them." : "."));
                 for (std::size_t i = 0; i < paths.size(); ++i)
                 {
                     if (progress.isCanceled())
                         throw report.interrupted();
                     if (!line.dryRun)
                         deeds[i].cause = place->remove(paths[i], progress);
                     report.add(deeds[i]);
                 }
             });
    return report.exitCode();
}
} // namespace

void addFarBrowse(CommandLine& line, CLI::App& command, const PlaceKind& kind)
{
    const std::string noun = kind.noun;
    const auto shown = std::make_shared<BrowseOptions>();
    CLI::App* const browsing =
        command.add_subcommand("browse", "List the folders and files of a " + noun);
    line.setListAction(*browsing, [&line, kind, shown] { return browse(line, kind, *shown); });
    addArgument(*browsing, "NAME", shown->name, "The " + noun)->required();
    addArgument(*browsing, "PATH", shown->path, "A folder or file in it (all)");
    browsing->add_flag("--deep", shown->isDeep, "All files below it, in folders of folders too");
    browsing->add_flag("-l,--long", shown->isLong, "Tabs between the columns, with their names");
}

void addFarRemoval(CommandLine& line, CLI::App& command, const PlaceKind& kind)
{
    const std::string noun = kind.noun;
    const auto removed = std::make_shared<BrowseOptions>();
    CLI::App* const rm =
        line.addCommand(command,
                        "rm",
                        "Remove files and folders from a " + noun,
                        [&line, kind, removed] { return removeFar(line, kind, *removed); });
    addArgument(*rm, "NAME", removed->name, "The " + noun)->required();
    addArguments(*rm, "PATH", removed->paths, "Files and folders in it")->required();
}
} // namespace qo::cli
