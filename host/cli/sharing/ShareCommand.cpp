#include "cli/sharing/ShareCommand.h"

#include "cli/KernelCommand.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"

#include <QoKernel/Sharing.h>

#include <cerrno>

namespace qo::cli
{
namespace
{
ExitCode check(CommandLine& line, const std::string& typed)
{
    const auto session = openKernel(line, KernelUse::look);
    const host::Share share =
        session->kernel().run([&] { return host::Share::ofLink(typedLink(typed)); });
    const host::PeerAddress& address = share.address;
    const std::string from = harmless(toUtf8(share.peer));
    if (line.json)
        line.out.line(
            host::dump({{"name", toUtf8(share.peer)},
                        {"id", toUtf8(share.shareId)},
                        {"address", address.host.empty() ? Json() : Json(address.place())},
                        {"text", address.text}}));
    else if (address.host.empty())
        line.out.line("a valid invitation from " + from +
                      ", which does not say where it is served");
    else
        line.out.line("a valid invitation from " + from + ", served at " + address.place() +
                      (address.text.empty() ? "" : ": " + harmless(address.text)));
    return ExitCode::done;
}

ExitCode listShares(CommandLine& line, bool isLong)
{
    const auto session = openKernel(line, KernelUse::look);
    Listing listing(line,
                    isLong,
                    {"offered", "name", "files", "address", "query", "link"},
                    {Listing::Column::text,
                     Listing::Column::name,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::text});
    const host::Shares shares = session->kernel().run([] { return host::Shares(); });
    for (const host::Share& share : shares.all())
    {
        const std::string query = share.query ? toUtf8(*share.query) : std::string();
        if (listing.isForPeople())
        {
            const std::string content = !share.query    ? "nothing"
                                        : query.empty() ? "all music and videos"
                                                        : query;
            listing.addCells({share.isOwn ? "to" : "from",
                              oneLine(share.peer),
                              share.isOwn ? content : countText(share.files, "file"),
                              share.address.host.empty() ? "" : share.address.place()});
            continue;
        }
        Json record;
        record["offered"] = share.isOwn;
        record["name"] = toUtf8(share.peer);
        record["files"] = share.isOwn ? Json() : Json(share.files);
        record["address"] = share.address.host.empty() ? Json() : Json(share.address.place());
        record["query"] = share.isOwn && share.query ? Json(query) : Json();
        record["link"] = toUtf8(share.link);
        listing.addRecord(record);
    }
    listing.finish();
    return ExitCode::done;
}
} // namespace

CString typedLink(const std::string& typed)
{
    const CString link = fromUtf8(typed);
    const CString start = link.Left(CShareInvitation::INVITE_LINK.GetLength());
    const CString path = fromSystemPath(host::absolutePath(typed));
    if (start.CompareNoCase(CShareInvitation::INVITE_LINK) == 0)
        return link;
    FileInfo info;
    if (const int error = fileSystem().info(path, Spelling::exact, info))
        throw HostError(error == ENOENT ? ExitCode::notFound : ExitCode::failed,
                        typed + " is no invitation, and as a file: " + host::errorWords(error));
    return CShareInvitation::GetInvitationFromFile(path).Trim();
}

void setUpShare(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto isLong = std::make_shared<bool>(false);
    CLI::App* const ls =
        command.add_subcommand("ls", "List what is offered to friends, and what friends offer");
    line.setListAction(*ls, [&line, isLong] { return listShares(line, *isLong); });
    ls->add_flag("-l,--long", *isLong, "All values, with tabs between them");
    addShareInvitations(line, command);
    addShareServing(line, command);
    addFriendsShares(line, command);

    const auto typed = std::make_shared<std::string>();
    CLI::App* const checking = line.addCommand(command,
                                               "check",
                                               "Say whether a link is a valid invitation",
                                               [&line, typed] { return check(line, *typed); });
    addArgument(*checking, "LINK", *typed, "The link, or a file whose first line it is")
        ->required();
}
} // namespace qo::cli
