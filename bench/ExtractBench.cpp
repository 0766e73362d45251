#include "common/SimpleLogger.h"
#include "core/session/Heap.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>
#include <QoKernel/Sharing.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

// bench_extract DATABASE FILE: writes the file records of a database into an extract, and reads
// that; beside it writes bytes of that number into a file in the same way. Prints the number of
// records and the seconds of the bare write, of the writing and of the reading.
namespace
{
template <class Work>
double secondsOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int measure(const char* database, const char* file)
{
    const CString path = qo::fromSystemPath(file);
    QoFileDbItemArray records;
    CQoCollDb(qo::fromSystemPath(database)).getAllFiles(records, false, {}, true);
    bool isDone = true;
    const double writing = secondsOf(
        [&] { isDone = CQoDbExtract::CreateQoDbExtract(records, path, FILETIME()) == 1; });
    QoFileDbItemArray read;
    const double reading = secondsOf([&] { CQoDbExtract::LoadQoDbExtract(u"1", path, read); });
    const std::string bytes(isDone ? std::filesystem::file_size(file) : 0, 'x');
    const double bare = secondsOf(
        [&] { isDone = qo::fileSystem().replaceFile(path, bytes.data(), bytes.size()) == 0; });
    std::printf("%d %.6f %.6f %.6f\n", std::as_const(read).GetSize(), bare, writing, reading);
    std::remove(file);
    return isDone && !read.IsEmpty() ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
try
{
    if (argc != 3)
        return 2;
    qo::host::useLargePages();
    InitSimpleLogger(qo::level::error, qo::fromSystemPath(argv[2]) + u"_log");
    return measure(argv[1], argv[2]);
}
catch (CSQLiteException* caught)
{
    const std::unique_ptr<CSQLiteException> exception(caught);
    std::fprintf(stderr, "%s\n", argv[1]);
    return 1;
}
