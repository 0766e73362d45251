#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// What SQLite keeps beside a database, by the ends of the names.
constexpr const char16_t* databaseSideFiles[] = {u"-wal", u"-shm", u"-journal"};

/// Puts another database in the place of the collection's and keeps the former one beside it. A
/// process that dies meanwhile leaves either the former one in its place, or
/// "<database>.replacement" beside it, which the next finish() puts there. Nobody may have the
/// database open here. On the thread that calls the kernel.
class DatabaseSwap
{
public:
    explicit DatabaseSwap(const CString& database) : m_database(database) {}

    /// A free name for the new database while it is being made.
    CString draft() const { return m_database + u".draft"; }
    /// Makes the draft a copy of another database. Throws what the database layer throws.
    void draftFrom(const CString& source) const;
    /// Puts the draft in place. The former database, if there is one, is kept with its side files
    /// as
    /// "<database>.<word>-<date>_<time>", which is the result. Throws HostError; before the draft
    /// is in place nothing has changed.
    CString replace(const char16_t* word) const;
    /// Puts the draft in place of a database that is kept elsewhere, and the copy "<draft>.bak", if
    /// there is one, beside it as "<database>.bak". Throws HostError.
    void putInPlace() const;
    /// Brings a replacement to its end that was cut short. Throws HostError for a damaged one.
    void finish() const;
    /// For whoever only reads: throws HostError when there is such a one.
    void refuseUnfinished() const;
    void dropDraft() const;

private:
    void finishReplacement() const;
    void keepBackup() const;
    CString pending() const { return m_database + u".replacement"; }

    CString m_database;
};
} // namespace qo::host
