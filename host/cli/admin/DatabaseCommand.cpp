#include "cli/admin/DatabaseCommand.h"

#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/DatabaseError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/ScratchDatabase.h"

#include <QoKernel/Inside.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace qo::cli
{
namespace
{
using host::ScratchDatabase;
using host::Session;

/// Looks only: neither command makes, mends or replaces the database.
CString existingDatabase()
{
    const CString path = Session::databasePath();
    FileInfo info;
    if (const int error = fileSystem().info(path, Spelling::exact, info))
        throw HostError(error == ENOENT ? ExitCode::notFound : ExitCode::failed,
                        "the database " + host::shownPath(path) +
                            " cannot be read: " + host::errorWords(error));
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed,
                        "the database " + host::shownPath(path) + " is no regular file");
    return path;
}

CStringArray textColumn(CSQLiteDB& db, const CString& sql)
{
    CStringArray values;
    CSQLiteStatement statement = db.CompileStatement(sql);
    CSQLiteQueryResult result = statement.ExecuteQuery();
    for (; !result.Eof(); result.NextRow())
        values.Add(result.GetTextField(0));
    return values;
}

struct Check
{
    const char* name;
    const char16_t* sql; ///< counts what is wrong
};
constexpr Check checks[] = {
    {"files without a path", u"SELECT COUNT(*) FROM FILE_T WHERE FT_PATH IS NULL OR FT_PATH = ''"},
    {"paths that stand twice",
     u"SELECT COUNT(*) - COUNT(DISTINCT FT_COLL_ID || '|' || FT_PATH) FROM FILE_T"},
    {"files without an identity",
     u"SELECT COUNT(*) FROM FILE_T WHERE FT_VELMORA_ID IS NULL OR FT_VELMORA_ID = ''"},
    {"files of unknown collections",
     u"SELECT COUNT(*) FROM FILE_T WHERE FT_COLL_ID NOT IN (SELECT CT_COLL_ID FROM COLL_T)"}};

constexpr const char16_t* allColumns = u"SELECT m.name || '.' || c.name FROM sqlite_master m "
                                       u"JOIN pragma_table_info(m.name) c WHERE "
                                       u"m.type = 'table' ORDER BY 1";

/// The columns of the tables of a database that is made for the purpose.
CStringArray expectedColumns()
{
    const ScratchDatabase scratch(u"check");
    try
    {
        CQoCollDb::CreateDatabaseIfNotValid(scratch.path(), {});
        CSQLiteDB db(scratch.path());
        db.Open();
        return textColumn(db, allColumns);
    }
    catch (...)
    {
        // Not the fault of the one that is checked.
        host::KernelThread::rethrowAsHostError(scratch.path());
    }
}

/// What a load or a save would fail over.
void checkUse(CSQLiteDB& db, std::vector<std::string>& faults)
{
    const CStringArray found = textColumn(db, allColumns);
    for (const CString& column : expectedColumns())
    {
        if (std::find(found.begin(), found.end(), column) == found.end())
            faults.push_back("there is no column " + toUtf8(column));
    }
    QoFileDbItemArray records;
    CQoCollDb(db.path()).getAllFiles(records, true, u"", false);
}

/// Appends a sentence for each thing that is wrong.
void checkContent(CSQLiteDB& db, std::vector<std::string>& faults)
{
    for (const CString& text : textColumn(db, u"PRAGMA integrity_check"))
    {
        if (text != u"ok")
            faults.push_back(toUtf8(text));
    }
    for (const Check& check : checks)
    {
        CSQLiteStatement statement = db.CompileStatement(check.sql);
        const CSQLiteQueryResult result = statement.ExecuteQuery();
        const std::int64_t count = result.GetInt64Field(0);
        if (count > 0)
            faults.push_back(std::string(check.name) + ": " + std::to_string(count));
    }
}

ExitCode check(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    return session->kernel().run(
        [&line]
        {
            const CString path = existingDatabase();
            std::vector<std::string> faults;
            CString version;
            host::DatabaseGuard::TableCounts counts;
            try
            {
                if (!CQoCollDb::readVersion(path, version))
                    faults.push_back("it is no collection database");
                else if (version != CQoCollDb::currentVersion())
                    faults.push_back("it has version [" + toUtf8(version) +
                                     "], this program reads [" +
                                     toUtf8(CString(CQoCollDb::currentVersion())) + "]");
                else
                {
                    CSQLiteDB db(path);
                    db.Open();
                    checkContent(db, faults);
                    checkUse(db, faults);
                    counts = host::DatabaseGuard::countRows(path);
                }
            }
            catch (CSQLiteException* raw)
            {
                const std::unique_ptr<CSQLiteException> exception(raw);
                faults.push_back(host::databaseWords(exception->message()) +
                                 (host::isDiskFull(path) ? "; the disk is full" : ""));
            }
            if (line.json)
            {
                Json object;
                putPath(object, "database", path);
                object["version"] = toUtf8(version);
                object["faults"] = faults;
                object["rows"] = counts;
                line.out.line(dump(object));
                return faults.empty() ? ExitCode::done : ExitCode::failed;
            }
            line.out.line(line.out.foreign(host::shownPath(path)) +
                          (faults.empty() ? ": all is well" : ""));
            for (const std::string& fault : faults)
                line.out.line("fault: " + fault);
            for (const auto& [table, rows] : counts)
                line.out.line(padded(table, 20) + std::to_string(rows));
            return faults.empty() ? ExitCode::done : ExitCode::failed;
        });
}

CString quotedName(CString name)
{
    name.Replace(u"\"", u"\"\"");
    return u"\"" + name + u"\"";
}

/// The statements that make the table and its rows again; quote() gives each value as SQL.
void dumpTable(CommandLine& line, CSQLiteDB& db, const CString& table)
{
    CString values;
    for (const CString& column :
         textColumn(db, u"SELECT name FROM pragma_table_info(" + quotedName(table) + u")"))
        values += (values.IsEmpty() ? CString(u"quote(") : CString(u" || ',' || quote(")) +
                  quotedName(column) + u")";
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT " + values + u" FROM " + quotedName(table));
    CSQLiteQueryResult result = statement.ExecuteQuery();
    const std::string start = "INSERT INTO " + toUtf8(quotedName(table)) + " VALUES(";
    for (; !result.Eof() && !line.out.isClosed(); result.NextRow())
        line.out.line(start + toUtf8(CString(result.GetTextField(0))) + ");");
}

ExitCode dumpDatabase(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&line]
        {
            CSQLiteDB db(existingDatabase());
            db.Open();
            line.out.line("PRAGMA encoding = 'UTF-16le';\nBEGIN TRANSACTION;");
            for (const CString& sql : textColumn(db,
                                                 u"SELECT sql FROM sqlite_master WHERE type = "
                                                 u"'table' AND substr(name, 1, 7) <> 'sqlite_'"))
                line.out.line(toUtf8(sql) + ";");
            for (const CString& table : textColumn(db,
                                                   u"SELECT name FROM sqlite_master WHERE type = "
                                                   u"'table' AND substr(name, 1, 7) <> 'sqlite_'"))
                dumpTable(line, db, table);
            for (const CString& sql : textColumn(db,
                                                 u"SELECT sql FROM sqlite_master WHERE type <> "
                                                 u"'table' AND sql IS NOT NULL"))
                line.out.line(toUtf8(sql) + ";");
            line.out.line("COMMIT;");
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
                    [&line] { return dumpDatabase(line); });
    addDatabaseRepairCommands(line, command);
}
} // namespace qo::cli
