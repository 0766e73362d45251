#include "cli/KernelCommand.h"
#include "cli/admin/DatabaseCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/DatabaseQuery.h"
#include "core/base/HostFiles.h"
#include "core/base/ScratchDatabase.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/DatabaseRepair.h"
#include "core/load/DatabaseSwap.h"
#include "core/load/Snapshots.h"

#include <algorithm>
#include <memory>

namespace qo::cli
{
namespace
{
using host::DatabaseGuard;
using host::DatabaseRepair;
using host::DatabaseSwap;
using host::Session;
using host::Snapshots;

void putReport(CommandLine& line, const DatabaseRepair::Report& report, const CString& kept)
{
    if (line.json)
    {
        Json object;
        for (const host::Salvage::Table& table : report.tables)
            object["rows"][table.name] = table.rows;
        object["lostIds"] = report.lostIds;
        object["newIds"] = report.newIds;
        object["complete"] = report.isCertain && report.lostIds.empty();
        putPath(object, "kept", kept.IsEmpty() ? std::string() : host::shownPath(kept));
        return line.out.line(dump(object));
    }
    for (const host::Salvage::Table& table : report.tables)
        line.out.line(padded(table.name, 20) + std::to_string(table.rows));
    if (!report.lostIds.empty())
        line.out.line(
            "lost: " + countText(static_cast<std::int64_t>(report.lostIds.size()), "file") + ", " +
            host::someOf(report.lostIds));
    if (!report.isCertain)
        line.out.line("a table could not be read as a whole: more rows may be lost than are named");
    if (report.newIds > 0)
        line.out.line(std::to_string(report.newIds) + " rows have new ids");
}

ExitCode codeOf(const DatabaseRepair::Report& report)
{
    return report.isCertain && report.lostIds.empty() ? ExitCode::done : ExitCode::partly;
}

ExitCode repairInPlace(CommandLine& line, const CString& database)
{
    const DatabaseSwap swap(database);
    swap.dropDraft();
    CString kept;
    DatabaseRepair::Report report;
    try
    {
        report = DatabaseRepair(database).copyTo(swap.draft());
        if (report.rows() == 0)
            throw HostError(ExitCode::failed,
                            "no row of " + host::shownPath(database) +
                                " can be read, so it was left alone: \"qo db restore\" goes back "
                                "to a snapshot");
        kept = swap.replace(u"damaged");
    }
    catch (...)
    {
        swap.dropDraft();
        host::KernelThread::rethrowAsHostError(database);
    }
    putReport(line, report, kept);
    line.note("the damaged database is kept as " + host::shownPath(kept));
    return codeOf(report);
}

void reportSound(CommandLine& line, const CString& database)
{
    if (!line.json)
        return line.note("the database " + host::shownPath(database) + " is sound");
    Json object;
    putPath(object, "database", database);
    object["sound"] = true;
    line.out.line(dump(object));
}

ExitCode repair(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::hold);
    return session->kernel().run(
        [&line]
        {
            const CString database = existingDatabase();
            if (!line.dryRun)
                DatabaseSwap(database).finish();
            if (DatabaseGuard(database).findDamage(true).empty())
                return reportSound(line, database), ExitCode::done;
            if (!line.dryRun)
                return repairInPlace(line, database);
            const host::ScratchDatabase scratch(u"trial-repair");
            const DatabaseRepair::Report report = DatabaseRepair(database).copyTo(scratch.path());
            putReport(line, report, {});
            return codeOf(report);
        });
}

void reportRestored(CommandLine& line,
                    const CString& snapshot,
                    std::int64_t files,
                    const CString& kept)
{
    Json object;
    putPath(object, "snapshot", snapshot);
    object["files"] = files;
    putPath(object, "kept", kept);
    line.out.line(dump(object));
}

std::int64_t fileCount(const CString& snapshot)
{
    const auto counts = DatabaseGuard::countRows(snapshot);
    const auto found = counts.find("FILE_T");
    return found == counts.end() ? 0 : found->second;
}

ExitCode listSnapshots(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&line]
        {
            for (const CString& path : Snapshots(Session::databasePath()).list())
            {
                FileInfo info;
                (void)fileSystem().info(path, Spelling::exact, info);
                const std::string damage = DatabaseGuard(path).findDamage();
                const std::int64_t files = damage.empty() ? fileCount(path) : 0;
                if (line.json)
                {
                    Json object;
                    putPath(object, "path", path);
                    object["name"] = toUtf8(CQoCollPath(path).getLast());
                    object["taken"] = isoTime(info.modified);
                    object["size"] = info.size;
                    object["files"] = files;
                    object["damage"] = damage.empty() ? Json() : Json(damage);
                    line.out.line(dump(object));
                    continue;
                }
                line.out.line(padded(toUtf8(CQoCollPath(path).getLast()), 24) + "  " +
                              localTimeText(info.modified) + "  " +
                              (damage.empty() ? countText(files, "file") : "damaged") + ", " +
                              sizeText(info.size));
            }
        });
    return ExitCode::done;
}

