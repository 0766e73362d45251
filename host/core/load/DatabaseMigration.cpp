#include "core/load/DatabaseMigration.h"

#include "core/base/DatabaseError.h"
#include "core/base/DatabaseQuery.h"
#include "core/base/HostFiles.h"
#include "core/base/ScratchDatabase.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/DatabaseSwap.h"
#include "core/load/Snapshots.h"

#include <QoKernel/Inside.h>

#include <algorithm>
#include <memory>

namespace qo::host
{
namespace
{
constexpr const char16_t* collections = u"COLL_T";
/// Versions before this one lose the rows of collections, which the next scan makes again.
constexpr const char16_t* firstKeepingCollections = u"2.0.0.21";

/// The rows of a database, by what must be the same after it was carried over.
struct Inventory
{
    std::map<std::string, std::int64_t> counts;           ///< of every table
    std::map<std::string, std::vector<std::int64_t>> ids; ///< of the collection's, sorted
    std::int64_t collectionIds = 0; ///< several rows of one collection become one
    std::int64_t unusableIds = 0;   ///< rows whose ids no record can have
    std::vector<std::string> unknownColumns;

    explicit Inventory(const CString& database) : counts(DatabaseGuard::countRows(database))
    {
        CSQLiteDB db(database);
        db.Open();
        CStringArray tables;
        CQoCollDb::getTables(tables);
        for (const CString& table : tables)
        {
            const CStringArray found =
                textsOf(db, u"SELECT name FROM pragma_table_info('" + table + u"')");
            if (!found.IsEmpty())
                look(db, table, found);
        }
    }

private:
    void look(const CSQLiteDB& db, const CString& table, const CStringArray& found)
    {
        CStringArray known;
        CQoCollDb::getColumns(table, known);
        const auto has = [](const CStringArray& names, const CString& name)
        { return std::find(names.begin(), names.end(), name) != names.end(); };
        for (const CString& column : found)
        {
            if (!has(known, column))
                unknownColumns.push_back(toUtf8(table + u"." + column));
        }
        if (table == collections)
            collectionIds =
                numberOf(db,
                         has(found, known[1])
                             ? u"SELECT count(DISTINCT coalesce(CT_COLL_ID, '')) FROM COLL_T"
                             : u"SELECT min(count(*), 1) FROM COLL_T");
        else if (has(found, known[0]))
        {
            std::vector<std::int64_t>& usable = ids[toUtf8(table)];
            usable = numbersOf(db,
                               u"SELECT " + known[0] + u" FROM " + table + u" WHERE " + known[0] +
                                   u" BETWEEN 1 AND 2147483647 ORDER BY 1");
            unusableIds += counts.at(toUtf8(table)) - static_cast<std::int64_t>(usable.size());
        }
    }
};

std::string lossText(const std::string& table, std::int64_t lost, std::int64_t of)
{
    return table + " would lose " + std::to_string(lost) + " of " + std::to_string(of) + " rows";
}

/// What the second one lacks, as words; "" for nothing.
std::string lossesBetween(const Inventory& before, const Inventory& after, const CString& version)
{
    std::string text;
    const auto add = [&text](const std::string& loss)
    { text += (text.empty() ? "" : ", ") + loss; };
    for (const auto& [table, count] : before.counts)
    {
        if (table == "VERSION_T")
            continue;
        const auto found = after.counts.find(table);
        const std::int64_t now = found == after.counts.end() ? 0 : found->second;
        const bool isOfCollections = fromUtf8(table) == collections;
        const std::int64_t wanted = !isOfCollections ? count
                                    : version < CString(firstKeepingCollections)
                                        ? 0
                                        : before.collectionIds;
        std::vector<std::int64_t> missing;
        const auto ids = before.ids.find(table);
        const auto idsNow = after.ids.find(table);
        if (ids != before.ids.end() && idsNow != after.ids.end())
            std::set_difference(ids->second.begin(),
                                ids->second.end(),
                                idsNow->second.begin(),
                                idsNow->second.end(),
                                std::back_inserter(missing));
        if (!missing.empty())
            add(lossText(table, static_cast<std::int64_t>(missing.size()), count) + " (" +
                someOf(missing) + ")");
        else if (now < wanted)
            add(lossText(table, wanted - now, count));
    }
    return text;
}

/// Ids that were given out are not given out again.
void keepSequences(const CString& copy, const std::map<CString, CString>& sequences)
{
    CSQLiteDB db(copy);
    db.Open();
    db.Execute(u"BEGIN IMMEDIATE;");
    for (const auto& [table, last] : sequences)
    {
        const CString condition = u" WHERE name = '" + table + u"'";
        const CString sql =
            numberOf(db, u"SELECT count(*) FROM sqlite_sequence" + condition) > 0
                ? u"UPDATE sqlite_sequence SET seq = max(seq, " + last + u")" + condition
                : u"INSERT INTO sqlite_sequence VALUES ('" + table + u"', " + last + u")";
        db.Execute(sql);
    }
    db.Execute(u"COMMIT;");
}

std::map<CString, CString> sequencesOf(const CString& database)
{
    std::map<CString, CString> sequences;
    CSQLiteDB db(database);
    db.Open();
    if (numberOf(db, u"SELECT count(*) FROM sqlite_master WHERE name = 'sqlite_sequence'") == 0)
        return sequences;
    CStringArray tables;
    CQoCollDb::getTables(tables);
    for (const CString& table : tables)
    {
        for (const CString& last : textsOf(db,
                                           u"SELECT CAST(seq AS INTEGER) FROM sqlite_sequence "
                                           u"WHERE name = '" +
                                               table + u"' AND seq > 0"))
            sequences[table] = last;
    }
    return sequences;
}

/// The numbers between the points; nothing for any other text.
std::optional<std::vector<long long>> numbersIn(const CString& version)
{
    std::vector<long long> numbers;
    for (const CString& part : CStringArray::split(version, u'.'))
    {
        if (part.IsEmpty() || part.GetLength() > 9 ||
            part.view().find_first_not_of(u"0123456789") != std::u16string_view::npos)
            return {};
        numbers.push_back(textToInt64(part.view()));
    }
    return numbers;
}

/// Whether another copy of the database would not fit beside it: what did not is gone by now.
bool isRoomShort(const CString& database)
{
    FileInfo info;
    std::uint64_t bytes = 0;
    return fileSystem().info(database, Spelling::exact, info) == 0 &&
           fileSystem().room(CQoCollPath(database).getParent().toString(), bytes) == 0 &&
           bytes < static_cast<std::uint64_t>(info.size);
}

std::string versionText(const CString& version)
{
    return version.IsEmpty() ? "no version" : "version [" + toUtf8(version) + "]";
}
} // namespace

std::string MigrationReport::sentence(const CString& database) const
{
    std::string text =
        "the database " + shownPath(database) +
        (kept.IsEmpty() ? " would be carried over from " : " was carried over from ") +
        versionText(from) + " to version [" + toUtf8(CString(CQoCollDb::currentVersion())) + "]";
    if (!leftBehind.empty())
    {
        text += kept.IsEmpty() ? ", without the columns"
                               : "; what this version does not know is left behind:";
        for (std::size_t i = 0; i < leftBehind.size(); ++i)
            text += (i == 0 ? " " : ", ") + leftBehind[i];
    }
    if (newIds > 0)
        text += "; " + std::to_string(newIds) +
                (newIds == 1 ? " row gets a new id" : " rows get new ids") +
                ", as no record can have that";
    return text + (kept.IsEmpty() ? "" : "; as it was it is kept in " + shownPath(kept));
}

std::optional<CString> DatabaseMigration::otherVersion(const CString& database)
{
    FileInfo info;
    if (fileSystem().info(database, Spelling::exact, info) != 0 || info.kind != FileKind::regular ||
        info.size == 0)
        return {};
    try
    {
        CSQLiteDB db(database);
        db.SetBusyTimeout(DatabaseGuard::patience);
        db.Open();
        return host::otherVersion(db);
    }
    catch (CSQLiteException* raw)
    {
        // Whoever goes on to use the database says what is wrong with it.
        const std::unique_ptr<CSQLiteException> exception(raw);
        return {};
    }
}

bool DatabaseMigration::isNewer(const CString& version)
{
    const auto found = numbersIn(version);
    return !found || *found > *numbersIn(CQoCollDb::currentVersion());
}

MigrationReport DatabaseMigration::run() const
{
    refuse();
    if (m_options.isTrial)
        return rebuild(m_database);
    const CString snapshot = takeSnapshot();
    const DatabaseSwap swap(m_database);
    bool isBegun = false;
    try
    {
        CSQLiteDB watch(m_database);
        watch.Open();
        const std::int64_t seen = numberOf(watch, u"PRAGMA data_version");
        swap.draftFrom(m_database);
        MigrationReport report = rebuild(swap.draft());
        if (numberOf(watch, u"PRAGMA data_version") != seen)
            throw HostError(ExitCode::busy,
                            "the database " + shownPath(m_database) +
                                " was changed by another program while it was being carried over; "
                                "it was left alone");
        watch.Close();
        report.kept = snapshot;
        isBegun = true;
        swap.putInPlace();
        Snapshots(m_database).removeOld(snapshot);
        return report;
    }
    catch (...)
    {
        swap.dropDraft();
        // The database is the same as before: one copy more for each attempt would fill the disk,
        // and drive the snapshots of better days out.
        if (!isBegun)
            (void)fileSystem().removeFile(snapshot);
        throw;
    }
}

MigrationReport DatabaseMigration::tryOut() const
{
    refuse();
    const ScratchDatabase scratch(u"trial-migration");
    scratch.copyFrom(m_database);
    return rebuild(scratch.path());
}

CString DatabaseMigration::takeSnapshot() const
{
    try
    {
        return Snapshots(m_database).add();
    }
    catch (const HostError& error)
    {
        throw HostError(error.code(),
                        "the database is of another version and cannot be carried over: " +
                            std::string(error.what()));
    }
}

/// What must not be carried over.
void DatabaseMigration::refuse() const
{
    const CString version = otherVersion(m_database).value_or(CQoCollDb::currentVersion());
    if (!version.IsEmpty() && isNewer(version) && !m_options.mayDowngrade)
        throw HostError(ExitCode::refused,
                        "the database " + shownPath(m_database) + " has version [" +
                            toUtf8(version) + "], which is newer than that of this program, [" +
                            toUtf8(CString(CQoCollDb::currentVersion())) +
                            "]; it was left alone: \"qo db migrate --downgrade\" brings it down, "
                            "without what this program does not know");
    const std::string damage = DatabaseGuard(m_database).findDamage(true);
    if (!damage.empty())
        throw HostError(ExitCode::failed, damagedSentence(m_database, damage));
}

MigrationReport DatabaseMigration::rebuild(const CString& copy) const
{
    MigrationReport report;
    report.from = otherVersion(copy).value_or(CString());
    const Inventory before(copy);
    const std::map<CString, CString> sequences = sequencesOf(copy);
    CQoCollDb::CreateDatabaseIfNotValid(copy, m_options.config);
    const Inventory after(copy);
    const std::string losses = lossesBetween(before, after, report.from);
    if (!losses.empty())
        throw HostError(ExitCode::failed,
                        "the database " + shownPath(m_database) + " cannot be carried over from " +
                            versionText(report.from) + ": " + losses +
                            (isRoomShort(copy) ? "; there is too little room on the disk" : "") +
                            "; it is as it was before");
    keepSequences(copy, sequences);
    report.rows = after.counts;
    report.leftBehind = before.unknownColumns;
    report.newIds = before.unusableIds;
    return report;
}
} // namespace qo::host
