#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/places/FarReport.h"
#include "cli/sharing/ShareCommand.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/UserName.h"
#include "core/share/Offers.h"
#include "far/FarEnds.h"
#include "share/ShareKey.h"

#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::PeerAddress;

struct InviteOptions
{
    std::string name;
    std::string ownName;
    std::string query;
    std::string at;
    std::string text;
};

/// A value stands in the link as it is.
void checkLinkValue(const std::string& value, const char* what)
{
    const auto isForbidden = [](char c)
    { return c == '&' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    if (std::ranges::any_of(value, isForbidden))
        throw HostError(ExitCode::usage,
                        std::string("the ") + what +
                            " of an invitation cannot have \"&\" or a control character");
    if (!isUtf8(value))
        throw HostError(ExitCode::usage,
                        std::string("the ") + what + " of an invitation has to be UTF-8");
}

PeerAddress typedAddress(const CommandLine& line, const std::string& typed)
{
    const auto address = PeerAddress::ofPlace(typed.empty() ? "localhost" : typed);
    if (!address)
        throw HostError(ExitCode::usage,
                        "\"" + typed +
                            "\" is no address: write HOST or HOST:PORT, with an IPv6 "
                            "number in brackets");
    if (typed.empty())
        line.note("the link leads to " + address->place() +
                  ", which is this machine alone; --at HOST names it for others");
    return *address;
}

/// How many files the query finds in the collection as it is stored.
std::int64_t offeredFiles(CommandLine& line, host::Session& session, const std::string& query)
{
    loadForReading(line, session);
    return session.kernel().run(
        [&]
        {
            if (!query.empty())
                refuseRelativePaths(query, "what is offered");
            return std::int64_t{host::offeredFiles(fromUtf8(query)).GetSize()};
        });
}

ExitCode invite(CommandLine& line, const InviteOptions& options)
{
    checkLinkValue(options.name, "friend's name");
    checkLinkValue(options.ownName, "name");
    checkLinkValue(options.text, "text");
    if (options.name.empty())
        throw HostError(ExitCode::usage, "say whom you invite");
    PeerAddress address = typedAddress(line, options.at);
    address.text = options.text;
    const auto session = openKernel(line, KernelUse::change);
    const std::int64_t files = offeredFiles(line, *session, options.query);
    const host::Share share = session->kernel().run(
        [&]
        {
            const CString folder = host::Session::folder();
            const std::string own =
                options.ownName.empty() ? toUtf8(host::ownerOf(folder)) : options.ownName;
            host::Shares shares;
            address.keyDigest = host::farEnds().shareKey(folder, line.dryRun).digest();
            return shares.offer({options.name, own, fromUtf8(options.query), address}, line.dryRun);
        });
    if (line.json)
        line.out.line(host::dump({{"link", toUtf8(share.link)},
                                  {"name", options.name},
                                  {"address", address.place()},
                                  {"files", files}}));
    else
        line.out.line(toUtf8(share.link));
    line.note((line.dryRun ? "would offer " : "offers ") + countText(files, "file") + " to " +
              options.name + "; \"qo share serve\" serves them");
    return ExitCode::done;
}

ExitCode revoke(CommandLine& line, const std::string& name)
{
    const auto session = openKernel(line, KernelUse::change);
    const host::Share share = session->kernel().run(
        [&]
        {
            host::Shares shares;
            host::Share found = shares.need(name, true);
            if (!line.dryRun)
                shares.remove(found);
            return found;
        });
    tellOf(line,
           toUtf8(share.peer),
           (line.dryRun ? "nothing would be offered any more to "
                        : "nothing is offered any more to ") +
               oneLine(share.peer));
    return ExitCode::done;
}
} // namespace

void addShareInvitations(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<InviteOptions>();
    CLI::App* const inviting = line.addCommand(command,
                                               "invite",
                                               "Offer files to a friend, and make the link for it",
                                               [&line, options] { return invite(line, *options); });
    addArgument(*inviting, "FRIEND", options->name, "The friend's name, as you know him")
        ->required();
    addArgument(*inviting, "--query", options->query, "Which files, now and later; all without it");
    addArgument(*inviting, "--at", options->at, "Where the friend reaches \"qo share serve\"")
        ->type_name("HOST[:PORT]");
    addArgument(*inviting, "--as", options->ownName, "Your own name, as the friend knows you")
        ->type_name("NAME");
    addArgument(*inviting, "--text", options->text, "What else the friend needs to know")
        ->type_name("TEXT");

    const auto name = std::make_shared<std::string>();
    CLI::App* const revoking = line.addCommand(command,
                                               "revoke",
                                               "End what is offered to a friend",
                                               [&line, name] { return revoke(line, *name); });
    addArgument(*revoking, "FRIEND", *name, "The friend's name")->required();
}
} // namespace qo::cli
