#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/ProgressDisplay.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/FileChecks.h"
#include "core/runs/FileMoves.h"
#include "core/runs/Reorganizer.h"
#include "core/watch/FolderChanges.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <set>

namespace qo::cli
{
namespace
{
using host::CollectionChanges;
using host::FileMoves;
using host::Session;

struct FileOptions
{
    std::vector<std::string> paths;
    bool isMarked = false;
    std::string target; ///< "" when none was given
    bool move = false;
};

/// The spelling under which the collection has it, or else one under which the disk has it.
CString placeOf(const std::string& typed)
{
    if (const auto path = host::pathInCollection(typed))
        return *path;
    const std::vector<CString> forms = spellings(typed);
    const auto found = std::ranges::find_if(forms, host::nameExists);
    return found == forms.end() ? forms.front() : *found;
}

/// The same of what moves or goes: a link itself, and not what it leads to.
CString sourceOf(const std::string& typed)
{
    const std::vector<CString> forms = spellings(typed);
    if (!fileSystem().isLink(forms.front()))
        return placeOf(typed);
    for (const CString& form : forms)
    {
        const CQoCollPath folder = CQoCollPath(form).getParent();
        if (fileSystem().isLink(form) && CQoCollection::m_ownCollection.isDirInCollection(folder))
            return form;
    }
    return forms.front();
}

/// The spelling whose folder the collection has.
CString targetOf(const std::string& typed)
{
    const std::vector<CString> forms = spellings(typed);
    for (const CString& form : forms)
    {
        const CQoCollPath path(form);
        if (CQoCollection::m_ownCollection.isDirInCollection(path.getParent()) ||
            CQoCollection::m_ownCollection.isDirInCollection(path))
            return form;
    }
    return forms.front();
}

/// Whether the user can only have meant a folder.
bool namesFolder(const std::string& typed)
{
    return typed.ends_with('/') || typed.ends_with("/.") || typed.ends_with("/..");
}

/// Whether there is something of that name, or can only have been meant.
bool hasName(const std::string& typed)
{
    return !typed.empty() &&
           (host::nameExists(sourceOf(typed)) ||
            (typed.find('/') != typed.npos && typed.find_first_of("*?[\":") == typed.npos));
}

/// What a command moves or removes, as system paths.
struct Sources
{
    std::vector<std::string> paths;
    bool isFound = false; ///< by a query, and not by name
};

/// What the three commands share: a loaded collection, and one run of all that the paths ask for.
/// What cannot be done of it does not keep the rest from being done.
class FileWork
{
public:
    FileWork(CommandLine& line, const char* kind)
        : m_line(line), m_kind(kind), m_session(openKernel(line, KernelUse::change))
    {
        loadForReading(line, *m_session);
    }

    Session& session() { return *m_session; }
    CommandLine& line() { return m_line; }

    /// What somebody means by these words: what has such a name, or else the files that they find.
    Sources sourcesOf(const std::vector<std::string>& words, bool isMarked)
    {
        return m_session->kernel().run(
            [&]
            {
                // A word beside names is a name with a slip of the pen, unless it can only be part
                // of a query.
                const auto isQuery = [](const std::string& typed)
                { return !hasName(typed) && typed.find_first_of(":^,\"*?[") != typed.npos; };
                Sources sources;
                if (!isMarked && std::ranges::any_of(words, hasName) &&
                    std::ranges::none_of(words, isQuery))
                {
                    sources.paths = words;
                    return sources;
                }
                sources.isFound = true;
                FileChoice choice;
                choice.request.words = words;
                choice.request.isMarked = isMarked;
                for (const QoFileDbItemPtr& item : chosenFiles(choice))
                    sources.paths.push_back(toSystemPath(item->path));
                return sources;
            });
    }

    /// What is to take something in has to be there.
    void needFolder(const std::string& typed)
    {
        m_session->kernel().run([&] { host::check::folder(targetOf(typed)); });
    }

    /// Asks ask about each path, which may refuse it, then confirm, which may be empty, and makes
    /// the run. The deed is what the listing says of it.
    ExitCode run(const std::vector<std::string>& paths,
                 const char* deed,
                 const std::function<void(FileMoves&, const std::string&)>& ask,
                 const std::function<void(const FileMoves&)>& confirm = {})
    {
        return forEach(
            paths,
            [&](host::ProgressReporter& progress)
            {
                m_moves.emplace(*m_session,
                                m_kind,
                                m_line.dryRun ? host::Trash::onTrial() : host::Trash(),
                                [&progress] { return progress.isCanceled(); });
            },
            [&](const std::string& path, host::ProgressReporter&) { ask(*m_moves, path); },
            [&](host::ProgressReporter& progress)
            {
                if (m_moves->requests().empty())
                    return std::size_t(0);
                if (confirm && !m_line.dryRun)
                    confirm(*m_moves);
                return m_session->kernel().run([&] { return carryOut(deed, progress); });
            });
    }
    /// The same for what makes no run.
    ExitCode forEach(const std::vector<std::string>& paths,
                     const std::function<void(const std::string&, host::ProgressReporter&)>& deed)
    {
        return forEach(
            paths,
            [](host::ProgressReporter&) {},
            deed,
            [](host::ProgressReporter&) { return std::size_t(0); });
    }

