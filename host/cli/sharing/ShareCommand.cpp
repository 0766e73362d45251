#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "core/base/Json.h"

#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
struct InviteOptions
{
    std::string name;
    std::string text;
    std::string type = "1";
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

ExitCode invite(CommandLine& line, const InviteOptions& options)
{
    checkLinkValue(options.name, "name");
    checkLinkValue(options.text, "text");
    if (options.name.empty())
        throw HostError(ExitCode::usage, "say under which name you invite");
    CMapStringToString params;
    params.SetAt(u"t", fromUtf8(options.type));
    params.SetAt(u"u", fromUtf8(options.name));
    params.SetAt(u"w", fromUtf8(options.text));
    params.SetAt(u"v", CShareInvitation::LINK_VERSION);
    const CString id = CShareInvitation::GenerateShareID(params);
    const CString link = CShareInvitation::GenerateShareLink(id, params);
    if (line.json)
        line.out.line(host::dump({{"link", toUtf8(link)}, {"id", toUtf8(id)}}));
    else
        line.out.line(toUtf8(link));
    return ExitCode::done;
}

/// A link as it was typed, or the first line of a file of that name.
CString linkOf(const std::string& typed)
{
    const CString link = fromUtf8(typed);
    const CString start = link.Left(CShareInvitation::INVITE_LINK.GetLength());
    const CString path = fromSystemPath(host::absolutePath(typed));
    if (start.CompareNoCase(CShareInvitation::INVITE_LINK) == 0 || !fileSystem().exists(path))
        return link;
    return CShareInvitation::GetInvitationFromFile(path).Trim();
}

ExitCode check(CommandLine& line, const std::string& typed)
{
    const auto session = openKernel(line, KernelUse::look);
    const CString link = session->kernel().run([&] { return linkOf(typed); });
    CString id;
    CMapStringToString params;
    const int result = CShareInvitation::IsShareInvitation(link);
    if (result == CShareInvitation::SHARE_INVITATION_NEWER_VERSION)
        throw HostError(ExitCode::failed,
                        "the invitation was made by a newer version of the program: update qo to "
                        "take it up");
    if (result != CShareInvitation::SHARE_INVITATION_OK ||
        CShareInvitation::ParseShareLink(link, id, params) != result)
        throw HostError(ExitCode::failed,
                        "this is no valid invitation: it is not whole, or somebody changed it; ask "
                        "for a new one");
    const auto value = [&params](const char16_t* key) { return toUtf8(params[key]); };
    if (line.json)
        line.out.line(host::dump({{"id", toUtf8(id)},
                                  {"type", value(u"t")},
                                  {"name", value(u"u")},
                                  {"text", value(u"w")},
                                  {"version", value(u"v")}}));
    else
        line.out.line("a valid invitation from " + harmless(value(u"u")) +
                      (value(u"w").empty() ? "" : ": " + harmless(value(u"w"))));
    return ExitCode::done;
}
} // namespace

void setUpShare(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto options = std::make_shared<InviteOptions>();
    CLI::App* const inviting = line.addCommand(command,
                                               "invite",
                                               "Make a link that invites a friend",
                                               [&line, options] { return invite(line, *options); });
    addArgument(*inviting, "NAME", options->name, "Your own name, as the friend knows you")
        ->required();
    addArgument(*inviting, "--text", options->text, "What else the friend needs to know")
        ->type_name("TEXT");
    inviting
        ->add_option("--type",
                     options->type,
                     "The type that the link carries: 1, for both directions, without")
        ->check(CLI::IsMember({"0", "1", "2"}));

    const auto typed = std::make_shared<std::string>();
    CLI::App* const checking = line.addCommand(command,
                                               "check",
                                               "Say whether a link is a valid invitation",
                                               [&line, typed] { return check(line, *typed); });
    addArgument(*checking, "LINK", *typed, "The link, or a file whose first line it is")
        ->required();
}
} // namespace qo::cli
