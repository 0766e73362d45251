#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/ProgressDisplay.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/FileChecks.h"
#include "core/collection/FileOperations.h"
#include "core/watch/FolderChanges.h"

#include <QoKernel/Physical.h>

#include <unistd.h>

namespace qo::cli
{
namespace
{
using host::CollectionChanges;
using host::FileOperations;
using host::Session;

struct FileOptions
{
    std::vector<std::string> paths;
    std::string target; ///< "" when none was given
    bool move = false;
};

bool isThere(const CString& path)
{
    return ::access(toSystemPath(path).c_str(), F_OK) == 0;
}

/// The spelling under which the collection has it, or else one under which the disk has it.
CString placeOf(const std::string& typed)
{
    const CQoCollection& collection = CQoCollection::m_ownCollection;
    const std::vector<CString> forms = spellings(typed);
    for (const CString& form : forms)
    {
        const auto dir = collection.getDir(form);
        const QoFileDbItemPtr record = CollectionChanges::recordOf(form);
        if ((record && record->path == form) || (dir && dir->getPath().toString() == form))
            return form;
    }
    for (const CString& form : forms)
    {
        if (isThere(form))
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

/// What the three commands share: a loaded collection, and a deed for each path that goes on behind
/// a failure.
class FileWork
{
public:
    explicit FileWork(CommandLine& line)
        : m_line(line), m_session(openKernel(line, KernelUse::hold))
    {
        loadForReading(line, *m_session);
    }

    Session& session() { return *m_session; }
    CommandLine& line() { return m_line; }
    FileOperations operations(bool isTrial)
    {
        return FileOperations(*m_session,
                              host::Trash(),
                              isTrial ? FileOperations::Run::trial : FileOperations::Run::real);
    }
    FileOperations operations() { return operations(m_line.dryRun); }

    /// What is to take something in has to be there.
    void needFolder(const std::string& typed)
    {
        m_session->kernel().run([&] { host::check::folder(targetOf(typed)); });
    }

    template <class Deed>
    ExitCode forEach(const std::vector<std::string>& paths, Deed deed)
    {
        std::size_t failed = 0;
        ExitCode first = ExitCode::done;
        ProgressDisplay display(m_line.quiet);
        host::ProgressReporter progress([&display](const host::ProgressEvent& event)
                                        { display.show(event); });
        const InterruptGuard guard(progress);
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
        return failed == 0 ? ExitCode::done : failed < paths.size() ? ExitCode::partly : first;
    }

    /// On the kernel's thread. Throws what is left to be done by hand.
    void tell(const char* deed, const CString& from, const FileOperations::Result& result)
    {
        const std::string place = host::shownPath(result.place);
        if (m_line.json)
        {
            Json object;
            putPath(object, "from", from);
            putPath(object, "to", result.place);
            object["files"] = result.records;
            m_line.out.line(dump(object));
        }
        else
            m_line.note(std::string(m_line.dryRun ? "would be " : "") + deed + ": " +
                        host::shownPath(from) + (from == result.place ? "" : " -> " + place) +
                        " (" + countText(result.records, "file") + ")");
        if (!result.note.empty())
            throw HostError(ExitCode::failed, result.note);
    }

private:
    CommandLine& m_line;
    std::unique_ptr<Session> m_session;
};

void needSource(const CString& path)
{
    if (!isThere(path))
        throw HostError(ExitCode::notFound, host::shownPath(path) + " is not there");
}

ExitCode moveFiles(CommandLine& line, const FileOptions& options)
{
    std::vector<std::string> sources = options.paths;
    if (sources.size() < 2)
        throw HostError(ExitCode::usage, "name what is to be moved, and behind it where to");
    const std::string typedTarget = sources.back();
    sources.pop_back();
    FileWork work(line);
    if (sources.size() > 1 || namesFolder(typedTarget))
        work.needFolder(typedTarget);
    return work.forEach(sources,
                        [&](const std::string& typed, host::ProgressReporter& progress)
                        {
                            const CString from = placeOf(typed);
                            const CString to = targetOf(typedTarget);
                            work.tell("moved", from, work.operations().move(from, to, progress));
                        });
}

/// Asks about what is more than one file; it can be taken out of the trash again. What would be
/// refused is refused before.
void confirmRemoval(FileWork& work, const std::vector<std::string>& paths)
{
    int files = 0;
    bool isMuch = false;
    bool isAny = false;
    const auto look = [&](const std::string& typed, host::ProgressReporter& progress)
    {
        const CString path = placeOf(typed);
        files += work.operations(true).remove(path, progress).records;
        isMuch = isMuch || isAny || fileSystem().isDirectory(path);
        isAny = true;
    };
    host::ProgressReporter silent([](const host::ProgressEvent&) {});
    for (const std::string& typed : paths)
    {
        try
        {
            work.session().kernel().run([&] { look(typed, silent); });
        }
        catch (const HostError&)
        {
            // Behind the question it is told again, beside what becomes of the others.
            if (paths.size() == 1)
                throw;
        }
    }
    if (isMuch)
        confirm(work.line(), countText(files, "file") + " of the collection will go to the trash.");
}

ExitCode removeFiles(CommandLine& line, const FileOptions& options)
{
    FileWork work(line);
    if (!line.dryRun)
        confirmRemoval(work, options.paths);
    return work.forEach(
        options.paths,
        [&](const std::string& typed, host::ProgressReporter& progress)
        {
            const CString path = placeOf(typed);
            work.tell("put into the trash", path, work.operations().remove(path, progress));
        });
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
    FileOperations::Result result{path, static_cast<int>(events.size()), {}};
    if (!work.line().dryRun)
        result.records = host::FolderChanges(work.session()).apply(events, progress).scanned;
    work.tell("taken in", path, result);
}

ExitCode addFiles(CommandLine& line, const FileOptions& options)
{
    FileWork work(line);
    const auto mode = options.move ? host::DiskMove::Mode::move : host::DiskMove::Mode::copy;
    const char* const deed = options.move ? "moved" : "copied";
    if (!options.target.empty())
        work.needFolder(options.target);
    return work.forEach(options.paths,
                        [&](const std::string& typed, host::ProgressReporter& progress)
                        {
                            const CString from = placeOf(typed);
                            if (options.target.empty())
                                return takeIn(work, from, progress);
                            const CString to = targetOf(options.target);
                            work.tell(deed, from, work.operations().add(from, to, mode, progress));
                        });
}
} // namespace

void setUpMove(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<FileOptions>();
    line.setAction(command, [&line, options] { return moveFiles(line, *options); });
    addArguments(
        command, "PATH", options->paths, "What to move, and after it the new path or a folder")
        ->required();
}

void setUpRemove(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<FileOptions>();
    line.setAction(command, [&line, options] { return removeFiles(line, *options); });
    addArguments(command, "PATH", options->paths, "Files and folders")->required();
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
