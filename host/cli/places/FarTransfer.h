#pragma once

#include "cli/places/FarPlace.h"
#include "cli/places/FarReport.h"
#include "core/session/ProgressReporter.h"

#include <functional>
#include <string>
#include <vector>

namespace qo::cli
{
/// One file with its two ends.
struct Transfer
{
    CQoCollPath far;
    CString local;
    std::int64_t size;
};

/// What a command fetches with, and where to.
struct FetchWork
{
    CommandLine& line;
    host::Session& session;
    const CString folder;
    const bool replaces;
    FarReport& report;
    host::ProgressReporter& progress;
};

/// Opens the kernel to fetch into a folder as it was typed, and runs the function on the kernel's
/// thread.
ExitCode fetchInto(CommandLine& line,
                   const std::string& typed,
                   bool replaces,
                   const std::function<void(const FetchWork& work)>& run);

/// Fetches files into a folder or below it, each under a passing name until all of it is there. A
/// file that is there already stays unless it is replaced, and of two with one name one alone is
/// fetched. Throws HostError where there is no room for all, and when the user interrupts.
void fetchTransfers(const FetchWork& work, FarPlace& place, const std::vector<Transfer>& fetches);
} // namespace qo::cli
