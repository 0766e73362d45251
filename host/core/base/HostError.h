#pragma once

#include <stdexcept>
#include <string>

namespace qo::host
{
/// How a command ends; the numbers are what the shell sees.
enum class ExitCode : int
{
    done = 0,
    failed = 1,
    usage = 2,
    away = 3, ///< a root folder is not there, or no longer in the settings
    notFound = 4,
    busy = 5,
    partly = 6,
    refused = 7, ///< asks for a confirmation that was not given
    interrupted = 130
};

/// Stands between sentences where a failure or a remark has several; each is shown on a line of its
/// own. A line break would not do, since names of files can have one.
constexpr char sentenceBreak = '\x1e';

/// A failure with one clear sentence for the user: what could not be done, the path and the cause.
class HostError : public std::runtime_error
{
public:
    HostError(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code)
    {
    }
    ExitCode code() const noexcept { return m_code; }

private:
    ExitCode m_code;
};
} // namespace qo::host
