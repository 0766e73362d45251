#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/music/PlacedFile.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <unordered_map>

namespace qo::cli
{
namespace
{
struct PlacedOptions
{
    FileChoice choice;
    bool missingOnly = false;
    bool isLong = false;
};

/// Pictures and texts by their folders, which keep the order in which they were met.
class FilesByFolder
{
public:
    using Dir = boost::shared_ptr<CHDDirectory>;

    explicit FilesByFolder(const QoFileDbItemArray& found)
    {
        for (const QoFileDbItemPtr& item : found)
        {
            const auto file = CQoCollection::m_ownCollection.getFileByPath(item->path);
            if (!file || !file->getParentDir() ||
                (file->getFileType() != CHDFile::FT_Picture &&
                 file->getFileType() != CHDFile::FT_Text))
                continue;
            const Dir& dir = file->getParentDir();
            const auto [at, isNew] = m_indexes.emplace(dir.get(), m_folders.size());
            if (isNew)
                m_folders.push_back({dir, {}});
            m_folders[at->second].files.push_back(file);
        }
    }

    struct Folder
    {
        Dir dir;
        std::vector<boost::shared_ptr<CHDFile>> files;
    };
    const std::vector<Folder>& folders() const { return m_folders; }

private:
    std::vector<Folder> m_folders;
    std::unordered_map<const CHDDirectory*, std::size_t> m_indexes;
};

/// The files of one folder; what they say refers to the votes.
std::vector<PlacedFile> lookInto(const FilesByFolder::Folder& folder,
                                 const std::vector<FolderVote>& votes)
{
    std::vector<PlacedFile> placed;
    if (folder.files.size() == 1)
    {
        placed.emplace_back(explainPlacement(folder.files[0], folder.dir), votes);
        return placed;
    }
    std::unordered_map<const CHDFile*, Placement> placements;
    for (Placement& placement : explainPlacements(folder.dir))
    {
        const CHDFile* const file = placement.file.get();
        placements.emplace(file, std::move(placement));
    }
    for (const auto& file : folder.files)
        placed.emplace_back(placements.at(file.get()), votes);
    return placed;
}

void addRow(Listing& listing, const PlacedFile& placed)
{
    const std::string path = host::shownPath(placed.path());
    if (listing.isForPeople())
        return listing.addCells(
            {path, placed.isPlaced() ? placed.ownerText() : "-", "(" + placed.reason() + ")"});
    listing.addRecord(placed.record(), path);
}

void listPlaced(CommandLine& line, const PlacedOptions& options)
{
    const FilesByFolder files(chosenFiles(options.choice));
    Listing listing(line,
                    options.isLong,
                    {"path", "type", "placed", "artist", "album", "title", "by", "reason"},
                    {Listing::Column::path, Listing::Column::text, Listing::Column::text});
    std::int64_t all = 0;
    std::int64_t count = 0;
    for (const FilesByFolder::Folder& folder : files.folders())
    {
        const std::vector<FolderVote> votes = explainFolder(folder.dir);
        for (const PlacedFile& placed : lookInto(folder, votes))
        {
            if (listing.isClosed())
                return;
            ++all;
            count += placed.isPlaced() ? 1 : 0;
            if (!placed.isPlaced() || !options.missingOnly)
                addRow(listing, placed);
        }
    }
    listing.finish();
    line.out.flush();
    line.note(std::to_string(count) + " of " + std::to_string(all) +
              " pictures and texts found their music");
}
} // namespace

void setUpPlaced(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<PlacedOptions>();
    line.setListAction(command,
                       [&line, options]
                       {
                           const auto session = openKernel(line, KernelUse::look);
                           loadForReading(line, *session);
                           session->kernel().run([&] { listPlaced(line, *options); });
                           return ExitCode::done;
                       });
    addQuery(command, options->choice);
    command.add_flag("--missing", options->missingOnly, "Only those that found nothing");
    command.add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
}
} // namespace qo::cli
