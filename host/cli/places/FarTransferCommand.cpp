#include "cli/KernelCommand.h"
#include "cli/places/FarTransfer.h"
#include "cli/places/SortedSendings.h"
#include "cli/places/TransferProgress.h"
#include "cli/shown/Text.h"
#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <deque>
#include <set>

namespace qo::cli
{
namespace
{
using host::ProgressReporter;

struct TransferOptions
{
    std::string name;
    std::vector<std::string> paths;
    std::string to;
    bool replaces = false;
    bool isUnsorted = false;
};

std::int64_t sizeOfAll(const std::vector<Transfer>& transfers)
{
    std::int64_t sum = 0;
    for (const Transfer& each : transfers)
    {
        // A place may say anything of its sizes.
        const std::int64_t size = std::max<std::int64_t>(each.size, 0);
        sum = size > INT64_MAX - sum ? INT64_MAX : sum + size;
    }
    return sum;
}

/// Carries out each of them with progress. The function gives the cause of a failure.
template <class Function>
void runTransfers(CommandLine& line,
                  const FarPlace& place,
                  const std::vector<Transfer>& transfers,
                  FarReport& report,
                  ProgressReporter& reporter,
                  Function run)
{
    TransferProgress progress(reporter, sizeOfAll(transfers));
    for (const Transfer& each : transfers)
    {
        if (progress.isCanceled())
            throw report.interrupted();
        progress.beginFile(place.nameOf(each.far.getLast()));
        FarDeed deed = {place.shownWhole(each.far), host::shownPath(each.local), each.size};
        deed.cause = run(each, progress);
        if (!line.dryRun && progress.isCanceled() && !deed.cause.empty())
            throw report.interrupted();
        report.add(deed);
        progress.endFile(each.size);
    }
}

/// What is fetched for a path: a file, or all files of a folder, which keep their places in it.
void addFetches(FarPlace& place,
                const CQoCollPath& path,
                const CString& folder,
                ProgressReporter& progress,
                std::vector<Transfer>& fetches)
{
    const FarEntry entry = place.need(path, progress);
    const CString base =
        path == place.root() ? folder : combinePath(folder, place.localNameOf(path.getLast()));
    if (!entry.isFolder)
    {
        fetches.push_back({path, base, entry.size});
        return;
    }
    QoFileDbItemArray files;
    if (!place.list(path, FarPlace::Items::files, FarPlace::allLevels, progress, files))
    {
        stopIfCancelled(progress);
        place.fail("not all of " + place.shownWhole(path) +
                   " can be listed, so nothing was fetched");
    }
    for (const QoFileDbItemPtr& file : files)
    {
        const CQoCollPath far(file->path);
        CString local = base;
        for (const CString& component : far.relativeTo(path))
            local = combinePath(local, place.localNameOf(component));
        fetches.push_back({far, local, file->size});
    }
}

/// Why the file cannot be fetched to that place; "" if it can.
std::string obstacle(const Transfer& fetch, bool replaces)
{
    NameInfo info;
    const int error = fileSystem().look(fetch.local, info);
    if (error == 0 && info.kind != NameInfo::Kind::regular)
        return host::shownPath(fetch.local) + " is there, and is no plain file";
    if (error == 0 && !replaces)
        return host::shownPath(fetch.local) + " is there already; --replace fetches it again";
    return "";
}

std::string localFailure(const CString& path, int error)
{
    return host::shownPath(path) + ": " + host::errorWords(error);
}

/// Fetches into a file of a passing name, which is then given its own. The cause of a failure.
std::string fetchFile(FarPlace& place, const Transfer& fetch, bool replaces, IQoProgress& progress)
{
    const CString folder = fromSystemPath(host::parentOf(toSystemPath(fetch.local)));
    if (const int error = fileSystem().makeDirectories(folder))
        return localFailure(folder, error);
    const CString part = host::passingPathBeside(fetch.local);
    std::string cause = place.fetch(fetch.far, fetch.size, part, progress);
    if (!cause.empty())
        return cause;
    NameInfo info;
    int error = fileSystem().look(part, info);
    // A service that does not know the size of a file says 0.
    if (error == 0 && fetch.size > 0 && info.size != fetch.size)
        cause = std::to_string(info.size) + " bytes came instead of " + std::to_string(fetch.size);
    if (error == 0 && cause.empty())
        error = fileSystem().sync(part);
    if (error == 0 && cause.empty())
        error = replaces ? fileSystem().moveFile(part, fetch.local)
                         : fileSystem().moveFileNoReplace(part, fetch.local);
    if (error != 0)
        cause = localFailure(fetch.local, error);
    if (!cause.empty())
        fileSystem().removeFile(part);
    return cause;
}

/// Throws HostError when fewer bytes are left than these, which may be none.
void needRoom(const std::string& where, std::int64_t bytes, std::int64_t room)
{
    if (bytes > room)
        throw HostError(ExitCode::failed,
                        "there is no room for " + sizeText(bytes) + " in " + where + ": " +
                            sizeText(room) + " are left");
}

ExitCode fetchAll(CommandLine& line, const PlaceKind& kind, const TransferOptions& options)
{
    const auto run = [&](const FetchWork& work)
    {
        const auto place = kind.open(work.session, options.name, nullptr);
        std::vector<Transfer> fetches;
        for (const std::string& path : options.paths)
            addFetches(*place, place->path(path), work.folder, work.progress, fetches);
        fetchTransfers(work, *place, fetches);
    };
    return fetchInto(line, options.to, options.replaces, run);
}

/// The names that files and folders of this machine get in a place, which may hold fewer names.
/// Example: "a:b.mp3" is "a_b.mp3" on FAT.
class FittingNames
{
public:
    explicit FittingNames(const FarPlace& place) : m_place(place), m_rules(place.nameRules()) {}

