#pragma once

#include "cli/CommandLine.h"
#include "core/share/Shares.h"

namespace qo::cli
{
/// "invite" and "revoke".
void addShareInvitations(CommandLine& line, CLI::App& command);
/// "serve".
void addShareServing(CommandLine& line, CLI::App& command);
/// "accept", "forget", "scan", "browse" and "get".
void addFriendsShares(CommandLine& line, CLI::App& command);

/// A link as it was typed, or the first line of a file of that name. On the kernel's thread.
CString typedLink(const std::string& typed);
} // namespace qo::cli
