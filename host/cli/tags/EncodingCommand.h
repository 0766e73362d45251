#pragma once

#include "cli/CommandLine.h"

namespace qo::cli
{
/// Makes the command "qo tag encoding" of this one.
void setUpEncoding(CommandLine& line, CLI::App& command);
} // namespace qo::cli