    CString folder(const std::string& name) const
    {
        return host::fittingFolderName(m_place.componentOf(name), m_rules);
    }
    CString file(const std::string& name) const
    {
        const CString component = m_place.componentOf(name);
        const CString fitting = host::fittingFileName(component, m_rules);
        return fitting.IsEmpty() ? component : fitting; // the place says what it thinks of it
    }

private:
    const FarPlace& m_place;
    const VolumeRules m_rules;
};

/// Adds all files of a folder of this machine, which keep their places in it. Links are left out,
/// since they may lead around in a ring.
void addFolder(const FittingNames& names,
               const CString& local,
               const CQoCollPath& far,
               IQoProgress& progress,
               std::vector<Transfer>& list)
{
    std::deque<std::pair<CString, CQoCollPath>> waiting = {{local, far}};
    while (!waiting.empty())
    {
        stopIfCancelled(progress);
        const auto [folder, target] = waiting.front();
        waiting.pop_front();
        std::vector<DirEntry> entries;
        if (const int error = fileSystem().list(folder, entries))
            throw HostError(ExitCode::failed,
                            host::shownPath(folder) + " cannot be listed, so nothing was sent: " +
                                host::errorWords(error));
        for (const DirEntry& entry : entries)
        {
            if (entry.info.isLink)
                continue;
            const CString path = combinePath(folder, entry.name);
            const std::string file = toSystemPath(path);
            const std::string name = file.substr(file.rfind('/') + 1);
            if (entry.info.kind == FileKind::directory)
                waiting.emplace_back(path, target.child(names.folder(name)));
            else if (entry.info.kind == FileKind::regular)
                list.push_back({target.child(names.file(name)), path, entry.info.size});
        }
    }
}

/// The typed files and folders as they will be called in the folder. Throws HostError for what is
/// neither.
std::vector<Transfer> sendings(const FarPlace& place,
                               const TransferOptions& options,
                               const CQoCollPath& folder,
                               IQoProgress& progress)
{
    std::vector<Transfer> list;
    const FittingNames names(place);
    for (const std::string& typed : options.paths)
    {
        const std::string file = host::absolutePath(typed);
        // A link stands for its file: not every place copies through links.
        const std::string real = host::resolvedPath(file);
        const CString local = fromSystemPath(real.empty() ? file : real);
        FileInfo info;
        if (const int error = fileSystem().info(local, Spelling::exact, info))
            throw HostError(ExitCode::notFound, file + ": " + host::errorWords(error));
        const std::string name = file.substr(file.rfind('/') + 1);
        if (info.kind == FileKind::other || name.empty())
            throw HostError(ExitCode::usage, file + " is no file, and no folder with a name");
        if (info.kind == FileKind::directory)
            addFolder(names, local, folder.child(names.folder(name)), progress, list);
        else
            list.push_back({folder.child(names.file(name)), local, info.size});
    }
    return list;
}

/// Of files that would get one name the first alone is sent.
void dropTwins(const FarPlace& place, std::vector<Transfer>& sendings, FarReport& report)
{
    std::set<CString> taken;
    const bool ignoresCase = place.nameRules().ignoresCase;
    const auto isTwin = [&](const Transfer& each)
    {
        const CString path = each.far.toString();
        if (taken.insert(ignoresCase ? host::sameNameKey(path) : path).second)
            return false;
        report.add({host::shownPath(each.local),
                    host::shownPath(each.local),
                    each.size,
                    "another file of this call is called " + place.shownWhole(each.far)});
        return true;
    };
    std::erase_if(sendings, isTwin);
}

/// Whether an entry of exactly that name is there.
bool isThere(FarPlace& place, const CQoCollPath& path, IQoProgress& progress, FarEntry& entry)
{
    return place.find(path, progress, entry) && entry.component == path.getLast();
}

std::string sendFile(const CommandLine& line,
                     FarPlace& place,
                     const Transfer& sending,
                     bool replaces,
                     IQoProgress& progress)
{
    FarEntry entry;
    if (!replaces && isThere(place, sending.far, progress, entry))
        return "it is there already; --replace sends it again";
    if (line.dryRun)
        return "";
    CQoCollPath target = sending.far;
    const std::string cause = place.send(sending.local, sending.size, target, replaces, progress);
    if (!cause.empty())
        return cause;
    if (!isThere(place, target, progress, entry))
        return "it was sent, but is not listed there";
    if (entry.size != sending.size)
        return std::to_string(entry.size) + " bytes of it are there instead of " +
               std::to_string(sending.size);
    return "";
}

/// The room that leftovers take counts.
void clearFolders(FarPlace& place, const std::vector<Transfer>& sendings)
{
    std::set<CString> cleared;
    for (const Transfer& each : sendings)
    {
        const CQoCollPath folder = each.far.getParent();
        if (cleared.insert(folder.toString()).second)
            place.clearBefore(folder);
    }
}

ExitCode sendAll(CommandLine& line, const PlaceKind& kind, const TransferOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "sent");
    runShown(line,
             *session,
             [&](ProgressReporter& progress)
             {
                 std::string typed;
                 const auto place = kind.open(*session, options.to, &typed);
                 const CQoCollPath folder = place->path(typed);
                 if (!place->takesFiles())
                     throw HostError(ExitCode::failed, place->name() + " takes no files");
                 std::vector<Transfer> files = sendings(*place, options, folder, progress);
                 const bool isSorted = folder.isEmpty() && !options.isUnsorted;
                 if (isSorted && !place->uploadRules().isEmpty())
                     sortSendings(*session, progress, *place, files, report);
                 dropTwins(*place, files, report);
                 if (!line.dryRun)
                     clearFolders(*place, files);
                 std::int64_t room = 0;
                 if (place->room(room))
                     needRoom(place->name(), sizeOfAll(files), room);
                 runTransfers(line,
                              *place,
                              files,
                              report,
                              progress,
                              [&](const Transfer& each, IQoProgress& shown)
                              { return sendFile(line, *place, each, options.replaces, shown); });
             });
    return report.exitCode();
}
} // namespace

