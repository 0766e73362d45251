#pragma once

#include "cli/CommandLine.h"
#include "core/session/Session.h"

namespace qo::cli
{
/// Loads the collection without a scan, shows which of its files seem to have moved while nobody
/// looked, and with the user's consent gives their records the new paths, so that ids and all that
/// hangs on them stay. Where it is unclear which file is whose, the scan will take the record away:
/// that needs the user's consent, too. A scan then finds the rest, which has to come with the new
/// root folders given here. Returns how many moved. With --dry-run nothing is changed.
int settleMoves(CommandLine& line, host::Session& session, const CStringArray& newRoots);

/// Remembers what the files of the loaded collection begin with, by which later moves are told.
void rememberHeads(CommandLine& line, host::Session& session);
} // namespace qo::cli
