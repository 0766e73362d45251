#include "common/SimpleLogger.h"
#include "core/session/Heap.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>

#include <chrono>
#include <cstdio>
#include <memory>

// bench_save DATABASE NEW-DATABASE: saves the file records of a database as new ones into a fresh
// database, as a scan does. Prints their number and the seconds.
namespace
{
class SavedCollection : public CQoCollection
{
public:
    using CQoCollection::saveToDb;
};

QoFileDbItemArray newRecords(const char* database)
{
    QoFileDbItemArray records;
    CQoCollDb db(qo::fromSystemPath(database));
    db.getAllFiles(records, true, {}, true);
    for (const QoFileDbItemPtr& record : records)
    {
        record->id = 0;
        record->dbState = qo::dbState::added;
    }
    return records;
}

int save(const char* database, const char* fresh)
{
    QoFileDbItemArray records = newRecords(database);
    std::remove(fresh);
    const CString path = qo::fromSystemPath(fresh);
    CQoCollDb::CreateDatabaseIfNotValid(path, {});
    SavedCollection collection;
    CDummyProgress progress;
    CQoCollection::OpResultInfo result;
    const auto start = std::chrono::steady_clock::now();
    {
        CQoCollDb db(path);
        collection.saveToDb(records, db, &progress, &result);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%d %.6f\n", result.m_inserted, took.count());
    std::remove(fresh);
    return result.m_inserted == records.GetSize() ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 3)
        return 2;
    // As the command does: large pages, and a log of what fails instead of every statement.
    qo::host::useLargePages();
    InitSimpleLogger(qo::level::error, qo::fromSystemPath(argv[2]) + u"_log");
    return save(argv[1], argv[2]);
}
catch (CSQLiteException* caught)
{
    const std::unique_ptr<CSQLiteException> exception(caught);
    std::fprintf(stderr, "%s\n", argv[1]);
    return 1;
}