    /// On the kernel's thread.
    void show(const char* deed, const CString& from, const CString& to, int files)
    {
        const std::string place = host::shownPath(to);
        if (m_line.json)
        {
            Json object;
            putPath(object, "from", from);
            putPath(object, "to", to);
            object["files"] = files;
            m_line.out.line(dump(object));
        }
        else
            m_line.note(std::string(m_line.dryRun ? "would be " : "") + deed + ": " +
                        host::shownPath(from) + (from == to ? "" : " -> " + place) + " (" +
                        countText(files, "file") + ")");
    }

private:
    using Step = std::function<void(host::ProgressReporter&)>;

    /// begin, the deed for each path and at last end, which gives the number of paths that failed.
    ExitCode forEach(const std::vector<std::string>& paths,
                     const Step& begin,
                     const std::function<void(const std::string&, host::ProgressReporter&)>& deed,
                     const std::function<std::size_t(host::ProgressReporter&)>& end)
    {
        std::size_t failed = 0;
        ExitCode first = ExitCode::done;
        ShownProgress shown(m_line);
        host::ProgressReporter& progress = shown.reporter();
        begin(progress);
        for (const std::string& path : paths)
        {
            try
            {
                m_session->kernel().run([&] { deed(path, progress); });
            }
            catch (const HostError& error)
            {
                if (error.code() == ExitCode::interrupted || paths.size() == 1)
                    throw;
                CommandLine::complain(error.what());
                first = failed++ == 0 ? error.code() : first;
            }
        }
        const std::size_t later = end(progress);
        if (later > 0 && failed == 0)
            first = ExitCode::failed;
        failed += later;
        return failed == 0 ? ExitCode::done : failed < paths.size() ? ExitCode::partly : first;
    }

    /// How many of the requests did not come to their end. On the kernel's thread.
    std::size_t carryOut(const char* deed, host::ProgressReporter& progress)
    {
        std::set<std::string> stuck;
        host::Reorganizer reorganizer(*m_session);
        if (m_line.dryRun)
            reorganizer.check(*m_moves);
        else
        {
            const host::MoveRun::Report report = reorganizer.carryOut(*m_moves, progress);
            for (const host::MoveRun::Failure& failure : report.failures)
            {
                CommandLine::complain(
                    harmless(failure.from + " -> " + failure.to + ": " + failure.reason));
                stuck.insert(failure.from);
            }
            for (const std::string& sentence : report.notes)
                m_line.note(sentence);
            if (!report.isFinished)
                throw HostError(
                    wasInterrupted() ? ExitCode::interrupted : ExitCode::failed,
                    "stopped after " + countText(static_cast<std::int64_t>(report.moved), "file") +
                        ": \"qo reorg apply " + reorganizer.lastRun() + "\" goes on, \"qo undo " +
                        reorganizer.lastRun() + "\" takes it back");
        }
        std::size_t failed = 0;
        for (const FileMoves::Request& request : m_moves->requests())
        {
            const std::string from = toSystemPath(request.from);
            const bool isStuck = std::any_of(stuck.begin(),
                                             stuck.end(),
                                             [&](const std::string& path)
                                             { return path == from || host::isBelow(path, from); });
            if (isStuck)
                ++failed;
            else
                show(deed, request.from, request.to, request.files);
        }
        return failed;
    }

