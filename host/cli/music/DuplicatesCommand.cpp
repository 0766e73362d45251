#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/music/MusicSum.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/KnownNotes.h"
#include "core/moved/HeadStore.h"
#include "core/moved/MovedFiles.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace qo::cli
{
namespace
{
struct DuplicatesOptions
{
    FileChoice choice;   ///< of each group one file must be among these
    bool tracks = false; ///< with both false: both
    bool files = false;
};

constexpr std::string_view trackKind = "track";
constexpr std::string_view fileKind = "file";

struct EqualFiles
{
    std::string_view kind;
    std::string name;
    std::vector<QoFileDbItemPtr> files;
};

std::string nameOfTrack(const CLTTrack& track)
{
    return displayName(track.getArtist().get()) + " - " + displayName(&track) +
           (isUnnamed(track.getAlbum().get()) ? ""
                                              : " (" + displayName(track.getAlbum().get()) + ")");
}

/// Equal tracks are neighbours in the list. A missing track number equals every number, so of 1,
/// none, 2 the second equals both neighbours, which differ: each track of a group must equal the
/// one before it.
std::vector<EqualFiles> equalTracks()
{
    std::vector<EqualFiles> groups;
    boost::shared_ptr<CLTTrack> previous;
    bool isOpen = false;
    const auto addFiles = [&groups](const CLTTrack& track)
    {
        for (const auto& file : track.getMusicFiles())
            groups.back().files.push_back(file->getDbItem());
    };
    for (const auto& track : CLTManager::getTracks())
    {
        if (track->getMusicFiles().IsEmpty())
            continue;
        const bool isEqual = previous && CLTManager::compareLTTracks(previous, track) == 0;
        if (isEqual && !isOpen)
        {
            groups.push_back({trackKind, nameOfTrack(*previous), {}});
            addFiles(*previous);
        }
        if (isEqual)
            addFiles(*track);
        isOpen = isEqual;
        previous = track;
    }
    return groups;
}

/// The records that share their size with another.
QoFileDbItemArray sameSize()
{
    QoFileDbItemArray all;
    CQoCollection::m_ownCollection.copyFiles(all);
    std::map<std::int64_t, int> counts;
    for (const QoFileDbItemPtr& item : all)
        ++counts[item->size];
    QoFileDbItemArray found;
    for (const QoFileDbItemPtr& item : all)
    {
        if (item->size > 0 && counts[item->size] > 1)
            found.Add(item);
    }
    return found;
}

std::vector<EqualFiles> equalFiles(const CommandLine& line)
{
    const QoFileDbItemArray candidates = sameSize();
    host::HeadStore heads;
    {
        ShownProgress progress(line);
        // The heads are not saved, since the store would then lose those of all other files.
        if (!heads.update(candidates, progress.reporter()))
            throw HostError(ExitCode::interrupted, "interrupted; nothing was changed");
    }
    std::map<std::pair<std::int64_t, std::uint64_t>, std::vector<QoFileDbItemPtr>> byHead;
    for (const QoFileDbItemPtr& item : candidates)
    {
        if (const auto head = heads.headOf(*item))
            byHead[{item->size, *head}].push_back(item);
    }
    std::vector<EqualFiles> groups;
    for (auto& [key, files] : byHead)
    {
        if (files.size() > 1)
            groups.push_back({fileKind, sizeText(key.first), std::move(files)});
    }
    std::sort(groups.begin(),
              groups.end(),
              [](const EqualFiles& a, const EqualFiles& b)
              { return CQoUtils::comparePaths(a.files[0]->path, b.files[0]->path) < 0; });
    return groups;
}

/// Leaves the groups with a file that was chosen.
void keepChosen(std::vector<EqualFiles>& groups, const FileChoice& choice)
{
    std::unordered_set<const QoFileDbItem*> chosen;
    for (const QoFileDbItemPtr& item : chosenFiles(choice))
        chosen.insert(item.get());
    std::erase_if(groups,
                  [&chosen](const EqualFiles& group)
                  {
                      return std::ranges::none_of(group.files,
                                                  [&chosen](const QoFileDbItemPtr& item)
                                                  { return chosen.contains(item.get()); });
                  });
}

void print(CommandLine& line, const EqualFiles& group, host::KnownNotes& notes)
{
    if (line.json)
    {
        std::string files;
        for (const QoFileDbItemPtr& item : group.files)
        {
            host::JsonLine file;
            putRecord(file, *item, notes);
            files.append(files.empty() ? "[" : ",").append(file.end());
        }
        host::JsonLine object;
        object.text("kind", group.kind);
        object.text("name", group.name);
        object.raw("files", files + "]");
        return line.out.line(object.end());
    }
    const std::string kind = group.kind == trackKind ? "same track: " : "same size and beginning: ";
    line.out.line(Output::styled(Style::heading, kind + harmless(group.name)));
    for (const QoFileDbItemPtr& item : group.files)
    {
        const std::string bitrate =
            item->bitrate > 0 ? std::to_string(item->bitrate) + " kbit/s" : "";
        const std::string facts =
            "  " + padded(sizeText(item->size), 10) + "  " + padded(bitrate, 11) + "  ";
        line.out.line(facts + line.out.fitted(host::shownPath(item->path), textWidth(facts)));
    }
}

ExitCode listDuplicates(CommandLine& line, const DuplicatesOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    const bool both = options.tracks == options.files;
    session->kernel().run(
        [&]
        {
            std::vector<EqualFiles> groups;
            if (both || options.tracks)
                groups = equalTracks();
            if (both || options.files)
            {
                for (EqualFiles& group : equalFiles(line))
                    groups.push_back(std::move(group));
            }
            if (options.choice.isSet())
                keepChosen(groups, options.choice);
            host::KnownNotes notes;
            for (const EqualFiles& group : groups)
            {
                if (line.out.isClosed())
                    return;
                print(line, group, notes);
            }
            if (groups.empty())
                line.note("nothing is there twice");
        });
    return ExitCode::done;
}
} // namespace

void setUpDuplicates(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<DuplicatesOptions>();
    line.setListAction(command, [&line, options] { return listDuplicates(line, *options); });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    command.add_flag("--tracks", options->tracks, "Only equal tracks");
    command.add_flag("--files", options->files, "Only files that begin alike");
}
} // namespace qo::cli
