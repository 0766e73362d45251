#pragma once

#include "cli/CommandLine.h"

namespace qo::cli
{
/// The commands about plans that are made.
void addReorgRunCommands(CommandLine& line, CLI::App& group);
} // namespace qo::cli
