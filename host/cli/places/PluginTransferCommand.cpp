#include "cli/places/FarPlace.h"
#include "cli/places/FarReport.h"
#include "cli/places/PluginCommand.h"
#include "cli/places/TransferProgress.h"
#include "cli/shown/Text.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Collection.h>

#include <algorithm>
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
};

/// One file with its two ends.
struct Transfer
{
    CQoCollPath far;
    CString local;
    std::int64_t size;
};

FarDeed deedOf(const Transfer& transfer)
{
    return {shownPlace(transfer.far), host::shownPath(transfer.local), transfer.size};
}

std::int64_t sizeOfAll(const std::vector<Transfer>& transfers)
{
    std::int64_t sum = 0;
    for (const Transfer& each : transfers)
        sum += std::max<std::int64_t>(each.size, 0);
    return sum;
}

/// Carries out each of them with progress. The function gives the cause of a failure.
template <class Function>
ExitCode runTransfers(CommandLine& line,
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
        progress.beginFile(toUtf8(farNameOf(each.far.getLast())));
        FarDeed deed = deedOf(each);
        deed.cause = run(each, progress);
        if (!line.dryRun && progress.isCanceled() && !deed.cause.empty())
            throw report.interrupted();
        report.add(deed);
        progress.endFile(each.size);
    }
    return report.exitCode();
}

