#pragma once

#include "cli/CommandLine.h"

#include <QoKernel/Kernel.h>

namespace qo::cli
{
/// The path of the collection's database, which is a file that can be looked at; nothing makes,
/// mends or replaces it. Throws HostError. On the kernel's thread.
CString existingDatabase();
/// "repair", "restore" and "snapshots" below the command "db".
void addDatabaseRepairCommands(CommandLine& line, CLI::App& group);
/// "migrate" and "backup".
void addDatabaseMigrateCommands(CommandLine& line, CLI::App& group);
} // namespace qo::cli
