#pragma once

#include "cli/CommandLine.h"
#include "core/session/Session.h"

namespace qo::cli
{
/// Loads the collection without a scan and shows which of its files seem to have been moved without
/// qo. If the user agrees, their records get the new paths, so that ids and everything that belongs
/// to them stay. Records of which it is unclear where their file went will be removed by the scan
/// that follows; the user is asked about that, too. The scan must be given the same new root
/// folders. Returns how many files moved. With --dry-run nothing is changed.
int settleMoves(CommandLine& line, host::Session& session, const CStringArray& newRoots);

/// Stores the heads of the files of the loaded collection, by which later moves are recognised.
void rememberHeads(CommandLine& line, host::Session& session);
} // namespace qo::cli
