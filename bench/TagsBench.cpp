#include "Walk.h"

#include <QoKernel/Kernel.h>
#include <QoKernel/Tags.h>

#include <filesystem>
#include <memory>
#include <string>

/// Walks a folder, stats every file and reads the tags of all that have some, as a scan does: what
/// floor_tags does with TagLib alone.
int main(int argc, char** argv)
{
    if (argc != 2)
        bench::fail("usage", "bench_tags FOLDER");
    int sum = 0;
    const auto read = [&sum](const std::string& path, const struct stat&)
    {
        const std::unique_ptr<KVTagLib::ITagsReader> reader(
            KVTagLib::CTagsReaderFactory::CreateTagsReader(qo::fromSystemPath(path)));
        KVTagLib::CTags tags;
        CString title;
        if (reader && reader->Read(tags, -1, -1) && tags.GetTitle(title))
            sum += title.GetLength();
    };
    const std::string folder = std::filesystem::absolute(argv[1]).string();
    bench::measure([&] { return bench::walk(folder, read); });
    if (sum == 0)
        bench::fail("no file with a title is in", argv[1]);
    return 0;
}
