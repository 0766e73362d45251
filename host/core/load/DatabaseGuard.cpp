#include "core/load/DatabaseGuard.h"

#include "core/base/DatabaseError.h"
#include "core/base/DatabaseQuery.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseRepair.h"
#include "core/load/DatabaseSwap.h"
#include "core/load/Snapshots.h"
#include "core/session/KernelThread.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <cerrno>
#include <memory>
#include <set>

namespace qo::host
{
namespace
{
/// A missing column, or a row whose id no record can bear.
std::string spoiltTable(const CSQLiteDB& db, const CString& table)
{
    const CStringArray missing = missingColumns(db, table);
    CStringArray columns;
    CQoCollDb::getColumns(table, columns);
    if (missing.GetSize() == columns.GetSize())
        return "the table " + toUtf8(table) + " is missing";
    if (!missing.IsEmpty())
        return "the column " + toUtf8(missing[0]) + " is missing";
    // Those of files are replaced without a repair. The ranges are looked up, not searched for.
    const CString& id = columns[0];
    const CString exists = u"EXISTS (SELECT 1 FROM " + table + u" WHERE " + id;
    const bool hasOddId =
        table != CString(u"FILE_T") &&
        numberOf(db, u"SELECT " + exists + u" < 1) OR " + exists + u" > 2147483647)") != 0;
    return hasOddId ? toUtf8(table) + " has a row whose id no record can bear" : std::string();
}

/// What nothing can be loaded without.
std::string missingParts(const CSQLiteDB& db)
{
    if (otherVersion(db))
        return numberOf(db, u"SELECT count(*) FROM pragma_table_info('FILE_T')") > 0
                   ? std::string()
                   : "the table FILE_T is missing";
    CStringArray tables;
    CQoCollDb::getTables(tables);
    for (const CString& table : tables)
    {
        std::string spoilt = spoiltTable(db, table);
        if (!spoilt.empty())
            return spoilt;
    }
    return numberOf(db, u"SELECT count(*) FROM VERSION_T WHERE VT_VERSION <> ''") > 0
               ? std::string()
               : "it bears no version";
}

/// What SQLite finds first when it looks at every page.
std::string damagedPage(const CSQLiteDB& db)
{
    const CStringArray found = textsOf(db, u"PRAGMA quick_check(1)");
    const std::string first = found.IsEmpty() ? "no answer" : toUtf8(found[0]);
    return first == "ok" ? std::string() : first.substr(first.rfind('\n') + 1);
}

/// A table and its indexes have the same rows; a page that went astray takes them from one only.
std::string differingCounts(const CSQLiteDB& db)
{
    CStringArray tables;
    if (!otherVersion(db))
        CQoCollDb::getTables(tables);
    for (const CString& table : tables)
    {
        const CStringArray indexes =
            textsOf(db,
                    u"SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = '" +
                        table + u"' AND substr(name, 1, 4) = 'IDX_' AND sql NOT LIKE '% WHERE %'");
        const std::int64_t rows = numberOf(db, u"SELECT count(*) FROM " + table + u" NOT INDEXED");
        for (const CString& index : indexes)
        {
            const std::int64_t entries = numberOf(
                db, u"SELECT count(*) FROM " + table + u" INDEXED BY " + quotedName(index));
            if (entries != rows)
                return toUtf8(table) + " has " + std::to_string(rows) + " rows and its index " +
                       toUtf8(index) + " has " + std::to_string(entries);
        }
    }
    return {};
}
/// The files that were set aside beside the database so far.
std::set<std::u16string> filesSetAside(const CString& database)
{
    std::set<std::u16string> names;
    std::vector<DirEntry> entries;
    const CQoCollPath path(database);
    if (fileSystem().list(path.getParent().toString(), entries) != 0)
        return names;
    const CString start = path.getLast() + u".unreadable-";
    for (const DirEntry& entry : entries)
    {
        const std::u16string_view name = entry.name.view();
        const bool isSideFile =
            name.ends_with(u"-wal") || name.ends_with(u"-shm") || name.ends_with(u"-journal");
        if (name.starts_with(start.view()) && !isSideFile)
            names.emplace(name);
    }
    return names;
}

/// What stands before the first page in the two kinds of side file.
constexpr std::size_t logHeader = 32;
constexpr std::size_t journalHeader = 20;

std::string firstBytes(const CString& path, std::size_t count)
{
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(path, OpenMode::read, error);
    std::string bytes(count, 0);
    const std::int64_t got = file ? file->read(bytes.data(), count) : 0;
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

/// The last number of the header counts the pages that the database had; it had none when its first
/// tables were being made.
bool isJournalFull(const std::string& header)
{
    return header.size() == journalHeader &&
           header.find_first_not_of('\0', journalHeader - 4) != std::string::npos;
}

} // namespace

DatabaseGuard::TableCounts DatabaseGuard::countRows(const CString& database)
{
    TableCounts counts;
    CSQLiteDB db(database);
    db.Open();
    for (const CString& table :
         textsOf(db,
                 u"SELECT name FROM sqlite_master WHERE type = 'table' AND substr(name, 1, 7) <> "
                 u"'sqlite_'"))
        counts[toUtf8(table)] = numberOf(db, u"SELECT COUNT(*) FROM " + quotedName(table));
    return counts;
}

bool DatabaseGuard::isThere() const
{
    FileInfo info;
    const int error = fileSystem().info(m_database, Spelling::exact, info);
    if (error == ENOENT)
        return refuseOrphans(), false;
    const std::string name = "the database " + shownPath(m_database);
    if (error != 0)
        throw HostError(ExitCode::failed, name + " cannot be reached: " + errorWords(error));
    if (info.kind == FileKind::directory)
        throw HostError(ExitCode::failed, name + " is a folder; it was left alone");
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed, name + " is no regular file; it was left alone");
    if (info.size == 0)
        return refuseOrphans(), false;
    return true;
}

void DatabaseGuard::refuseOrphans() const
{
    const CString log = m_database + u"-wal";
    const CString journal = m_database + u"-journal";
    const bool isLogFull = firstBytes(log, logHeader + 1).size() > logHeader;
    if (!isLogFull && !isJournalFull(firstBytes(journal, journalHeader)))
        return;
    const std::string side = shownPath(isLogFull ? log : journal);
    throw HostError(ExitCode::failed,
                    "the database " + shownPath(m_database) + " is gone or empty, but " + side +
                        " still holds a part of it; nothing was changed: put the database back, or "
                        "move that file away to begin anew");
}

void DatabaseGuard::refuseLocked() const
{
    try
    {
        CSQLiteDB db(m_database);
        db.SetBusyTimeout(patience);
        db.Open();
        db.Execute(u"BEGIN IMMEDIATE;");
        db.Execute(u"ROLLBACK;");
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (!exception->isUnreadableDatabase())
            throw exception.release();
    }
}

void DatabaseGuard::refuseOtherVersion() const
{
    if (const std::optional<CString> version = DatabaseMigration::otherVersion(m_database))
        throw HostError(ExitCode::failed,
                        "the database " + shownPath(m_database) + " has version [" +
                            toUtf8(*version) + "], this program reads version [" +
                            toUtf8(CString(CQoCollDb::currentVersion())) +
                            "]; it was left alone: \"qo db migrate\" carries it over");
}

void DatabaseGuard::refuseDamaged(const std::string& words) const
{
    throw HostError(ExitCode::failed, damagedSentence(m_database, words));
}

std::string DatabaseGuard::findDamage(bool everyPage) const
{
    try
    {
        CSQLiteDB db(m_database);
        db.SetBusyTimeout(patience);
        db.Open();
        // One moment for all that is compared.
        db.Execute(u"BEGIN;");
        std::string damage = missingParts(db);
        if (damage.empty())
            damage = differingCounts(db);
        return damage.empty() && everyPage ? damagedPage(db) : damage;
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (!exception->isUnreadableDatabase() && !exception->isStatementError())
            throw exception.release();
        return databaseWords(exception->message());
    }
}

bool DatabaseGuard::isSound() const
{
    try
    {
        DatabaseSwap(m_database).refuseUnfinished();
        if (!isThere())
            return false;
        CSQLiteDB db(m_database);
        db.SetBusyTimeout(patience);
        db.Open();
        db.Execute(u"BEGIN;");
        return !otherVersion(db) && missingParts(db).empty() && differingCounts(db).empty();
    }
    catch (const HostError&)
    {
        return false;
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        return false;
    }
}

bool DatabaseGuard::hasRow() const
{
    return DatabaseRepair(m_database).hasRow();
}

bool DatabaseGuard::check() const
{
    try
    {
        return checkGuarded();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
}

bool DatabaseGuard::checkGuarded() const
{
    DatabaseSwap(m_database).refuseUnfinished();
    if (!isThere())
        return false;
    // First, as it does not wait for long where another program holds the database for itself.
    const std::string damage = findDamage();
    CString version;
    const bool hasVersion = CQoCollDb::readVersion(m_database, version);
    refuseOtherVersion();
    if (damage.empty())
        return true;
    if (hasVersion || hasRow())
        refuseDamaged(damage);
    return false;
}

void DatabaseGuard::checkPages() const
{
    std::string damage;
    try
    {
        damage = findDamage(true);
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
    if (!damage.empty())
        refuseDamaged(damage);
}

std::vector<std::string> DatabaseGuard::prepare(const MigrationOptions& options)
{
    try
    {
        return prepareGuarded(options);
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
}

std::optional<MigrationReport> DatabaseGuard::migrate(const MigrationOptions& options) const
{
    try
    {
        DatabaseSwap(m_database).finish();
        if (!isThere())
            return {};
        refuseLocked();
        if (!DatabaseMigration::otherVersion(m_database))
            return {};
        return DatabaseMigration(m_database, options).run();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
}

std::optional<MigrationReport> DatabaseGuard::tryMigration(const MigrationOptions& options) const
{
    try
    {
        DatabaseSwap(m_database).refuseUnfinished();
        if (!isThere() || !DatabaseMigration::otherVersion(m_database))
            return {};
        return DatabaseMigration(m_database, options).tryOut();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
}

std::vector<std::string> DatabaseGuard::prepareGuarded(const MigrationOptions& options)
{
    std::vector<std::string> notes;
    if (const std::optional<MigrationReport> report = migrate(options))
        notes.push_back(
            report->sentence(options.isTrial ? CQoPaths::getQoDbFilePath() : m_database));
    if (checkGuarded())
        replaceIds(notes);
    else
        makeAnew(notes);
    return notes;
}

/// Nothing that can be read is in the way here.
void DatabaseGuard::makeAnew(std::vector<std::string>& notes) const
{
    TableCounts before;
    CString snapshot;
    if (isThere() && DatabaseRepair::isDatabase(m_database))
    {
        before = countRows(m_database);
        if (!before.empty())
            snapshot = Snapshots(m_database).take();
    }
    const std::set<std::u16string> asideBefore = filesSetAside(m_database);
    CQoCollDb::CreateDatabaseIfNotValid(m_database, CQoCollDb::ConfigInfo());
    for (const std::u16string& name : filesSetAside(m_database))
    {
        if (!asideBefore.contains(name))
            notes.push_back(
                shownPath(m_database) + " was no sound database: it was set aside as " +
                shownPath(CQoCollPath(m_database).getParent().child(CString(name)).toString()) +
                ", and an empty one takes its place");
    }
    if (!snapshot.IsEmpty())
        notes.push_back(shownPath(m_database) +
                        " had no collection in it and was given one; what it held before is in " +
                        shownPath(snapshot));
    else if (const std::string back = wayBack(); !back.empty())
        notes.push_back(back);
}

std::string DatabaseGuard::wayBack() const
{
    return Snapshots(m_database).list().IsEmpty()
               ? std::string()
               : "the collection is empty, but there are snapshots of it: \"qo db restore\" goes "
                 "back to the newest one";
}

void DatabaseGuard::replaceIds(std::vector<std::string>& notes) const
{
    CSQLiteDB db(m_database);
    db.Open();
    // The ranges are looked up, not searched for.
    const CStringArray ids = textsOf(
        db,
        u"SELECT FT_ID FROM FILE_T WHERE FT_ID < 1 UNION ALL SELECT FT_ID FROM FILE_T WHERE FT_ID "
        u"> 2147483647");
    for (const CString& id : ids)
        db.Execute(u"UPDATE FILE_T SET FT_ID = (SELECT coalesce(max(FT_ID), 0) + 1 FROM FILE_T "
                   u"WHERE FT_ID BETWEEN 0 AND 2147483646) WHERE FT_ID = " +
                   id);
    if (!ids.IsEmpty())
        notes.push_back(std::to_string(ids.GetSize()) + " rows of " + shownPath(m_database) +
                        " had ids that no record can bear; they have new ones");
}

std::string DatabaseGuard::keepDay() const
{
    try
    {
        const Snapshots snapshots(m_database);
        if (!snapshots.isOfToday() && !snapshots.isNewerThanDatabase() &&
            CQoCollDb(m_database).hasOwnCollFiles())
            Snapshots(m_database).take();
        return {};
    }
    catch (const HostError& error)
    {
        return error.what();
    }
}
} // namespace qo::host
