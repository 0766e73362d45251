#include "MeasureDatabase.h"

#include <QoKernel/Sharing.h>

#include <chrono>
#include <cstdio>
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

int measure(const CString& database, const CString& path)
{
    QoFileDbItemArray records;
    CQoCollDb(database).getAllFiles(records, false, {}, true);
    bool isDone = true;
    const double writing = secondsOf(
        [&] { isDone = CQoDbExtract::CreateQoDbExtract(records, path, FILETIME()) == 1; });
    QoFileDbItemArray read;
    const double reading = secondsOf([&] { CQoDbExtract::LoadQoDbExtract(u"1", path, read); });
    qo::FileInfo info;
    isDone = isDone && qo::fileSystem().info(path, qo::Spelling::exact, info) == 0;
    const std::string bytes(isDone ? static_cast<std::size_t>(info.size) : 0, 'x');
    const double bare = secondsOf(
        [&] { isDone = qo::fileSystem().replaceFile(path, bytes.data(), bytes.size()) == 0; });
    std::printf("%d %.6f %.6f %.6f\n", std::as_const(read).GetSize(), bare, writing, reading);
    (void)qo::fileSystem().removeFile(path);
    return isDone && !read.IsEmpty() ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    return measureDatabase(argc, argv, measure);
}
