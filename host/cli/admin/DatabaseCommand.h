#pragma once

#include "cli/CommandLine.h"

namespace qo::cli
{
/// "repair", "restore" and "snapshots" below the command "db".
void addDatabaseRepairCommands(CommandLine& line, CLI::App& group);
/// "migrate" and "backup".
void addDatabaseMigrateCommands(CommandLine& line, CLI::App& group);
} // namespace qo::cli
