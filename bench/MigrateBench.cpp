#include "MeasureDatabase.h"

#include <QoKernel/Inside.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>

// bench_migrate DATABASE COPY: carries a copy of a database over from the oldest version, with all
// steps. Prints the number of its files, the seconds, and the most memory that was resident, in
// KiB.
namespace
{
int countFiles(const CSQLiteDB& db)
{
    CSQLiteStatement statement = db.CompileStatement(u"SELECT count(*) FROM FILE_T");
    return statement.ExecuteQuery().GetIntField(0);
}

int migrate(const CString& database, const CString& copy)
{
    qo::backupDatabase(database, copy);
    CSQLiteDB db(copy);
    db.Open();
    db.Execute(u"UPDATE VERSION_T SET VT_VERSION = '2.0.0.20'");
    const int files = countFiles(db);
    db.Close();
    const auto start = std::chrono::steady_clock::now();
    CQoCollDb::CreateDatabaseIfNotValid(copy, {});
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    db.Open();
    const bool isWhole = files > 0 && countFiles(db) == files;
    db.Close();
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%d %.6f %ld\n", files, took.count(), usage.ru_maxrss);
    for (const char16_t* const end : {u"", u"-wal", u"-shm", u".bak", u".creation-lock"})
        (void)qo::fileSystem().removeFile(copy + end);
    return isWhole ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    return measureDatabase(argc, argv, migrate);
}
