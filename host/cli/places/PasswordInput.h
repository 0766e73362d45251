#pragma once

#include <string>

namespace qo::cli
{
/// Asks for a password on the terminal, without showing it, or takes the first line of standard
/// input where that is no terminal. Throws HostError when there is none.
std::string readPassword(const std::string& question);

/// Overwrites a text that nobody needs any more.
void wipe(std::string& secret);
} // namespace qo::cli
