#include "cli/places/FarPlace.h"
#include "cli/places/FarReport.h"
#include "cli/places/PluginCommand.h"
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

/// Puts the entries of a plug-in into a list.
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

    void add(const CQoCollPath& path, bool isFolder, std::int64_t size)
    {
        ++m_count;
        const std::string shown = shownFar(path);
        if (m_listing.isForPeople())
            return m_listing.addCells(
                {isFolder ? "" : sizeText(size), harmless(shown) + (isFolder ? "/" : "")});
        Json record;
        record["path"] = shown;
        record["kind"] = isFolder ? "folder" : "file";
        record["size"] = isFolder ? Json() : Json(size);
        m_listing.addRecord(record, shown);
    }
    void add(const QoFileDbItemArray& records, bool areFolders)
    {
        for (const QoFileDbItemPtr& record : records)
            add(CQoCollPath(record->path), areFolders, record->size);
    }
    void finish() { m_listing.finish(); }
    bool isEmpty() const { return m_count == 0; }

private:
    Listing m_listing;
    std::size_t m_count = 0;
};

ExitCode browse(CommandLine& line, const BrowseOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FarListing listing(line, options.isLong);
    bool isComplete = true;
    runShown(line,
             *session,
             [&](ProgressReporter& progress)
             {
                 const CQoCollPath path = farPath(needFolderPlugin(options.name), options.path);
                 const auto entry = needEntry(path, progress);
                 if (!entry->IsFolder())
                     return listing.add(path, false, entry->GetSize());
                 QoFileDbItemArray folders;
                 QoFileDbItemArray files;
                 if (!options.isDeep)
                     isComplete =
                         listBelow(CQoPluginManager::PI_Folders, path, entry, 1, progress, folders);
                 isComplete = isComplete && listBelow(CQoPluginManager::PI_Files,
                                                      path,
                                                      entry,
                                                      options.isDeep ? allLevels : 1,
                                                      progress,
                                                      files);
                 stopIfCancelled(progress);
                 listing.add(folders, true);
                 listing.add(files, false);
             });
    listing.finish();
    if (isComplete)
        return ExitCode::done;
    CommandLine::complain("not all could be listed: " + pluginCause());
    return listing.isEmpty() ? ExitCode::failed : ExitCode::partly;
}

ExitCode removeFar(CommandLine& line, const BrowseOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "removed", "would be removed");
    runShown(line,
             *session,
             [&](ProgressReporter& progress)
             {
                 const CString id = needFolderPlugin(options.name);
                 if (!CQoPluginManager::canUploadToPlugin(id))
                     throw HostError(ExitCode::failed, options.name + " lets nothing be removed");
                 std::vector<FarDeed> deeds;
                 std::vector<CQoCollPath> paths;
                 bool hasFolder = false;
                 for (const std::string& typed : options.paths)
                 {
                     paths.push_back(farPath(id, typed));
                     if (paths.back().isEmpty())
                         throw HostError(ExitCode::usage,
                                         "the root of a service cannot be removed");
                     const auto entry = needEntry(paths.back(), progress);
                     hasFolder = hasFolder || entry->IsFolder();
                     deeds.push_back({shownPlace(paths.back()), "", entry->GetSize()});
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
                     if (!line.dryRun && !CQoPluginManager::deleteFile(paths[i], &progress))
                         deeds[i].cause = pluginCause();
                     report.add(deeds[i]);
                 }
             });
    return report.exitCode();
}
} // namespace

void addPluginBrowse(CommandLine& line, CLI::App& command)
{
    const auto shown = std::make_shared<BrowseOptions>();
    CLI::App* const browsing =
        command.add_subcommand("browse", "List the folders and files of a service");
    line.setListAction(*browsing, [&line, shown] { return browse(line, *shown); });
    addArgument(*browsing, "NAME", shown->name, "The service")->required();
    addArgument(*browsing, "PATH", shown->path, "A folder or file in it (all)");
    browsing->add_flag("--deep", shown->isDeep, "All files below it, in folders of folders too");
    browsing->add_flag("-l,--long", shown->isLong, "Tabs between the columns, with their names");

    const auto removed = std::make_shared<BrowseOptions>();
    CLI::App* const rm = line.addCommand(command,
                                         "rm",
                                         "Remove files and folders from a service",
                                         [&line, removed] { return removeFar(line, *removed); });
    addArgument(*rm, "NAME", removed->name, "The service")->required();
    addArguments(*rm, "PATH", removed->paths, "Files and folders in it")->required();
}
} // namespace qo::cli