    CommandLine& m_line;
    const char* m_kind;
    std::unique_ptr<Session> m_session;
    std::optional<FileMoves> m_moves;
};

void needSource(const CString& path)
{
    if (!host::nameExists(path))
        throw HostError(ExitCode::notFound, host::shownPath(path) + " is not there");
}

std::int64_t filesOf(const FileMoves& moves)
{
    std::int64_t files = 0;
    for (const FileMoves::Request& request : moves.requests())
        files += request.files;
    return files;
}

ExitCode moveFiles(CommandLine& line, const FileOptions& options)
{
    std::vector<std::string> words = options.paths;
    if (words.size() + (options.isMarked ? 1 : 0) < 2)
        throw HostError(ExitCode::usage, "name what is to be moved, and after it where to");
    const std::string typedTarget = words.back();
    words.pop_back();
    FileWork work(line, "mv");
    const Sources sources = work.sourcesOf(words, options.isMarked);
    if (words.size() > 1 || sources.isFound || namesFolder(typedTarget))
        work.needFolder(typedTarget);
    return work.run(
        sources.paths,
        "moved",
        [&](FileMoves& moves, const std::string& typed)
        { moves.move(sourceOf(typed), targetOf(typedTarget)); },
        [&](const FileMoves& moves)
        {
            if (sources.isFound)
                confirm(line, countText(filesOf(moves), "file") + " will be moved.");
        });
}

/// Asks about what is more than one file, or was not named but found; it can be taken out of the
/// trash again.
void confirmRemoval(const CommandLine& line, const FileMoves& moves, bool isFound)
{
    const bool isFolder = std::ranges::any_of(moves.requests(),
                                              [](const FileMoves::Request& request)
                                              { return fileSystem().isDirectory(request.from); });
    if (isFolder || isFound || moves.requests().size() > 1)
        confirm(line,
                countText(filesOf(moves), "file") + " of the collection will go to the trash.");
}

ExitCode removeFiles(CommandLine& line, const FileOptions& options)
{
    if (options.paths.empty() && !options.isMarked)
        throw HostError(ExitCode::usage, "name what is to go, or find it with a query");
    FileWork work(line, "rm");
    const Sources sources = work.sourcesOf(options.paths, options.isMarked);
    return work.run(
        sources.paths,
        "put into the trash",
        [](FileMoves& moves, const std::string& typed) { moves.remove(sourceOf(typed)); },
        [&](const FileMoves& moves) { confirmRemoval(line, moves, sources.isFound); });
}

/// Whether a scan would find nothing to do there.
bool isUpToDate(const host::FolderEvent& event)
{
    const CString path = fromSystemPath(event.path);
    const QoFileDbItemPtr record = CollectionChanges::recordOf(path);
    FileInfo info;
    return record && record->path == path && fileSystem().info(path, Spelling::exact, info) == 0 &&
           info.size == record->size &&
           CQoCollDbUtils::compareFILETIMEs(info.modified, record->modifTime) <= 0;
}

/// Every file there, as a scan would find them.
std::vector<host::FolderEvent> filesAt(const CString& path)
{
    using Kind = host::FolderEvent::Kind;
    if (!fileSystem().isDirectory(path))
        return {{Kind::added, toSystemPath(path), {}, {}}};
    std::vector<host::FolderEvent> events;
    QoKernel::CFileFilter filter;
    filter.m_flags = QoKernel::CFileFilter::testType;
    filter.m_typeMask = QoKernel::CFileFilter::plainFiles;
    QoKernel::CFileFinder finder;
    for (bool any = finder.findFirst({path, true}, filter); any; any = finder.findNext())
        events.push_back({Kind::added, toSystemPath(finder.getFilePath()), {}, {}});
    return events;
}

/// Takes in what lies in a root folder already.
void takeIn(FileWork& work, const CString& path, host::ProgressReporter& progress)
{
    needSource(path);
    if (!CQoCollection::m_ownCollection.isDirInCollection(CQoCollPath(path).getParent()) &&
        !CQoCollection::m_ownCollection.isDirInCollection(CQoCollPath(path)))
        throw HostError(ExitCode::failed,
                        host::shownPath(path) +
                            " is in no root folder of the collection; --to says where to copy it, "
                            "and \"qo scan DIR\" makes a folder one");
    std::vector<host::FolderEvent> events = filesAt(path);
    const auto known = static_cast<int>(std::erase_if(events, isUpToDate));
    if (known > 0 && events.empty() && !work.line().json)
        return work.line().note("already known: " + host::shownPath(path) + " (" +
                                countText(known, "file") + ")");
    int files = static_cast<int>(events.size());
    if (!work.line().dryRun)
        files = host::FolderChanges(work.session()).apply(events, progress).scanned;
    work.show("taken in", path, path, files);
}

ExitCode addFiles(CommandLine& line, const FileOptions& options)
{
    FileWork work(line, "add");
    if (options.target.empty())
        return work.forEach(options.paths,
                            [&](const std::string& typed, host::ProgressReporter& progress)
                            { takeIn(work, placeOf(typed), progress); });
    work.needFolder(options.target);
    const auto deed = options.move ? host::MovedFile::Deed::move : host::MovedFile::Deed::copy;
    return work.run(options.paths,
                    options.move ? "moved" : "copied",
                    [&](FileMoves& moves, const std::string& typed)
                    { moves.add(placeOf(typed), targetOf(options.target), deed); });
}
} // namespace

void setUpMove(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<FileOptions>();
    line.setAction(command, [&line, options] { return moveFiles(line, *options); });
    addArguments(command,
                 "PATH",
                 options->paths,
                 "What to move, by paths or a query, and after it the new path or a folder")
        ->required();
    command.add_flag("--marked", options->isMarked, "Files with a check mark");
}

void setUpRemove(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<FileOptions>();
    line.setAction(command, [&line, options] { return removeFiles(line, *options); });
    addArguments(command, "PATH", options->paths, "Files and folders, or a query");
    command.add_flag("--marked", options->isMarked, "Files with a check mark");
}

void setUpAdd(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<FileOptions>();
    line.setAction(command, [&line, options] { return addFiles(line, *options); });
    addArguments(command, "PATH", options->paths, "Files and folders")->required();
    CLI::Option* const to =
        addArgument(command, "--to", options->target, "Copy them to this folder of the collection")
            ->type_name("DIR");
    command.add_flag("--move", options->move, "Move them there, do not copy")->needs(to);
}
} // namespace qo::cli
