#include "MeasureDatabase.h"

#include <chrono>
#include <cstdio>

// bench_save DATABASE NEW-DATABASE: saves the file records of a database as new ones into a fresh
// database, as a scan does. Prints their number and the seconds.
namespace
{
class SavedCollection : public CQoCollection
{
public:
    using CQoCollection::saveToDb;
};

QoFileDbItemArray newRecords(const CString& database)
{
    QoFileDbItemArray records;
    CQoCollDb db(database);
    db.getAllFiles(records, true, {}, true);
    for (const QoFileDbItemPtr& record : records)
    {
        record->id = 0;
        record->dbState = qo::dbState::added;
    }
    return records;
}

int save(const CString& database, const CString& fresh)
{
    QoFileDbItemArray records = newRecords(database);
    (void)qo::fileSystem().removeFile(fresh);
    CQoCollDb::CreateDatabaseIfNotValid(fresh, {});
    SavedCollection collection;
    CDummyProgress progress;
    CQoCollection::OpResultInfo result;
    const auto start = std::chrono::steady_clock::now();
    {
        CQoCollDb db(fresh);
        collection.saveToDb(records, db, &progress, &result);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%d %.6f\n", result.m_inserted, took.count());
    (void)qo::fileSystem().removeFile(fresh);
    return result.m_inserted == records.GetSize() ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    return measureDatabase(argc, argv, save);
}
