#include "cli/KernelCommand.h"
#include "cli/admin/DatabaseCommand.h"
#include "cli/files/FileRecord.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/Snapshots.h"

#include <memory>

namespace qo::cli
{
namespace
{
using host::DatabaseGuard;
using host::MigrationOptions;
using host::MigrationReport;
using host::Session;
using host::Snapshots;

void putMigration(CommandLine& line,
                  const CString& database,
                  const std::optional<MigrationReport>& report)
{
    const std::string current = toUtf8(CString(CQoCollDb::currentVersion()));
    if (!line.json)
        return line.note(report ? report->sentence(database)
                                : "the database " + host::shownPath(database) + " has version [" +
                                      current + "] already");
    Json object;
    putPath(object, "database", database);
    object["from"] = report ? toUtf8(report->from) : current;
    object["to"] = current;
    object["migrated"] = report.has_value();
    if (report)
    {
        object["rows"] = report->rows;
        object["leftBehind"] = report->leftBehind;
        object["newIds"] = report->newIds;
        putPath(object, "kept", report->kept);
    }
    line.out.line(dump(object));
}

ExitCode migrate(CommandLine& line, bool mayDowngrade)
{
    const auto session = openKernel(line, KernelUse::change);
    session->kernel().run(
        [&]
        {
            const CString database = existingDatabase();
            MigrationOptions options = session->migrationOptions();
            options.mayDowngrade = mayDowngrade;
            const DatabaseGuard guard(database);
            const auto report = line.dryRun ? guard.tryMigration(options) : guard.migrate(options);
            // A file without a version, or one that is locked, is not of this version either.
            if (!report && !guard.check())
                throw HostError(ExitCode::failed,
                                host::shownPath(database) + " is no collection database");
            putMigration(line, database, report);
        });
    return ExitCode::done;
}

/// Without a name it is a snapshot, of which some are kept; with one a copy that stays.
ExitCode backUp(CommandLine& line, const std::string& typed)
{
    const CString target = typed.empty() ? CString() : fromSystemPath(host::absolutePath(typed));
    if (!typed.empty())
        prepareOutput(line, host::absolutePath(typed));
    const auto session = openKernel(line, KernelUse::change);
    session->kernel().run(
        [&]
        {
            const CString database = existingDatabase();
            // Asked first, as this does not wait for long where another program holds the database
            // for itself; a damaged one is copied as well.
            (void)DatabaseGuard(database).findDamage();
            CString copy = target;
            if (!line.dryRun && typed.empty())
                copy = Snapshots(database).take();
            else if (!line.dryRun)
                Snapshots(database).copyTo(target);
            if (!line.json)
                return line.note(
                    (line.dryRun ? "would copy the database to " : "the database is copied to ") +
                    (copy.IsEmpty() ? std::string("a new snapshot") : host::shownPath(copy)));
            Json object;
            putPath(object, "database", database);
            putPath(object, "copy", copy);
            line.out.line(dump(object));
        });
    return ExitCode::done;
}
} // namespace

void addDatabaseMigrateCommands(CommandLine& line, CLI::App& group)
{
    auto mayDowngrade = std::make_shared<bool>(false);
    CLI::App* const migration =
        line.addCommand(group,
                        "migrate",
                        "Carry a database of another version over to this one",
                        [&line, mayDowngrade] { return migrate(line, *mayDowngrade); });
    migration->add_flag("--downgrade",
                        *mayDowngrade,
                        "Also that of a newer program, without what this one does not know");
    auto file = std::make_shared<std::string>();
    CLI::App* const backup = line.addCommand(group,
                                             "backup",
                                             "Copy the database to a file, or to a new snapshot",
                                             [&line, file] { return backUp(line, *file); });
    addArgument(*backup, "FILE", *file, "Where to; a new snapshot without it");
}
} // namespace qo::cli
