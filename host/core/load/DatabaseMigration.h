#pragma once

#include <QoKernel/Collection.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// How a database of another version is carried over to this one.
struct MigrationOptions
{
    CQoCollDb::ConfigInfo config;
    bool mayDowngrade = false; ///< also that of a newer program
    bool isTrial = false;      ///< the database is a copy that nobody will miss
};

/// What came of it.
struct MigrationReport
{
    CString from;                             ///< the version that it had; "" for none
    std::map<std::string, std::int64_t> rows; ///< of each table, afterwards
    std::vector<std::string> leftBehind;      ///< "FILE_T.FT_NEW": columns that only the former has
    std::int64_t newIds = 0;                  ///< rows whose ids no record can have
    CString kept;                             ///< a snapshot of the former; "" for a trial

    /// What was done, or would be, as a sentence for the user.
    std::string sentence(const CString& database) const;
};

/// Carries a collection's database of another version over to this one, with every row and id. The
/// work is done on a copy beside it, which takes its place only when no row is missing there: until
/// then the database is as it was, whatever happens, and afterwards "<database>.bak" and a snapshot
/// have it. Nobody else may change it meanwhile. On the thread that calls the kernel.
class DatabaseMigration
{
public:
    DatabaseMigration(const CString& database, const MigrationOptions& options)
        : m_database(database), m_options(options)
    {
    }

    /// The version of a database if it is another one than this program's; "" if its table of
    /// versions is empty. Nothing for a database of this version, or if none can be read.
    static std::optional<CString> otherVersion(const CString& database);
    /// Whether a newer program has written it, as far as the numbers tell; also if they are none.
    static bool isNewer(const CString& version);

    /// Throws HostError: refused for a newer version without leave, else what is in the way or
    /// which rows would be lost; and what the database layer throws. The database is then as it
    /// was.
    MigrationReport run() const;
    /// The same with a copy in the temporary folder; the database stays as it is.
    MigrationReport tryOut() const;

private:
    void refuse() const;
    CString takeSnapshot() const;
    MigrationReport rebuild(const CString& copy) const;

    CString m_database;
    MigrationOptions m_options;
};
} // namespace qo::host
