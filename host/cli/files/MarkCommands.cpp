#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/store/HostStore.h"
#include "core/view/Marks.h"

#include <algorithm>
#include <unordered_set>

namespace qo::cli
{
namespace
{
using host::HostStore;
using host::Session;

struct MarkOptions
{
    FileChoice choice;
    bool all = false;
};

/// How many of the ids are those of files of the collection.
std::size_t knownFiles(const std::unordered_set<LastingId>& ids)
{
    QoFileDbItemArray all;
    CQoCollection::m_ownCollection.copyFiles(all);
    return static_cast<std::size_t>(std::ranges::count_if(
        all, [&ids](const QoFileDbItemPtr& item) { return ids.contains(item->velmoraId); }));
}

/// Gives the chosen files marks or takes them off.
ExitCode changeMarks(CommandLine& line, const MarkOptions& options, bool isMarked)
{
    if (!options.choice.isSet() && !options.all)
        throw HostError(ExitCode::usage, "say which files, or take all of them with --all");
    const auto session = openKernel(line, KernelUse::change);
    loadForReading(line, *session);
    const auto [changed, marked] = session->kernel().run(
        [&]
        {
            if (session->hasLock())
                session->prepareStore();
            HostStore store(Session::folder());
            const auto before = store.checkedFiles();
            std::vector<LastingId> ids;
            for (const QoFileDbItemPtr& item : chosenFiles(options.choice))
            {
                if (before.contains(item->velmoraId) != isMarked)
                    ids.push_back(item->velmoraId);
            }
            const std::size_t count = ids.size();
            if (!line.dryRun)
            {
                if (!isMarked && options.all)
                    store.clearChecked();
                else
                    store.changeChecked(isMarked ? std::vector<LastingId>() : ids,
                                        isMarked ? ids : std::vector<LastingId>());
            }
            const std::size_t known = knownFiles(before);
            return std::pair(count, isMarked ? known + count : known - count);
        });
    if (line.json)
    {
        Json object;
        object["changed"] = changed;
        object["marked"] = marked;
        line.out.line(dump(object));
    }
    else
        line.note(std::string(line.dryRun ? "would have " : "") +
                  (isMarked ? "marked " : "unmarked ") +
                  countText(static_cast<std::int64_t>(changed), "file") + "; " +
                  std::to_string(marked) + (line.dryRun ? " would be marked" : " are marked"));
    return ExitCode::done;
}

ExitCode showMarked(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    const host::MarkedFiles marked = session->kernel().run(
        []
        {
            host::applyMarks();
            return host::markedFiles();
        });
    if (line.json)
    {
        Json object;
        object["files"] = marked.files;
        object["music"] = marked.music;
        object["size"] = marked.size;
        line.out.line(dump(object));
    }
    else
        line.out.line(countText(marked.files, "file") + " marked, " + std::to_string(marked.music) +
                      " of them music, " + sizeText(marked.size));
    return ExitCode::done;
}
} // namespace

void setUpMark(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<MarkOptions>();
    line.setAction(command, [&line, options] { return changeMarks(line, *options, true); });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    addAll(command, options->all, "Every file of the collection");
}

void setUpUnmark(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<MarkOptions>();
    line.setAction(command, [&line, options] { return changeMarks(line, *options, false); });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    addAll(command, options->all, "Every file");
}

void setUpMarked(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return showMarked(line); });
}
} // namespace qo::cli