ExitCode fetchInto(CommandLine& line,
                   const std::string& typed,
                   bool replaces,
                   const std::function<void(const FetchWork& work)>& run)
{
    const CString folder = fromSystemPath(host::existingFolder(typed));
    needWritable(folder);
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "fetched");
    runShown(line,
             *session,
             [&](ProgressReporter& progress) {
                 run({line, *session, folder, replaces, report, progress});
             });
    return report.exitCode();
}

void fetchTransfers(const FetchWork& work, FarPlace& place, const std::vector<Transfer>& fetches)
{
    std::uint64_t room = 0;
    if (fileSystem().room(work.folder, room) == 0)
        needRoom(host::shownPath(work.folder), sizeOfAll(fetches), static_cast<std::int64_t>(room));
    std::set<CString> taken;
    const auto fetch = [&](const Transfer& each, IQoProgress& shown)
    {
        std::string cause = obstacle(each, work.replaces);
        if (cause.empty() && !taken.insert(each.local).second)
            cause = "another file of this call is called " + host::shownPath(each.local);
        return work.line.dryRun || !cause.empty() ? cause
                                                  : fetchFile(place, each, work.replaces, shown);
    };
    runTransfers(work.line, place, fetches, work.report, work.progress, fetch);
}

void addFarTransfers(CommandLine& line, CLI::App& command, const PlaceKind& kind)
{
    const std::string noun = kind.noun;
    const auto fetched = std::make_shared<TransferOptions>();
    CLI::App* const get =
        line.addCommand(command,
                        kind.fetch,
                        "Copy files and folders from a " + noun,
                        [&line, kind, fetched] { return fetchAll(line, kind, *fetched); });
    addArgument(*get, "NAME", fetched->name, "The " + noun)->required();
    addArguments(*get, "PATH", fetched->paths, "Files and folders in it")->required();
    addArgument(*get, "--to", fetched->to, "The folder that the copies go to")
        ->required()
        ->type_name("DIR");
    get->add_flag("--replace", fetched->replaces, "Replace files that are there");
    if (!kind.send)
        return;

    const auto sent = std::make_shared<TransferOptions>();
    CLI::App* const put =
        line.addCommand(command,
                        kind.send,
                        "Copy files and folders to a " + noun,
                        [&line, kind, sent] { return sendAll(line, kind, *sent); });
    addArguments(*put, "FILE", sent->paths, "Files and folders")->required();
    addArgument(
        *put, "--to", sent->to, "The " + noun + " and a folder in it, which is made if need be")
        ->required()
        ->type_name("NAME/FOLDER");
    put->add_flag("--replace", sent->replaces, "Replace files that are there");
    put->add_flag("--unsorted", sent->isUnsorted, "Leave its rules for music and videos aside");
}
} // namespace qo::cli
