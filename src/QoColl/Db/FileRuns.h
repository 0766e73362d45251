#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "QoColl/Db/FileRow.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "types/String.h"

#include <memory>
#include <vector>

namespace qo
{
/// Gives the files of a collection in path order, some at a time, before all of them are read. Rows
/// lie in the order in which they were stored: one run in path order for the first scan, and one
/// for what each later scan found. So the paths alone are read first, which shows where runs begin;
/// then each run has a cursor of its own, and the runs are merged.
///
///   stored   1 "a"  2 "c"  3 "d"  |  4 "b"  |  5 "a2"  6 "e"
///   given    1 "a"  5 "a2"  4 "b"  2 "c"  3 "d"  6 "e"
///
/// The connection must see one state of the database for as long as this exists (DbTransaction).
/// Failures are thrown as by CQoCollDb.
class FileRuns
{
public:
    FileRuns(const CSQLiteDB& db, const CString& collId);
    ~FileRuns();
    FileRuns(const FileRuns&) = delete;
    FileRuns& operator=(const FileRuns&) = delete;

    /// Whether there are so many runs that reading all rows and sorting them costs less. Then
    /// nothing is given.
    bool areTooMany() const noexcept { return m_areTooMany; }
    int count() const noexcept { return m_count; } ///< of all files
    /// Appends the next records, at most so many; false when these are the last.
    bool next(QoFileDbItemArray& records, int most);

private:
    class Run;

    void findRuns(const CSQLiteDB& db, const CString& collId);
    void moveFirstToItsPlace();

    FileRowReader m_reader;
    /// Those that have a record left, the one with the next record first.
    std::vector<std::unique_ptr<Run>> m_runs;
    int m_count = 0;
    bool m_areTooMany = false;
};
} // namespace qo
