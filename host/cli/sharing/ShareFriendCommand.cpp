#include "cli/KernelCommand.h"
#include "cli/places/FarReport.h"
#include "cli/places/FarScanCommand.h"
#include "cli/sharing/ShareCommand.h"
#include "cli/sharing/SharePlace.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "plugins/base/PluginFailure.h"

#include <optional>

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
    tellOf(line,
           toUtf8(share.peer),
           (line.dryRun ? "would forget the share of " : "forgot the share of ") +
               oneLine(share.peer) + "; what was fetched stays");
    return ExitCode::done;
}

/// Fetches the friend's list and stores what changed in it.
ExitCode scan(CommandLine& line, const FriendOptions& options)
{
    std::optional<Share> share;
    return scanPlace(line,
                     {"share",
                      [&](host::Session&)
                      {
                          share = Shares().need(options.name, false);
                          return share->farCollection();
                      },
                      [] { return host::plainWords(host::takePluginFailure()); },
                      [&](const host::FarScanReport& report)
                      { Shares().setFiles(*share, report.files); }});
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