/// The snapshot of that name or path; the newest one when none is named.
CString findSnapshot(const std::string& typed)
{
    const CStringArray all = Snapshots(Session::databasePath()).list();
    if (typed.empty() && all.IsEmpty())
        throw HostError(ExitCode::notFound, "there is no snapshot to go back to");
    if (typed.empty())
        return all[0];
    for (const CString& path : all)
    {
        if (toUtf8(CQoCollPath(path).getLast()) == typed)
            return path;
    }
    const CString path = fromSystemPath(host::absolutePath(typed));
    FileInfo info;
    if (fileSystem().info(path, Spelling::exact, info) != 0 || info.kind != FileKind::regular)
        throw HostError(ExitCode::notFound,
                        "there is no snapshot " + typed + "; \"qo db snapshots\" lists them");
    return path;
}

ExitCode restore(CommandLine& line, const std::string& typed)
{
    const auto session = openKernel(line, KernelUse::hold);
    return session->kernel().run(
        [&]
        {
            const CString database = Session::databasePath();
            const CString snapshot = findSnapshot(typed);
            const std::string damage = DatabaseGuard(snapshot).findDamage(true);
            if (!damage.empty())
                throw HostError(ExitCode::failed,
                                host::shownPath(snapshot) +
                                    " cannot be restored, it is damaged: " + damage);
            const std::int64_t files = fileCount(snapshot);
            CString kept;
            if (!line.dryRun)
            {
                const DatabaseSwap swap(database);
                swap.finish();
                swap.draftFrom(snapshot);
                kept = swap.replace(u"replaced");
            }
            if (line.json)
                return reportRestored(line, snapshot, files, kept), ExitCode::done;
            if (line.dryRun)
                return line.note("would go back to " + host::shownPath(snapshot) + " with " +
                                 countText(files, "file")),
                       ExitCode::done;
            line.note("the collection is that of " + host::shownPath(snapshot) + " again, with " +
                      countText(files, "file") +
                      (kept.IsEmpty()
                           ? ""
                           : "; the database as it was is kept as " + host::shownPath(kept)));
            return ExitCode::done;
        });
}
} // namespace

void addDatabaseRepairCommands(CommandLine& line, CLI::App& group)
{
    line.addCommand(group,
                    "repair",
                    "Read what can be read of a damaged database into a new one",
                    [&line] { return repair(line); });
    line.addCommand(group,
                    "snapshots",
                    "List the copies of the database",
                    [&line] { return listSnapshots(line); });
    auto snapshot = std::make_shared<std::string>();
    CLI::App* const command =
        line.addCommand(group,
                        "restore",
                        "Go back to a snapshot; the present database is kept beside it",
                        [&line, snapshot] { return restore(line, *snapshot); });
    addArgument(*command, "SNAPSHOT", *snapshot, "Its name or path; the newest one without it");
}
} // namespace qo::cli
