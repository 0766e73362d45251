#pragma once

#include "cli/CommandLine.h"
#include "core/base/Json.h"

#include <cstdint>
#include <string>

namespace qo::cli
{
/// A file that is fetched, sent or removed, and what became of it.
struct FarDeed
{
    std::string path; ///< in the place, with its name before it
    std::string file; ///< the local one; "" when there is none
    std::int64_t size = 0;
    std::string cause = {}; ///< "" when all went well
};

/// Says what became of something with a name, such as a service: the sentence, or its name in JSON.
void tellOf(CommandLine& line, const std::string& name, const std::string& sentence);

/// Says what became of each file and keeps count.
class FarReport
{
public:
    /// done: what became of a file that went well, such as "fetched".
    FarReport(CommandLine& line, const std::string& done)
        : m_line(line)
        , m_done((line.dryRun ? "would be " : "") + done)
        , m_notDone((line.dryRun ? "would not be " : "not ") + done)
    {
    }

    void add(const FarDeed& deed);
    /// Done when all went well, partly when some did.
    ExitCode exitCode() const;
    /// The exception that ends a run which the user has interrupted.
    HostError interrupted() const;

private:
    CommandLine& m_line;
    const std::string m_done;
    const std::string m_notDone;
    std::int64_t m_succeeded = 0;
    std::int64_t m_failed = 0;
};
} // namespace qo::cli
