#include "core/load/DatabaseContent.h"

#include "core/base/DatabaseError.h"
#include "core/base/DatabaseQuery.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <memory>

namespace qo::host
{
namespace
{
struct Check
{
    const char* name;
    const char16_t* sql; ///< counts what is wrong
};
// Results of searches have an identity from their first download on, and a collection that has no
// row of its own.
constexpr Check checks[] = {
    {"files without a path", u"SELECT COUNT(*) FROM FILE_T WHERE FT_PATH IS NULL OR FT_PATH = ''"},
    {"paths that stand twice",
     u"SELECT COUNT(*) - COUNT(DISTINCT FT_COLL_ID || '|' || FT_PATH) FROM FILE_T"},
    {"files without an identity",
     u"SELECT COUNT(*) FROM FILE_T WHERE (FT_VELMORA_ID IS NULL OR FT_VELMORA_ID = '') "
     u"AND FT_COLL_ID <> '?searchresult?'"},
    {"files of unknown collections",
     u"SELECT COUNT(*) FROM FILE_T WHERE FT_COLL_ID <> '?searchresult?' "
     u"AND FT_COLL_ID NOT IN (SELECT CT_COLL_ID FROM COLL_T)"}};

/// The columns that a load or a save would miss.
void checkColumns(const CSQLiteDB& db, std::vector<std::string>& faults)
{
    CStringArray tables;
    CQoCollDb::getTables(tables);
    for (const CString& table : tables)
    {
        for (const CString& column : missingColumns(db, table))
            faults.push_back("there is no column " + toUtf8(table) + "." + toUtf8(column));
    }
}

void checkContent(const CSQLiteDB& db, std::vector<std::string>& faults)
{
    for (const CString& text : textsOf(db, u"PRAGMA integrity_check"))
    {
        if (text != u"ok")
            faults.push_back(toUtf8(text));
    }
    for (const Check& check : checks)
    {
        const std::int64_t count = numberOf(db, check.sql);
        if (count > 0)
            faults.push_back(std::string(check.name) + ": " + std::to_string(count));
    }
}

void inspect(const CString& database, DatabaseFindings& findings)
{
    CString version;
    if (!CQoCollDb::readVersion(database, version))
        return findings.faults.push_back("it is no collection database");
    findings.version = toUtf8(version);
    const CString expected = CQoCollDb::currentVersion();
    if (version != expected)
        return findings.faults.push_back("it has version [" + findings.version +
                                         "], this program reads [" + toUtf8(expected) +
                                         "]: \"qo db migrate\" carries it over");
    CSQLiteDB db(database);
    db.Open();
    checkContent(db, findings.faults);
    checkColumns(db, findings.faults);
    QoFileDbItemArray records;
    CQoCollDb(database).getAllFiles(records, true, u"", false);
    findings.rows = DatabaseGuard::countRows(database);
}

/// The statements that make the rows of a table again; quote() gives each value as SQL.
void dumpTable(const CSQLiteDB& db,
               const CString& table,
               const std::function<bool(const std::string&)>& line)
{
    CString values;
    for (const CString& column :
         textsOf(db, u"SELECT name FROM pragma_table_info(" + quotedName(table) + u")"))
        values += (values.IsEmpty() ? CString(u"quote(") : CString(u" || ',' || quote(")) +
                  quotedName(column) + u")";
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT " + values + u" FROM " + quotedName(table));
    CSQLiteQueryResult result = statement.ExecuteQuery();
    const std::string start = "INSERT INTO " + toUtf8(quotedName(table)) + " VALUES(";
    for (; !result.Eof(); result.NextRow())
    {
        if (!line(start + toUtf8(CString(result.GetTextField(0))) + ");"))
            return;
    }
}
} // namespace

DatabaseFindings inspectDatabase(const CString& database)
{
    DatabaseFindings findings;
    try
    {
        inspect(database, findings);
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        findings.faults.push_back(databaseWords(exception->message()) +
                                  (isDiskFull(database) ? "; the disk is full" : ""));
    }
    return findings;
}

void dumpDatabase(const CString& database, const std::function<bool(const std::string&)>& line)
{
    constexpr const char16_t* ownTables = u" FROM sqlite_master WHERE type = 'table' AND "
                                          u"substr(name, 1, 7) <> 'sqlite_'";
    CSQLiteDB db(database);
    db.Open();
    line("PRAGMA encoding = 'UTF-16le';\nBEGIN TRANSACTION;");
    for (const CString& sql : textsOf(db, CString(u"SELECT sql") + ownTables))
        line(toUtf8(sql) + ";");
    for (const CString& table : textsOf(db, CString(u"SELECT name") + ownTables))
        dumpTable(db, table, line);
    for (const CString& sql :
         textsOf(db, u"SELECT sql FROM sqlite_master WHERE type <> 'table' AND sql IS NOT NULL"))
        line(toUtf8(sql) + ";");
    line("COMMIT;");
}
} // namespace qo::host
