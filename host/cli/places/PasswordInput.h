#pragma once

#include "core/base/Secret.h"

#include <string>

namespace qo::cli
{
/// Asks for a password on the terminal, without showing it, or takes the first line of standard
/// input where that is no terminal. Throws HostError when there is none.
host::Secret readPassword(const std::string& question);
} // namespace qo::cli
