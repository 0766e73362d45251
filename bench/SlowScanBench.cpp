#include "core/load/CollectionLoader.h"
#include "core/roots/RootFolders.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"
#include "support/TestFileSystem.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

// bench_slow_scan FOLDER DATA: first scans of FOLDER, in new data folders below DATA, as from a
// disk that takes 5 ms to open a file, for each read and to list a folder: one file at a time, and
// with all threads. Prints the number of files and the seconds of both.
namespace
{
using namespace qo::host;
namespace fs = std::filesystem;

void wait()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

class SlowFile final : public PassingFile
{
public:
    using PassingFile::PassingFile;

    std::int64_t read(void* buffer, std::size_t size) override
    {
        wait();
        return PassingFile::read(buffer, size);
    }
};

class SlowFiles final : public TestFileSystem
{
public:
    explicit SlowFiles(const CString& slowFolder)
        : TestFileSystem(
              [this](const std::string& call, const CString& path)
              {
                  if (call == "list" && isSlow(path))
                      wait();
                  return 0;
              })
        , m_folder(slowFolder)
    {
    }
    std::unique_ptr<qo::IFile> open(const CString& path, qo::OpenMode mode, int& error) override
    {
        auto file = TestFileSystem::open(path, mode, error);
        if (!file || !isSlow(path))
            return file;
        wait();
        return std::make_unique<SlowFile>(std::move(file));
    }

private:
    bool isSlow(const CString& path) const { return path.view().starts_with(m_folder.view()); }

    const CString m_folder;
};

double secondsOfScan(const CString& music, const fs::path& data, int threads, int& files)
{
    Session::Options options;
    options.dataFolder = data.string();
    Session session(options);
    double seconds = 0;
    session.kernel().run(
        [&]
        {
            session.prepareDatabase(Session::databasePath());
            RootFolders roots;
            roots.add(music, CQoPathInfo::audioIsMusic);
            roots.store();
            LoadOptions scan;
            scan.rescan = true;
            scan.tagThreads = threads;
            ProgressReporter silent([](const ProgressEvent&) {});
            const LoadReport report = loadCollection(session, scan, silent);
            files = report.files;
            seconds = report.seconds;
        });
    return seconds;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "usage: bench_slow_scan FOLDER DATA\n");
        return 2;
    }
    const CString music = qo::fromSystemPath(fs::canonical(argv[1]).string());
    const fs::path data(argv[2]);
    fs::create_directories(data);
    const SlowFiles slow(music);
    int files = 0;
    const double one = secondsOfScan(music, data / "one", 1, files);
    const double all = secondsOfScan(music, data / "all", 0, files);
    std::printf("%d %.3f %.3f\n", files, one, all);
    return 0;
}
