#pragma once

#include "cli/CommandLine.h"

#include <QoKernel/Kernel.h>

namespace qo::host
{
class Session;
} // namespace qo::host

namespace qo::cli
{
/// Looks through the devices that were adopted and are connected, into the database or, unless "",
/// into that of a trial, and says what it found. What is away is left as it is. The last deed of a
/// session: the own collection is not loaded any more afterwards. Partly when a device failed.
host::ExitCode
scanDevices(CommandLine& line, host::Session& session, const CString& database, bool isDeep);
} // namespace qo::cli
