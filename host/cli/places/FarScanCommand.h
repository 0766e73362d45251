#pragma once

#include "cli/CommandLine.h"
#include "core/load/FarScan.h"

#include <functional>

namespace qo::cli
{
/// Says what a scan of a place found. kind is the key of the name in JSON, such as "device".
void printFarScan(CommandLine& line,
                  const char* kind,
                  const std::string& name,
                  const host::FarScanReport& report);

/// How the places of one kind are scanned by a command of theirs.
struct FarScanKind
{
    const char* name; ///< as above
    /// The collection; on the kernel's thread. Throws HostError when there is none.
    std::function<host::FarCollection(host::Session& session)> collection;
    /// Why the place could not be listed, in its own words; "" when it has none.
    std::function<std::string()> takeCause;
    /// What is left to do after a scan; may be empty.
    std::function<void(const host::FarScanReport& report)> finish;
    bool isDeep = false; ///< whether files are read again that seem to be as they were
};

/// Scans the place; a dry run into a copy of the database.
ExitCode scanPlace(CommandLine& line, const FarScanKind& kind);
} // namespace qo::cli
