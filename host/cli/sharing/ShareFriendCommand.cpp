#include "cli/KernelCommand.h"
#include "cli/sharing/ShareCommand.h"
#include "cli/sharing/SharePlace.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "plugins/base/PluginFailure.h"
#include "share/ShareTransport.h"

#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::Share;
using host::Shares;

struct FriendOptions
{
    std::string name;
    std::string link;
};

ExitCode accept(CommandLine& line, const FriendOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    const Share share = session->kernel().run(
        [&]
        {
            if (!line.dryRun)
                session->prepareDatabase(host::Session::databasePath());
            return Shares().accept(typedLink(options.link), options.name, line.dryRun);
        });
    const std::string peer = oneLine(share.peer);
    if (line.json)
        line.out.line(host::dump({{"name", toUtf8(share.peer)},
                                  {"address", share.address.place()},
                                  {"text", share.address.text}}));
    else
        line.note((line.dryRun ? "would accept the share of " : "accepted the share of ") + peer +
                  " at " + share.address.place() + "; \"qo share scan " + peer +
                  "\" fetches the list of its files");
    return ExitCode::done;
}

ExitCode forget(CommandLine& line, const FriendOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    const Share share = session->kernel().run(
        [&]
        {
            Shares shares;
            Share found = shares.need(options.name, false);
            if (!line.dryRun)
                shares.remove(found);
            return found;
        });
    if (line.json)
        line.out.line(host::dump({{"name", toUtf8(share.peer)}}));
    else
        line.note((line.dryRun ? "would forget the share of " : "forgot the share of ") +
                  oneLine(share.peer) + "; what was fetched stays");
    return ExitCode::done;
}

[[noreturn]] void failScan(const Share& share, const std::string& cause)
{
    throw HostError(ExitCode::failed,
                    "the list of " + oneLine(share.peer) + " cannot be had: " +
                        (cause.empty() ? std::string("\"qo log\" has the cause") : cause));
}

/// Fetches the friend's list and stores what changed in it.
ExitCode scan(CommandLine& line, const FriendOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    return runShown(
        line,
        *session,
        [&](host::ProgressReporter& progress)
        {
            if (!line.dryRun)
                session->prepareDatabase(host::Session::databasePath());
            Shares shares;
            const Share share = shares.need(options.name, false);
            const host::ShareTransportInUse transport({share});
            host::takePluginFailure();
            CQoCollection& collection = CQoCollection::m_foreignCollection;
            CQoCollection::OpResultInfo result;
            CStringArray roots;
            roots.Add(share.root().toString());
            const CString database = host::Session::databasePath();
            // A dry run reads the stored list and fetches the new one without keeping either.
            QoFileDbItemArray offered;
            bool isLoaded = true;
            if (line.dryRun)
                CQoShareManager::getFilesFromShare(share.root(), &progress, offered);
            else
                isLoaded = collection.load(database,
                                           share.collection(),
                                           roots,
                                           CQoPathsInfoMap(),
                                           true,
                                           &progress,
                                           &result);
            if (progress.wasStopped())
                throw HostError(ExitCode::interrupted, "interrupted; the former list stays");
            const std::string cause = host::plainWords(host::takePluginFailure());
            if (result.m_unsupportedExtract)
                failScan(share, "it was written by a newer version of the program");
            if (result.m_extractFailed || !isLoaded || !cause.empty())
                failScan(share, cause);
            const int files =
                line.dryRun ? static_cast<int>(offered.GetSize()) : collection.getFileCount();
            if (!line.dryRun)
                shares.setFiles(share, files);
            if (line.json)
                line.out.line(host::dump({{"name", toUtf8(share.peer)},
                                          {"files", files},
                                          {"added", result.m_inserted},
                                          {"changed", result.m_updated},
                                          {"gone", result.m_deleted}}));
            else
                line.note(oneLine(share.peer) + " offers " + countText(files, "file") +
                          (line.dryRun ? std::string()
                                       : ": " + std::to_string(result.m_inserted) + " new, " +
                                             std::to_string(result.m_updated) + " changed, " +
                                             std::to_string(result.m_deleted) + " gone"));
            return ExitCode::done;
        });
}

std::unique_ptr<FarPlace> openShare(host::Session& session, const std::string& typed, std::string*)
{
    (void)session.checkDatabase();
    return openSharePlace(Shares().need(typed, false));
}
} // namespace

void addFriendsShares(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<FriendOptions>();
    CLI::App* const accepting =
        line.addCommand(command,
                        "accept",
                        "Take a friend's invitation",
                        [&line, options] { return accept(line, *options); });
    addArgument(*accepting, "LINK", options->link, "The link, or a file whose first line it is")
        ->required();
    addArgument(*accepting, "--as", options->name, "Another name for the friend than his own")
        ->type_name("NAME");
    CLI::App* const forgetting =
        line.addCommand(command,
                        "forget",
                        "Forget a friend's share",
                        [&line, options] { return forget(line, *options); });
    CLI::App* const scanning = line.addCommand(command,
                                               "scan",
                                               "Fetch the list of a friend's files",
                                               [&line, options] { return scan(line, *options); });
    for (CLI::App* const each : {forgetting, scanning})
        addArgument(*each, "FRIEND", options->name, "The friend's name")->required();
    const PlaceKind kind = {"friend's share", "get", nullptr, openShare};
    addFarBrowse(line, command, kind);
    addFarTransfers(line, command, kind);
}
} // namespace qo::cli
