#pragma once

#include "core/load/DatabaseMigration.h"

#include <QoKernel/Kernel.h>

#include <map>
#include <string>
#include <vector>

namespace qo::host
{
/// Sees to it that the collection's database is one that the kernel may open, and that nothing is
/// lost when it has to be made anew or carried over from another version. A database that is
/// damaged, has a newer version, is locked, is no regular file or has changes beside it that belong
/// to another is left alone and ends in a HostError; for a damaged one that names the ways on. On
/// the thread that calls the kernel.
class DatabaseGuard
{
public:
    using TableCounts = std::map<std::string, std::int64_t>;

    /// How long a database that others lock is waited for, in milliseconds: a writer is done within
    /// this time, or something holds the database for itself.
    static constexpr int patience = 3000;

    explicit DatabaseGuard(const CString& database) : m_database(database) {}

    /// For whoever writes: makes an absent database, carries one of another version over, and sets
    /// a file aside in which no row can be read, with an empty one in its place. Row ids that no
    /// record can bear are replaced. Sentences for the user about what was done.
    std::vector<std::string> prepare(const MigrationOptions& options = {});
    /// The same for a database of another version alone: nothing for any other one.
    std::optional<MigrationReport> migrate(const MigrationOptions& options) const;
    /// What that would come to; changes nothing.
    std::optional<MigrationReport> tryMigration(const MigrationOptions& options) const;
    /// Whether there is a database of this version without damage, as findDamage() sees it, and
    /// nothing else to see to. One connection answers that; why it is not so, the others say.
    bool isSound() const;
    /// For whoever reads: false when there is no collection yet. Changes nothing, so another
    /// version is refused.
    bool check() const;
    /// Before a scan saves: looks at every page, which takes about as long as reading all rows.
    void checkPages() const;
    /// Takes a snapshot before the first change of a day, unless the newest one still is what the
    /// database holds. A sentence when it cannot be taken.
    std::string keepDay() const;

    /// For a collection without a database: a sentence about its snapshots, if there are any.
    std::string wayBack() const;

    /// What is wrong with an existing file, in SQLite's words or ours; empty for a sound one. Reads
    /// the schema, looks for tables, columns and ids, and counts the rows of each table and of its
    /// indexes; looks at every page only when asked to. Another version may lack tables and
    /// columns, but not the files. Throws what the database layer throws for other reasons.
    std::string findDamage(bool everyPage = false) const;
    /// The rows of each table; throws what the database layer throws.
    static TableCounts countRows(const CString& database);

private:
    std::vector<std::string> prepareGuarded(const MigrationOptions& options);
    bool checkGuarded() const;
    /// Whether there is a file with something in it.
    bool isThere() const;
    /// That nothing is there, unless a side file still holds something.
    void refuseOrphans() const;
    void refuseLocked() const;
    void refuseOtherVersion() const;
    [[noreturn]] void refuseDamaged(const std::string& words) const;
    /// Whether a row of one of the collection's tables can be read, by whatever means.
    bool hasRow() const;
    void makeAnew(std::vector<std::string>& notes) const;
    void replaceIds(std::vector<std::string>& notes) const;

    CString m_database;
};
} // namespace qo::host
