#include "cli/admin/DatabaseCommand.h"

#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseContent.h"

#include <cerrno>

namespace qo::cli
{
using host::Session;

CString existingDatabase()
{
    const CString path = Session::databasePath();
    FileInfo info;
    const int error = fileSystem().info(path, Spelling::exact, info);
    if (error == ENOENT)
        throw HostError(ExitCode::notFound, "there is no database " + host::shownPath(path));
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the database " + host::shownPath(path) +
                            " cannot be read: " + host::errorWords(error));
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed,
                        "the database " + host::shownPath(path) + " is no regular file");
    return path;
}

namespace
{
ExitCode check(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    return session->kernel().run(
        [&line]
        {
            const CString path = existingDatabase();
            const host::DatabaseFindings found = host::inspectDatabase(path);
            const ExitCode code = found.faults.empty() ? ExitCode::done : ExitCode::failed;
            if (line.json)
            {
                Json object;
                putPath(object, "database", path);
                object["version"] = found.version;
                object["faults"] = found.faults;
                object["rows"] = found.rows;
                line.out.line(dump(object));
                return code;
            }
            line.out.line(harmless(host::shownPath(path)) +
                          (found.faults.empty() ? ": all is well" : ""));
            for (const std::string& fault : found.faults)
                line.out.line("fault: " + fault);
            for (const auto& [table, rows] : found.rows)
                line.out.line(padded(table, 20) + std::to_string(rows));
            return code;
        });
}

ExitCode dumpContent(CommandLine& line)
{
    line.refuseJson();
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&line]
        {
            host::dumpDatabase(existingDatabase(),
                               [&line](const std::string& sql)
                               {
                                   line.out.line(sql);
                                   return !line.out.isClosed();
                               });
        });
    return ExitCode::done;
}
} // namespace

void setUpDatabase(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    line.addCommand(command,
                    "check",
                    "Look for damage and contradictions; changes nothing",
                    [&line] { return check(line); });
    line.addCommand(command,
                    "dump",
                    "The whole content as SQL statements",
                    [&line] { return dumpContent(line); });
    addDatabaseRepairCommands(line, command);
    addDatabaseMigrateCommands(line, command);
}
} // namespace qo::cli