/// What is fetched for a path: a file, or all files of a folder, which keep their places in it.
void addFetches(const CQoCollPath& path,
                const CString& folder,
                ProgressReporter& progress,
                std::vector<Transfer>& fetches)
{
    const auto entry = needEntry(path, progress);
    const CString base =
        path.isEmpty() ? folder : combinePath(folder, safeLocalName(farNameOf(path.getLast())));
    if (!entry->IsFolder())
    {
        fetches.push_back({path, base, entry->GetSize()});
        return;
    }
    QoFileDbItemArray files;
    if (!listBelow(CQoPluginManager::PI_Files, path, entry, allLevels, progress, files))
    {
        stopIfCancelled(progress);
        failFar("not all of " + shownPlace(path) + " can be listed, so nothing was fetched");
    }
    for (const QoFileDbItemPtr& file : files)
    {
        const CQoCollPath far(file->path);
        CString local = base;
        for (const CString& component : far.relativeTo(path))
            local = combinePath(local, safeLocalName(farNameOf(component)));
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
std::string fetchFile(const Transfer& fetch, bool replaces, IQoProgress& progress)
{
    const CString folder = fromSystemPath(host::parentOf(toSystemPath(fetch.local)));
    if (const int error = fileSystem().makeDirectories(folder))
        return localFailure(folder, error);
    const CString part = combinePath(folder, partName());
    if (!CQoPluginManager::downloadFile(fetch.far, part, true, &progress))
        return pluginCause();
    NameInfo info;
    int error = fileSystem().look(part, info);
    std::string cause;
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

void needRoom(const CString& folder, std::int64_t bytes)
{
    std::uint64_t room = 0;
    if (fileSystem().room(folder, room) == 0 && static_cast<std::uint64_t>(bytes) > room)
        throw HostError(ExitCode::failed,
                        "there is no room for " + sizeText(bytes) + " in " +
                            host::shownPath(folder) + ": " +
                            sizeText(static_cast<std::int64_t>(room)) + " are left");
}

ExitCode fetchAll(CommandLine& line, const TransferOptions& options)
{
    const CString folder = fromSystemPath(host::existingFolder(options.to));
    needWritable(folder);
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "fetched", "would be fetched");
    return runShown(line,
                    *session,
                    [&](ProgressReporter& progress)
                    {
                        const CString id = needFolderPlugin(options.name);
                        std::vector<Transfer> fetches;
                        for (const std::string& path : options.paths)
                            addFetches(farPath(id, path), folder, progress, fetches);
                        needRoom(folder, sizeOfAll(fetches));
                        std::set<CString> taken;
                        const auto fetch = [&](const Transfer& each, IQoProgress& shown)
                        {
                            std::string cause = obstacle(each, options.replaces);
                            if (cause.empty() && !taken.insert(each.local).second)
                                cause = "another file of this call is called " +
                                        host::shownPath(each.local);
                            return line.dryRun || !cause.empty()
                                       ? cause
                                       : fetchFile(each, options.replaces, shown);
                        };
                        return runTransfers(line, fetches, report, progress, fetch);
                    });
}

/// The typed files as they will be called in the folder. Throws HostError for what is no file.
std::vector<Transfer> sendings(const TransferOptions& options, const CQoCollPath& folder)
{
    std::vector<Transfer> list;
    for (const std::string& typed : options.paths)
    {
        const std::string file = host::absolutePath(typed);
        const CString local = fromSystemPath(file);
        FileInfo info;
        if (const int error = fileSystem().info(local, Spelling::exact, info))
            throw HostError(ExitCode::notFound, file + ": " + host::errorWords(error));
        if (info.kind != FileKind::regular)
            throw HostError(ExitCode::usage, file + " is no file; folders are sent file by file");
        const std::string name = file.substr(file.rfind('/') + 1);
        list.push_back({folder.child(farComponent(fromUtf8(name))), local, info.size});
    }
    return list;
}

/// Whether an entry of exactly that name is there; size gets its size.
bool isThere(const CQoCollPath& path, IQoProgress& progress, std::int64_t& size)
{
    boost::shared_ptr<IPhysicalResult> entry;
    if (!CQoPluginManager::getPathResultFromPhysicalPlugin(path, &progress, entry) ||
        farComponent(entry->GetName()) != path.getLast())
        return false;
    size = entry->GetSize();
    return true;
}

std::string
sendFile(const CommandLine& line, const Transfer& sending, bool replaces, IQoProgress& progress)
{
    std::int64_t size = 0;
    if (!replaces && isThere(sending.far, progress, size))
        return "it is there already; --replace sends it again";
    if (line.dryRun)
        return "";
    CQoCollPath target = sending.far;
    if (!CQoPluginManager::uploadFile(sending.local, target, sending.size, replaces, &progress))
        return pluginCause();
    if (!isThere(target, progress, size))
        return "it was sent, but the service does not list it";
    if (size != sending.size)
        return "the service has " + std::to_string(size) + " bytes of it instead of " +
               std::to_string(sending.size);
    return "";
}

ExitCode sendAll(CommandLine& line, const TransferOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    FarReport report(line, "sent", "would be sent");
    return runShown(
        line,
        *session,
        [&](ProgressReporter& progress)
        {
            const CQoCollPath folder = farPlace(options.to);
            if (!CQoPluginManager::canUploadToPlugin(folder.getDevice()))
                throw HostError(ExitCode::failed, toUtf8(folder.getDevice()) + " takes no files");
            const std::vector<Transfer> files = sendings(options, folder);
            return runTransfers(line,
                                files,
                                report,
                                progress,
                                [&](const Transfer& each, IQoProgress& shown)
                                { return sendFile(line, each, options.replaces, shown); });
        });
}
} // namespace

void addPluginTransfers(CommandLine& line, CLI::App& command)
{
    const auto fetched = std::make_shared<TransferOptions>();
    CLI::App* const get = line.addCommand(command,
                                          "get",
                                          "Copy files and folders from a service",
                                          [&line, fetched] { return fetchAll(line, *fetched); });
    addArgument(*get, "NAME", fetched->name, "The service")->required();
    addArguments(*get, "PATH", fetched->paths, "Files and folders in it")->required();
    addArgument(*get, "--to", fetched->to, "The folder that the copies go to")
        ->required()
        ->type_name("DIR");

    const auto sent = std::make_shared<TransferOptions>();
    CLI::App* const put = line.addCommand(
        command, "put", "Copy files to a service", [&line, sent] { return sendAll(line, *sent); });
    addArguments(*put, "FILE", sent->paths, "The files")->required();
    addArgument(*put, "--to", sent->to, "The service and a folder in it, which is made if need be")
        ->required()
        ->type_name("NAME/FOLDER");
    get->add_flag("--replace", fetched->replaces, "Replace files that are there");
    put->add_flag("--replace", sent->replaces, "Replace files that are there");
}
} // namespace qo::cli
