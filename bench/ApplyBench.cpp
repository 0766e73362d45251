#include "core/load/CollectionLoader.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

#include <QoKernel/Physical.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

// bench_apply DATA: loads the collection of the data folder and applies one file that was written
// anew, again and again in different places. Prints the number of files and the median seconds.
namespace
{
using Clock = std::chrono::steady_clock;

double applyOne(const CString& path)
{
    const timespec now[] = {{std::time(nullptr), 0}, {std::time(nullptr), 0}};
    ::utimensat(AT_FDCWD, qo::toSystemPath(path).c_str(), now, 0);
    CQoFileChangeInfoList changes;
    changes.addFileToScan(path, CQoFileChangeInfo::ordinaryFile, CQoFileChangeInfo::setImported);
    CDummyProgress progress;
    const auto start = Clock::now();
    CQoCollection::m_ownCollection.applyQoFileChanges(changes, {}, &progress);
    CQoCollection::m_ownCollection.releaseZombieObjects();
    return std::chrono::duration<double>(Clock::now() - start).count();
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    qo::host::Session::Options options;
    options.dataFolder = argv[1];
    qo::host::Session session(std::move(options));
    qo::host::ProgressReporter progress([](const qo::host::ProgressEvent&) {});
    return session.kernel().run(
        [&]
        {
            qo::host::loadCollection(session, {}, progress);
            QoFileDbItemArray files;
            CQoCollection::m_ownCollection.copyFiles(files);
            constexpr int rounds = 9;
            if (files.GetSize() < rounds)
                return 1;
            std::vector<double> times;
            for (int i = 0; i < rounds; ++i)
            {
                // The records' times lie apart by a second at least.
                const int index = (files.GetSize() - 1) / rounds * i;
                times.push_back(applyOne(files[index]->path));
            }
            std::sort(times.begin(), times.end());
            std::printf("%d %.6f\n", files.GetSize(), times[rounds / 2]);
            return 0;
        });
}
