#pragma once

#include "cli/KernelCommand.h"

namespace qo::cli
{
// Commands of "qo plugin" that stand in files of their own.
void addPluginBrowse(CommandLine& line, CLI::App& command);
void addPluginTransfers(CommandLine& line, CLI::App& command);
} // namespace qo::cli
